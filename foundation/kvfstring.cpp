#include "foundation/kvfstring.h"

#include <cstring>

bool kvfCopyIfFits(char* destination, size_t capacity, const char* source)
{
    if (!destination || !source)
        return false;
    // Never reads past capacity characters of a source without a terminator.
    const size_t length = strnlen(source, capacity);
    if (length >= capacity)
        return false;
    memmove(destination, source, length + 1);
    return true;
}
