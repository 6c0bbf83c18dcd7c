// The quick ways of address text beside plain statements of what they compute: all octets, and
// random texts and addresses, each text at the very end of the memory that may be read.
#include "ruk/address.h"

#include <array>
#include <cstdio>
#include <optional>
#include <random>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "tests/support/capture.h"

namespace
{

using Ipv4 = std::array<uint8_t, 4>;
using Ipv6 = std::array<uint8_t, 16>;

class Random
{
public:
    explicit Random(uint32_t seed) : random_(seed)
    {
        testing::Test::RecordProperty("seed", std::to_string(seed));
    }

    size_t below(size_t bound) { return random_() % bound; }
    bool one_in(size_t n) { return below(n) == 0; }
    char one_of(const std::string &characters) { return characters[below(characters.size())]; }

    // Of one digit to most digits, each number of them as likely.
    std::string digits(const std::string &characters, size_t most)
    {
        std::string text(1 + below(most), '0');
        for (char &c : text) {
            c = one_of(characters);
        }
        return text;
    }

    // One text in three is bent: a character replaced, left out or put in, or its end cut off.
    std::string bent(std::string text, const std::string &characters)
    {
        const size_t at = below(text.size() + 1);
        if (text.empty()) {
            return text;
        }
        switch (below(12)) {
        case 0:
            return text.insert(at, 1, one_of(characters));
        case 1:
            return text.erase(std::min(at, text.size()), 1);
        case 2:
            return text.substr(0, at);
        case 3:
            text[std::min(at, text.size() - 1)] = one_of(characters);
            return text;
        default:
            return text;
        }
    }

private:
    std::mt19937 random_;
};

// Two pages, of which the second can't be read.
class EndOfPage
{
public:
    EndOfPage()
    {
        const auto size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        void *pages =
            mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED ||
            mprotect(static_cast<char *>(pages) + size, size, PROT_NONE) != 0) {
            abort();
        }
        end_ = static_cast<char *>(pages) + size;
        size_ = size;
    }
    ~EndOfPage() { munmap(end_ - size_, 2 * size_); }
    EndOfPage(const EndOfPage &) = delete;
    EndOfPage &operator=(const EndOfPage &) = delete;

    // The text with its terminator in the last byte, and no terminator in front of it.
    const char *put(const std::string &text)
    {
        char *start = end_ - text.size() - 1;
        start[-1] = 'f';
        memcpy(start, text.c_str(), text.size() + 1);
        return start;
    }

private:
    char *end_;
    size_t size_;
};

bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Four numbers of any length with a "." between them, white space in front, and the end or white
// space behind.
std::optional<Ipv4> plain_ipv4(const std::string &text)
{
    size_t at = 0;
    while (at < text.size() && is_space(text[at])) {
        ++at;
    }
    Ipv4 octets;
    for (size_t i = 0; i < octets.size(); ++i) {
        if (i > 0 && (at >= text.size() || text[at++] != '.')) {
            return std::nullopt;
        }
        size_t end = at;
        while (end < text.size() && isdigit(text[end])) {
            ++end;
        }
        if (end == at || std::stold(text.substr(at, end - at)) > 255) {
            return std::nullopt;
        }
        octets[i] = static_cast<uint8_t>(std::stoi(text.substr(at, end - at)));
        at = end;
    }
    return at == text.size() || is_space(text[at]) ? std::optional(octets) : std::nullopt;
}

std::vector<std::string> split(const std::string &text)
{
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == ':') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

// The bytes of groups with single colons between them, of which the last may be a dotted quad; no
// groups for an empty text.
std::optional<std::vector<uint8_t>> plain_groups(const std::string &text, bool quad_may_end)
{
    std::vector<uint8_t> bytes;
    if (text.empty()) {
        return bytes;
    }
    const std::vector<std::string> parts = split(text);
    for (const std::string &part : parts) {
        if (&part == &parts.back() && quad_may_end && part.find('.') != std::string::npos) {
            bool zero_in_front = false;
            for (size_t i = 0; i + 1 < part.size(); ++i) {
                zero_in_front |=
                    part[i] == '0' && isdigit(part[i + 1]) && (i == 0 || part[i - 1] == '.');
            }
            const auto quad = plain_ipv4(part);
            if (!quad || zero_in_front || is_space(part.front()) ||
                part.find_first_not_of("0123456789.") != std::string::npos) {
                return std::nullopt;
            }
            bytes.insert(bytes.end(), quad->begin(), quad->end());
            continue;
        }
        if (part.empty() || part.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
            return std::nullopt;
        }
        const size_t first = std::min(part.find_first_not_of('0'), part.size() - 1);
        if (part.size() - first > 4) {
            return std::nullopt;
        }
        const unsigned long value = std::stoul(part.substr(first), nullptr, 16);
        bytes.push_back(static_cast<uint8_t>(value >> 8));
        bytes.push_back(static_cast<uint8_t>(value));
    }
    return bytes;
}

// Groups, and "::" at most once in place of any number of zero groups, none included.
std::optional<Ipv6> plain_ipv6(const std::string &text)
{
    const size_t run = text.find("::");
    const auto left = plain_groups(text.substr(0, run), run == std::string::npos);
    const auto right = plain_groups(run == std::string::npos ? "" : text.substr(run + 2), true);
    if (!left || !right) {
        return std::nullopt;
    }
    const size_t filled = left->size() + right->size();
    if (run == std::string::npos ? filled != 16 : filled > 16) {
        return std::nullopt;
    }
    Ipv6 address{};
    std::copy(left->begin(), left->end(), address.begin());
    std::copy_backward(right->begin(), right->end(), address.end());
    return address;
}

template <typename Address> std::string shown(const Address &address)
{
    std::string text;
    for (const uint8_t byte : address) {
        char digits[4];
        snprintf(digits, sizeof digits, "%02x ", byte);
        text += digits;
    }
    return text;
}

// The parser accepts what the plain statement accepts, with the same bytes, and leaves the output
// alone otherwise.
template <typename Address, typename parse_function>
bool expect_same(const std::string &text, const std::optional<Address> &expected, EndOfPage &page,
                 parse_function parse)
{
    Address address;
    address.fill(0xee);
    Address wanted = expected.value_or(address);
    const int32_t result = parse(address.data(), page.put(text));
    EXPECT_EQ(result, expected ? 0 : -1) << '"' << text << '"';
    EXPECT_EQ(shown(address), shown(wanted)) << '"' << text << '"';
    return expected.has_value();
}

std::string random_ipv6(Random &random)
{
    const std::string digits = random.one_in(2) ? "0123456789abcdef" : "0123456789ABCDEF";
    const size_t run = random.one_in(3) ? 9 : random.below(9);
    const size_t groups = run == 9 && !random.one_in(8) ? 8 : random.below(10);
    std::string text;
    for (size_t i = 0; i < groups; ++i) {
        text += text.empty() || text.back() == ':' ? "" : ":";
        text += i == run ? (text.empty() ? "::" : ":") : "";
        text += random.digits(digits, random.one_in(20) ? 7 : 4);
    }
    text += run >= groups && run < 9 ? "::" : "";
    if (random.one_in(8)) {
        text += (text.empty() || text.back() == ':' ? "" : ":") + random.digits("0123456789", 3) +
                ".1.20.255";
    }
    return random.bent(text, "0f:.gG/@`-\x80 ");
}

} // namespace

TEST(kt_parse_ip_address, agrees_with_the_plain_statement_at_the_end_of_a_page)
{
    Random random(1101);
    EndOfPage page;
    size_t accepted = 0;
    for (int i = 0; i < 25000; ++i) {
        std::string text = random.one_in(10) ? " " : "";
        for (int octet = 0; octet < 4; ++octet) {
            text += octet > 0 ? "." : "";
            text += random.one_in(50) ? random.digits("0", 9) : "";
            text += std::to_string(random.below(random.one_in(30)  ? 100000
                                                : random.one_in(2) ? 256
                                                                   : 20));
        }
        text = random.bent(text + (random.one_in(10) ? " x" : ""), "019./:; \t\x80-");
        accepted +=
            expect_same<Ipv4>(text, plain_ipv4(text), page, [](uint8_t *out, const char *at) {
                uint32_t value;
                memcpy(&value, out, sizeof value);
                const int32_t result = kt_parse_ip_address(&value, at);
                memcpy(out, &value, sizeof value);
                return result;
            });
    }
    EXPECT_GT(accepted, 10000u);
    EXPECT_LT(accepted, 22500u);
}

TEST(kt_parse_ipv6_address, agrees_with_the_plain_statement_at_the_end_of_a_page)
{
    Random random(1102);
    EndOfPage page;
    size_t accepted = 0;
    for (int i = 0; i < 50000; ++i) {
        const std::string text = random_ipv6(random);
        accepted += expect_same<Ipv6>(text, plain_ipv6(text), page, kt_parse_ipv6_address);
    }
    EXPECT_GT(accepted, 20000u);
    EXPECT_LT(accepted, 120000u);
}

// Every text of these few characters up to a length, which has every order of colons.
TEST(kt_parse_ipv6_address, agrees_with_the_plain_statement_on_all_short_texts)
{
    EndOfPage page;
    size_t accepted = 0;
    for (size_t length = 0; length <= 7; ++length) {
        for (size_t number = 0; number < size_t{1} << 2 * length; ++number) {
            std::string text(length, '\0');
            for (size_t i = 0; i < length; ++i) {
                text[i] = ":1a."[number >> 2 * i & 3];
            }
            // Dots belong to the quads, which the random texts have.
            if (text.find('.') == std::string::npos || length < 5) {
                accepted += expect_same<Ipv6>(text, plain_ipv6(text), page, kt_parse_ipv6_address);
            }
        }
    }
    EXPECT_GT(accepted, 50u);
}

// With a trace of every text on, all of them go the general way.
TEST(kt_parse_mac_address, gives_the_same_with_and_without_traces)
{
    Random random(1103);
    EndOfPage page;
    std::vector<std::string> texts;
    for (int i = 0; i < 20000; ++i) {
        std::string text = random.one_in(10) ? " " : "";
        const char *separators = random.one_in(2) ? ":" : ":-";
        const bool short_first = random.one_in(4);
        for (int pair = 0; pair < 6; ++pair) {
            text += pair > 0 ? std::string(1, random.one_of(separators)) : "";
            text += random.one_of("0123456789abcdefABCDEF");
            text += pair == 0 && short_first ? "" : std::string(1, random.one_of("09afAF"));
        }
        texts.push_back(random.bent(text + (random.one_in(20) ? " x" : ""), "0fF:-. gG/@`\x80"));
    }
    std::vector<std::array<uint8_t, 6>> macs[2];
    std::vector<int32_t> results[2];
    for (size_t traced = 0; traced < 2; ++traced) {
        kt_debug_print_ktstrings = traced != 0 ? 0x10 : 0;
        ruk_test::captured_stdout([&] {
            for (const std::string &text : texts) {
                auto &mac = macs[traced].emplace_back();
                mac.fill(0xee);
                results[traced].push_back(kt_parse_mac_address(mac.data(), page.put(text)));
            }
        });
    }
    kt_debug_print_ktstrings = 0x87;
    size_t accepted = 0;
    for (size_t i = 0; i < texts.size(); ++i) {
        ASSERT_EQ(results[0][i], results[1][i]) << '"' << texts[i] << '"';
        ASSERT_EQ(shown(macs[0][i]), shown(macs[1][i])) << '"' << texts[i] << '"';
        accepted += results[0][i] == 0;
    }
    EXPECT_GT(accepted, 10000u);
    EXPECT_LT(accepted, 18000u);
}

namespace
{

// Formats at every size around the text's, and expects the bytes that snprintf leaves: what fits, a
// terminator, and nothing behind it.
template <typename format_function>
void expect_as_printf(const std::string &whole, format_function format)
{
    for (size_t size = 0; size <= whole.size() + 3; ++size) {
        char buffer[64], expected[64];
        memset(buffer, '#', sizeof buffer);
        memset(expected, '#', sizeof expected);
        snprintf(expected + 4, size, "%s", whole.c_str());
        ASSERT_EQ(format(buffer + 4, static_cast<uint32_t>(size)),
                  static_cast<int32_t>(whole.size()))
            << whole;
        ASSERT_EQ(memcmp(buffer, expected, sizeof buffer), 0) << whole << " at size " << size;
    }
}

} // namespace

TEST(snprintf_ip_address, writes_every_octet_in_every_place_as_printf_does)
{
    Random random(1104);
    for (uint32_t octet = 0; octet < 256; ++octet) {
        for (size_t place = 0; place < 4; ++place) {
            Ipv4 octets;
            for (uint8_t &other : octets) {
                other = static_cast<uint8_t>(random.below(random.one_in(2) ? 256 : 12));
            }
            octets[place] = static_cast<uint8_t>(octet);
            char whole[16];
            snprintf(whole, sizeof whole, "%d.%d.%d.%d", octets[0], octets[1], octets[2],
                     octets[3]);
            uint32_t value;
            memcpy(&value, octets.data(), sizeof value);
            expect_as_printf(whole, [value](char *buffer, uint32_t size) {
                return snprintf_ip_address(buffer, size, value);
            });
        }
    }
}

TEST(snprintf_ipv6_address, writes_every_byte_in_every_place_as_printf_does)
{
    for (uint32_t first = 0; first < 256; ++first) {
        Ipv6 address;
        std::string whole;
        for (size_t i = 0; i < address.size(); ++i) {
            // An odd step, so that every place sees every byte.
            address[i] = static_cast<uint8_t>(first + 37 * i);
            char digits[4];
            snprintf(digits, sizeof digits, i % 2 != 0 && i < 15 ? "%02x:" : "%02x", address[i]);
            whole += digits;
        }
        expect_as_printf(whole, [&address](char *buffer, uint32_t size) {
            return snprintf_ipv6_address(buffer, size, address.data());
        });
        char mac[18];
        snprintf(mac, sizeof mac, "%02x:%02x:%02x:%02x:%02x:%02x", address[0], address[1],
                 address[2], address[3], address[4], address[5]);
        expect_as_printf(mac, [&address](char *buffer, uint32_t size) {
            return snprintf_mac_address(buffer, size, address.data());
        });
    }
}

// Callers may format an address over itself.
TEST(snprintf_ipv6_address, reads_the_address_before_it_writes)
{
    char buffer[40] = {};
    memset(buffer, 0xab, 16);
    snprintf_ipv6_address(buffer, sizeof buffer, reinterpret_cast<const uint8_t *>(buffer));
    EXPECT_STREQ(buffer, "abab:abab:abab:abab:abab:abab:abab:abab");
    memset(buffer, 0xab, 6);
    snprintf_mac_address(buffer, sizeof buffer, reinterpret_cast<const uint8_t *>(buffer));
    EXPECT_STREQ(buffer, "ab:ab:ab:ab:ab:ab");
}
