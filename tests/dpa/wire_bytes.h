// The header of both directions as it stands on the wire: fields in their order, host byte order.
// Written without the record under test.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace ruk_test
{

struct Header {
    uint16_t opcode = 0;
    uint16_t version = 0;
    uint8_t flags1 = 0;
    uint8_t flags2 = 0;
    uint16_t reserved = 0;
    int32_t ident = 0;
    int32_t status = 0;
    uint32_t bsize1 = 0;
    uint32_t bsize2 = 0;
    uint32_t elements1 = 0;
    uint32_t elements2 = 0;
    uint32_t esize1 = 0;
    uint32_t esize2 = 0;
    const void *ptr1 = nullptr;
    const void *ptr2 = nullptr;

    // 56 bytes.
    std::string bytes() const
    {
        return joined(opcode, version, flags1, flags2, reserved, ident, status, bsize1, bsize2,
                      elements1, elements2, esize1, esize2, ptr1, ptr2);
    }

private:
    template <typename... Fields> static std::string joined(const Fields &...fields)
    {
        std::string bytes;
        (bytes.append(raw(fields)), ...);
        return bytes;
    }

    template <typename Field> static std::string raw(const Field &field)
    {
        std::string bytes(sizeof field, '\0');
        memcpy(bytes.data(), &field, sizeof field);
        return bytes;
    }
};

} // namespace ruk_test
