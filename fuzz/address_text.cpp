// Address text: every parser takes any text, and what it accepts survives the way back to text.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "fuzz/target.h"
#include "ruk/address.h"

namespace
{

void require(bool holds)
{
    if (!holds) {
        abort();
    }
}

void check_mac(const char *text)
{
    uint8_t mac[KT_MAC_ADDRESS_SIZE] = {};
    if (kt_parse_mac_address(mac, text) != 0) {
        return;
    }
    char back[18];
    uint8_t again[KT_MAC_ADDRESS_SIZE];
    require(snprintf_mac_address(back, sizeof back, mac) == 17);
    require(kt_parse_mac_address(again, back) == 0 && memcmp(again, mac, sizeof mac) == 0);
}

void check_ip(const char *text)
{
    uint32_t value = 0;
    if (kt_parse_ip_address(&value, text) != 0) {
        return;
    }
    char back[16];
    uint32_t again = ~value;
    require(snprintf_ip_address(back, sizeof back, value) < 16);
    require(kt_parse_ip_address(&again, back) == 0 && again == value);
}

void check_ipv6(const char *text)
{
    uint8_t address[KT_IPV6_ADDRESS_SIZE] = {};
    if (kt_parse_ipv6_address(address, text) != 0) {
        return;
    }
    char back[40];
    uint8_t again[KT_IPV6_ADDRESS_SIZE];
    require(snprintf_ipv6_address(back, sizeof back, address) == 39);
    require(kt_parse_ipv6_address(again, back) == 0 && memcmp(again, address, sizeof address) == 0);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Blocks of the exact size, so that a sanitizer sees any access outside.
    const auto text = std::make_unique<char[]>(size + 1);
    if (size > 0) {
        memcpy(text.get(), data, size);
    }
    const auto uuid = std::make_unique<char[]>(KT_INTF_UUID_SIZE);
    kt_debug_print_ktstrings = 0;
    check_mac(text.get());
    check_ip(text.get());
    check_ipv6(text.get());
    require(kt_parse_intf_uuid(uuid.get(), text.get()) == 0);
    return 0;
}
