// IPv4 and IPv6 addresses: text to bytes and back.
#include "ruk/address.h"

#include <charconv>

#include "infra/utils/kttext.h"

namespace
{

using kttext::is_digit;

constexpr size_t k_octets = 4;

enum class LeadingZeros { allowed, refused };

// Reads one decimal number of at most 255.  Returns where it ends, or null.
const char *read_octet(const char *p, LeadingZeros zeros, uint8_t &octet)
{
    if (!is_digit(*p)) {
        return nullptr;
    }
    if (zeros == LeadingZeros::refused && p[0] == '0' && is_digit(p[1])) {
        return nullptr;
    }
    uint32_t value = 0;
    for (; is_digit(*p); ++p) {
        value = value * 10 + kttext::digit_value(*p);
        if (value > 255) {
            return nullptr;
        }
    }
    octet = static_cast<uint8_t>(value);
    return p;
}

// Reads "a.b.c.d".  Returns where it ends, or null.
const char *read_quad(const char *p, LeadingZeros zeros, uint8_t (&octets)[k_octets])
{
    for (size_t i = 0; i < k_octets; ++i) {
        if (i > 0 && *p++ != '.') {
            return nullptr;
        }
        p = read_octet(p, zeros, octets[i]);
        if (p == nullptr) {
            return nullptr;
        }
    }
    return p;
}

// The 16 bytes while a text fills them from the front.
class Ipv6Bytes
{
public:
    bool add_group(uint32_t value)
    {
        const uint8_t group[] = {static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
        return add(group, sizeof group);
    }

    bool add_quad(const char *token)
    {
        uint8_t octets[k_octets];
        const char *end = read_quad(token, LeadingZeros::refused, octets);
        return end != nullptr && *end == '\0' && add(octets, sizeof octets);
    }

    // Notes that "::" stands here.  False the second time.
    bool mark_zero_run()
    {
        if (zero_run_ != k_no_mark) {
            return false;
        }
        zero_run_ = filled_;
        return true;
    }

    // Moves what came after "::" to the end.  A mark with all bytes filled stands for no groups:
    // such texts are accepted, and callers rely on it.
    bool finish()
    {
        if (zero_run_ == k_no_mark) {
            return filled_ == sizeof bytes_;
        }
        const size_t tail = filled_ - zero_run_;
        memmove(bytes_ + sizeof bytes_ - tail, bytes_ + zero_run_, tail);
        memset(bytes_ + zero_run_, 0, sizeof bytes_ - filled_);
        return true;
    }

    const uint8_t *data() const { return bytes_; }

private:
    static constexpr size_t k_no_mark = SIZE_MAX;

    bool add(const uint8_t *bytes, size_t count)
    {
        if (sizeof bytes_ - filled_ < count) {
            return false;
        }
        memcpy(bytes_ + filled_, bytes, count);
        filled_ += count;
        return true;
    }

    uint8_t bytes_[KT_IPV6_ADDRESS_SIZE] = {};
    size_t filled_ = 0;
    size_t zero_run_ = k_no_mark;
};

// Reads the whole text.  A token is what follows the last ":"; up to p it has only hexadecimal
// digits, so p == token says that there were none.
bool read_groups(const char *p, Ipv6Bytes &out)
{
    if (p[0] == ':' && *++p != ':') {
        return false;
    }
    const char *token = p;
    uint32_t value = 0;
    for (; *p != '\0'; ++p) {
        const int32_t digit = kttext::hex_value(*p);
        if (digit >= 0) {
            value = value << 4 | static_cast<uint32_t>(digit);
            if (value > 0xffff) {
                return false;
            }
        } else if (*p == ':') {
            const bool taken =
                p == token ? out.mark_zero_run() : p[1] != '\0' && out.add_group(value);
            if (!taken) {
                return false;
            }
            token = p + 1;
            value = 0;
        } else {
            return *p == '.' && out.add_quad(token);
        }
    }
    return p == token || out.add_group(value);
}

} // namespace

int32_t kt_parse_ip_address(uint32_t *value, const char *text)
{
    uint8_t octets[k_octets];
    const char *end = read_quad(kttext::skip_space(text), LeadingZeros::allowed, octets);
    if (end == nullptr || (*end != '\0' && !kttext::is_space(*end))) {
        return -1;
    }
    memcpy(value, octets, sizeof octets);
    return 0;
}

int32_t kt_parse_ipv6_address(uint8_t *address, const char *text)
{
    Ipv6Bytes bytes;
    if (!read_groups(text, bytes) || !bytes.finish()) {
        return -1;
    }
    memcpy(address, bytes.data(), KT_IPV6_ADDRESS_SIZE);
    return 0;
}

int32_t snprintf_ip_address(char *buffer, uint32_t size, uint32_t value)
{
    uint8_t octets[k_octets];
    memcpy(octets, &value, sizeof octets);
    char text[k_octets * sizeof "255"];
    char *at = text;
    for (const uint8_t octet : octets) {
        at = std::to_chars(at, text + sizeof text, octet).ptr;
        *at++ = '.';
    }
    return kttext::put_text(buffer, size, {text, static_cast<size_t>(at - text) - 1});
}

int32_t snprintf_ipv6_address(char *buffer, uint32_t size, const uint8_t *address)
{
    if (address == nullptr) {
        return -1;
    }
    char text[KT_IPV6_ADDRESS_SIZE / 2 * sizeof "ffff"];
    char *at = text;
    for (size_t i = 0; i < KT_IPV6_ADDRESS_SIZE; i += 2) {
        at = kttext::put_hex(at, address[i]);
        at = kttext::put_hex(at, address[i + 1]);
        *at++ = ':';
    }
    return kttext::put_text(buffer, size, {text, sizeof text - 1});
}
