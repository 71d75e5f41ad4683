/// \file
/// Class-wide registry of live objects: a doubly linked list threaded through
/// each object's own previous/next members, headed by a static pointer of the
/// class. Objects join at the tail when constructed and leave when destroyed;
/// searches return the first match in registry order. The registry keeps the
/// tail, so joining takes constant time however many objects are registered.
#ifndef PEVRANO_CORE_PVREGISTRY_H
#define PEVRANO_CORE_PVREGISTRY_H

#include <cstddef>
#include <cstring>

/// Live objects of class T, linked through their Previous and Next members
/// from the static head Head; static only.
template <class T, T** Head, T* T::*Previous, T* T::*Next> class PVREGISTRY {
public:
    /// Links object behind the last registered one.
    static void append(T* object)
    {
        if (!*Head) {
            *Head = object;
            tail = object;
            return;
        }
        tail->*Next = object;
        object->*Previous = tail;
        tail = object;
    }

    /// Unlinks object from its neighbours; a removed head passes the head on.
    static void remove(T* object)
    {
        if (object->*Previous)
            (object->*Previous)->*Next = object->*Next;
        if (object->*Next)
            (object->*Next)->*Previous = object->*Previous;
        if (*Head == object)
            *Head = object->*Next;
        if (tail == object)
            tail = object->*Previous;
        object->*Previous = nullptr;
        object->*Next = nullptr;
    }

    /// The last registered object, null when none is.
    static T* last() { return tail; }

    /// Number of registered objects.
    static unsigned int count()
    {
        unsigned int total = 0;
        for (T* object = *Head; object; object = object->*Next)
            total++;
        return total;
    }

    /// First object for which matches returns true; null if none.
    template <class Predicate> static T* find(Predicate matches)
    {
        for (T* object = *Head; object; object = object->*Next)
            if (matches(*object))
                return object;
        return nullptr;
    }

    /// First object whose text field equals wanted exactly; null for null.
    template <size_t Size> static T* findByText(char (T::*field)[Size], const char* wanted)
    {
        if (!wanted)
            return nullptr;
        return find([field, wanted](const T& object) { return strcmp(object.*field, wanted) == 0; });
    }

    /// First object whose field equals wanted; null if none.
    template <class Value> static T* findByValue(Value T::*field, Value wanted)
    {
        return find([field, wanted](const T& object) { return object.*field == wanted; });
    }

    /// Deletes every object in registry order, reading each one's successor
    /// before deleting it, and leaves the registry empty. Returns how many
    /// objects were deleted.
    static int deleteAll()
    {
        int total = 0;
        for (T* object = *Head; object;) {
            T* next = object->*Next;
            delete object;
            object = next;
            total++;
        }
        *Head = nullptr;
        tail = nullptr;
        return total;
    }

private:
    /// The last registered object; null exactly when the head is. Only the
    /// library's own classes link and unlink, so the library keeps it to
    /// itself: a symbol shared across libraries would be unique process-wide
    /// and keep the library from ever being unloaded.
    __attribute__((visibility("hidden"))) inline static T* tail = nullptr;
};

#endif
