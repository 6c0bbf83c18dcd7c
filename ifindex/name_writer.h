// Writes a name piece by piece into a caller's buffer, never beyond its end, and counts how long
// the whole name is.  No allocation, no locale, nothing of the printf family.
#ifndef IFINDEX_NAME_WRITER_H
#define IFINDEX_NAME_WRITER_H

#include <cstdint>

namespace ifindex
{

class name_writer
{
public:
    // A size below 1 or a null buffer leaves no room: the pieces are counted only.
    name_writer(char *buffer, int32_t size)
        : buffer_(buffer), room_(buffer == nullptr || size < 0 ? 0 : size)
    {
        terminate();
    }

    name_writer &put(char c)
    {
        // The last byte is the terminator's.
        if (length_ < room_ - 1) {
            buffer_[length_] = c;
        }
        ++length_;
        return *this;
    }

    name_writer &text(const char *s)
    {
        while (*s != '\0') {
            put(*s++);
        }
        return *this;
    }

    // As "%d".
    name_writer &decimal(int32_t value)
    {
        // Worked on as 64 bits, since the smallest value has no 32-bit counterpart.
        int64_t rest = value;
        if (rest < 0) {
            put('-');
            rest = -rest;
        }
        char digits[10];
        int count = 0;
        do {
            digits[count++] = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
        while (count > 0) {
            put(digits[--count]);
        }
        return *this;
    }

    // As "0x%08x".
    name_writer &hex(uint32_t value)
    {
        text("0x");
        for (int shift = 28; shift >= 0; shift -= 4) {
            put("0123456789abcdef"[(value >> shift) & 0xF]);
        }
        return *this;
    }

    // ".<number>" of a sub-interface; nothing for 0, which is the main interface.
    name_writer &sub_interface(uint32_t number)
    {
        return number == 0 ? *this : put('.').decimal(static_cast<int32_t>(number));
    }

    // Terminates the name where it ends or is cut, and returns its whole length.
    int32_t finish()
    {
        terminate();
        return length_;
    }

private:
    void terminate()
    {
        if (room_ > 0) {
            buffer_[length_ < room_ ? length_ : room_ - 1] = '\0';
        }
    }

    char *buffer_;
    int32_t room_;
    int32_t length_ = 0;
};

} // namespace ifindex

#endif // IFINDEX_NAME_WRITER_H
