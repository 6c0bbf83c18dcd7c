// Address text: what the parsers and formatters answer is what the plain model says, for any text
// and, through the formatters, for any address.
//
// Input: a byte with the size that is given to the formatters and the trace word's bits, the rest
// is the text, and its first bytes the address.
#include <cstring>
#include <memory>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "ruk/address.h"
#include "tests/infra/address_model.h"

namespace model = ruk_test::address_model;
using fuzz::require;

namespace
{

void check_mac(const std::string &text, const char *exact)
{
    std::array<uint8_t, KT_MAC_ADDRESS_SIZE> mac;
    mac.fill(0xee);
    const model::MacAnswer expected = model::parse_mac(text, mac, 0);
    require(kt_parse_mac_address(mac.data(), exact) == expected.result && mac == expected.bytes);
}

void check_ip(const std::string &text, const char *exact)
{
    const auto expected = model::parse_ip(text);
    model::Ipv4 octets;
    octets.fill(0xee);
    uint32_t value;
    memcpy(&value, octets.data(), sizeof value);
    const uint32_t before = value;
    require(kt_parse_ip_address(&value, exact) == (expected ? 0 : -1));
    memcpy(octets.data(), &value, sizeof value);
    require(expected ? octets == *expected : value == before);
}

void check_ipv6(const std::string &text, const char *exact)
{
    const auto expected = model::parse_ipv6(text);
    model::Ipv6 address;
    address.fill(0xee);
    const model::Ipv6 before = address;
    require(kt_parse_ipv6_address(address.data(), exact) == (expected ? 0 : -1));
    require(address == expected.value_or(before));
}

void check_uuid(const std::string &text, const char *exact)
{
    const auto uuid = std::make_unique<char[]>(KT_INTF_UUID_SIZE);
    const std::array<char, KT_INTF_UUID_SIZE> expected = model::uuid(text);
    require(kt_parse_intf_uuid(uuid.get(), exact) == 0);
    require(memcmp(uuid.get(), expected.data(), expected.size()) == 0);
}

// As much as fits, terminated, in a block of exactly the size, and the whole length.
template <typename Format>
void check_format(const std::string &expected, uint32_t size, Format format)
{
    const auto buffer = std::make_unique<char[]>(size);
    require(format(buffer.get(), size) == static_cast<int32_t>(expected.size()));
    require(size == 0 || buffer.get() == expected.substr(0, size - 1));
}

void check_formats(const uint8_t *address, uint32_t size)
{
    uint32_t value;
    memcpy(&value, address, sizeof value);
    check_format(model::mac_text(address), size, [&](char *buffer, uint32_t room) {
        return snprintf_mac_address(buffer, room, address);
    });
    check_format(model::ip_text(address), size, [&](char *buffer, uint32_t room) {
        return snprintf_ip_address(buffer, room, value);
    });
    check_format(model::ipv6_text(address), size, [&](char *buffer, uint32_t room) {
        return snprintf_ipv6_address(buffer, room, address);
    });
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::silence_stdout();
    fuzz::Input input(data, size);
    const uint8_t modes = input.byte();
    uint8_t address[KT_IPV6_ADDRESS_SIZE];
    fuzz::Input first_bytes = input;
    first_bytes.bytes(address);
    check_formats(address, modes % 64);

    // A block of the exact size, so that a sanitizer sees any access outside.
    const std::string text = input.text_until('\0');
    const auto exact = std::make_unique<char[]>(text.size() + 1);
    memcpy(exact.get(), text.c_str(), text.size() + 1);
    kt_debug_print_ktstrings = (modes & 0x80) != 0 ? 0xff : 0;
    check_mac(text, exact.get());
    check_ip(text, exact.get());
    check_ipv6(text, exact.get());
    check_uuid(text, exact.get());
    return 0;
}
