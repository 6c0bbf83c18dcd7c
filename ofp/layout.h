// Where the fields of OpenFlow 1.0.0 messages stand, and how they are read: byte by byte, since a
// message may start at any address.  Section numbers are those of its text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ofp
{

// struct ofp_switch_features, section 5.3.1, with its struct ofp_header, section 5.1.
namespace features
{
constexpr size_t k_length = 2; // 16 bits, of the whole message
constexpr size_t k_datapath_id = 8;
constexpr size_t k_n_buffers = 16;
constexpr size_t k_n_tables = 20;
constexpr size_t k_capabilities = 24;
constexpr size_t k_actions = 28;
constexpr size_t k_ports = 32;
} // namespace features

// struct ofp_phy_port, section 5.2.1.
namespace phy_port
{
constexpr size_t k_port_no = 0;
constexpr size_t k_hw_addr = 2;
constexpr size_t k_name = 8;
constexpr size_t k_config = 24;
constexpr size_t k_state = 28;
constexpr size_t k_curr = 32;
constexpr size_t k_advertised = 36;
constexpr size_t k_supported = 40;
constexpr size_t k_peer = 44;
constexpr size_t k_size = 48;
} // namespace phy_port

constexpr uint16_t load_be16(const uint8_t *at)
{
    return static_cast<uint16_t>(at[0] << 8 | at[1]);
}

constexpr uint32_t load_be32(const uint8_t *at)
{
    return static_cast<uint32_t>(load_be16(at)) << 16 | load_be16(at + 2);
}

// A value as it is stored, in the host's byte order.
template <typename T> T load_stored(const uint8_t *at)
{
    T value;
    memcpy(&value, at, sizeof value);
    return value;
}

} // namespace ofp
