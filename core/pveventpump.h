// The events waiting for PEVRANO::pollEvent that the application pushed, and
// the keyboard and pointer state the polled events leave. Each polled pointer
// or key event is handed to the interface at once, so a press and a release
// within one frame still make a click.
#ifndef PEVRANO_CORE_PVEVENTPUMP_H
#define PEVRANO_CORE_PVEVENTPUMP_H

#include "core/pvevent.h"

class PVEVENTPUMP {
public:
    // Queues a copy; false when the queue is full.
    static bool push(const PVEVENT& event);
    // The oldest pushed event; false when there is none.
    static bool pop(PVEVENT* event);
    // Records what the event changes (keys, pointer, window size) and hands
    // pointer and key events to the interface, filling in the event's
    // pointer position, clickedId and overInterface.
    static void apply(PVEVENT* event);
    // Once the events of a frame are polled: the unchanged state goes to the
    // interface again, which keeps the focused text field's caret blinking.
    static void settle();
    // Empties the queue and releases every key and button.
    static void reset();

    static bool isKeyDown(int key);
    static int getPointerX() { return pointerX; }
    static int getPointerY() { return pointerY; }
    static int getButtons() { return buttons; }

    // Room in the queue, and the key symbols whose state is kept.
    static const int capacity = 256;
    static const int keyCount = 512;

private:
    // The character the interface receives for a key press: the typed one
    // when it is ASCII, backspace, or 0.
    static char typedCharacter(const PVEVENT& event);
    static void dispatch(PVEVENT* event, char key);
    static void setKey(int key, bool down);

    static PVEVENT queue[capacity];
    static int first;
    static int count;
    static bool keys[keyCount];
    static int pointerX;
    static int pointerY;
    static int buttons;
};

#endif
