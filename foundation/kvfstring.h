// String helpers for the fixed-size name and path buffers of the engine's classes.
#ifndef PEVRANO_FOUNDATION_KVFSTRING_H
#define PEVRANO_FOUNDATION_KVFSTRING_H

#include <cstddef>

// Copies source, terminator included, into a buffer of capacity bytes when it
// fits; otherwise (or for a null source or destination) leaves the buffer
// alone and returns false. Source may overlap the buffer.
bool kvfCopyIfFits(char* destination, size_t capacity, const char* source);

#endif
