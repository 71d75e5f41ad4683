/// \file
/// Bounds-checked reader over a byte buffer: every read is checked against the
/// bytes that remain. A read that does not fit fails, leaves its output alone
/// and marks the reader as failed, so that a whole record can be read and
/// checked once. Values are little-endian; floats are IEEE-754 single.
#ifndef PEVRANO_FOUNDATION_KVFREADER_H
#define PEVRANO_FOUNDATION_KVFREADER_H

#include <cstddef>
#include <cstdint>

/// Cursor over a byte buffer the caller owns; every read is bounds-checked.
class KVFREADER {
public:
    /// Reads size bytes at data (not copied), starting at position.
    KVFREADER(const void* data, size_t size, size_t position = 0);

    /// Little-endian reads of one value; false (value untouched) when it does not fit.
    ///@{
    bool readU8(uint8_t& value);
    bool readU16(uint16_t& value);
    bool readU32(uint32_t& value);
    bool readFloat(float& value);
    ///@}
    /// Reads count floats into out.
    bool readFloats(float* out, size_t count);
    /// Copies size bytes into out (out may be null to skip them).
    bool readBytes(void* out, size_t size);
    /// Moves past size bytes; false when fewer remain.
    bool skip(size_t size) { return readBytes(nullptr, size); }
    /// Copies a NUL-terminated string, terminator included, into out of
    /// capacity bytes; fails (copying nothing) when the string has no
    /// terminator before the end of the data or does not fit.
    bool readString(char* out, size_t capacity);

    /// Marks the data unusable (a loader found it inconsistent); returns false.
    bool invalidate() { return fail(); }

    /// Offset of the next read, bytes left after it and their address.
    ///@{
    size_t position() const { return cursor; }
    size_t remaining() const { return size - cursor; }
    /// False once any read has failed.
    bool good() const { return !failed; }
    const uint8_t* current() const { return bytes + cursor; }
    ///@}

private:
    bool take(size_t count);
    bool fail();

    const uint8_t* bytes;
    size_t size;
    size_t cursor;
    bool failed;
};

#endif
