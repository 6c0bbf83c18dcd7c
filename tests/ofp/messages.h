// Builds OpenFlow 1.0.0 messages byte by byte, from the layout that the public text gives
// (sections 5.1, 5.2.1 and 5.3.1).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ruk_test
{

using Bytes = std::vector<uint8_t>;

inline void add(Bytes &bytes, std::initializer_list<int> more)
{
    for (const int byte : more) {
        bytes.push_back(static_cast<uint8_t>(byte));
    }
}

inline void add_be32(Bytes &bytes, uint32_t word)
{
    for (const int shift : {24, 16, 8, 0}) {
        bytes.push_back(static_cast<uint8_t>(word >> shift));
    }
}

struct Port {
    std::string_view name = "eth1/1"; // its first 16 characters; padded with zeros
    uint32_t config = 0;
    uint32_t state = 0;
    uint32_t curr = 0;
    uint32_t advertised = 0;
    uint32_t supported = 0;
    uint32_t peer = 0;
};

// Port 1 with the address 00:1b:02:3d:0e:ff.
inline Bytes phy_port(const Port &port)
{
    Bytes bytes;
    add(bytes, {0x00, 0x01});
    add(bytes, {0x00, 0x1b, 0x02, 0x3d, 0x0e, 0xff});
    for (size_t i = 0; i < 16; ++i) {
        add(bytes, {i < port.name.size() ? port.name[i] : '\0'});
    }
    for (const uint32_t word :
         {port.config, port.state, port.curr, port.advertised, port.supported, port.peer}) {
        add_be32(bytes, word);
    }
    return bytes;
}

// A features reply with transaction id 7, datapath id 01:02:...:08, 256 buffers and 3 tables.
inline Bytes features_reply(uint32_t capabilities, uint32_t actions, const std::vector<Port> &ports)
{
    const size_t length = 32 + 48 * ports.size();
    Bytes bytes;
    add(bytes, {0x01, 0x06, static_cast<int>(length >> 8), static_cast<int>(length & 0xff)});
    add_be32(bytes, 7);
    add(bytes, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
    add_be32(bytes, 256);
    add(bytes, {0x03, 0x00, 0x00, 0x00});
    add_be32(bytes, capabilities);
    add_be32(bytes, actions);
    for (const Port &port : ports) {
        const Bytes record = phy_port(port);
        bytes.insert(bytes.end(), record.begin(), record.end());
    }
    return bytes;
}

} // namespace ruk_test
