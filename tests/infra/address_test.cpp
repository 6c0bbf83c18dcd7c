// Address text: row by row, and beside the platform's own parsers.
#include "ruk/address.h"

#include <arpa/inet.h>
#include <array>
#include <functional>
#include <memory>
#include <netinet/ether.h>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/capture.h"
#include "tests/support/random.h"

namespace
{

using Mac = std::array<uint8_t, 6>;
using Ipv4 = std::array<uint8_t, 4>;
using Ipv6 = std::array<uint8_t, 16>;

constexpr Mac k_mac = {0x00, 0x1b, 0x2c, 0x3d, 0x4e, 0x5f};
// What every output holds before the call.
constexpr uint8_t k_old = 0xee;

// A heap block exactly as long as the text, so that a sanitizer sees every read behind it.
std::unique_ptr<char[]> exact(const std::string &text)
{
    auto block = std::make_unique<char[]>(text.size() + 1);
    memcpy(block.get(), text.c_str(), text.size() + 1);
    return block;
}

int32_t parse_mac(const std::string &text, Mac &mac)
{
    mac.fill(k_old);
    return kt_parse_mac_address(mac.data(), exact(text).get());
}

// The octets in text order, or none: then the result was -1 and the output was left alone.
std::optional<Ipv4> parse_ip(const std::string &text)
{
    uint32_t value = 0xeeeeeeee;
    const int32_t result = kt_parse_ip_address(&value, exact(text).get());
    if (result != 0) {
        EXPECT_EQ(result, -1) << text;
        EXPECT_EQ(value, 0xeeeeeeee) << text;
        return std::nullopt;
    }
    Ipv4 octets;
    memcpy(octets.data(), &value, sizeof value);
    return octets;
}

std::optional<Ipv6> parse_ipv6(const std::string &text)
{
    Ipv6 address, untouched;
    address.fill(k_old);
    untouched.fill(k_old);
    const int32_t result = kt_parse_ipv6_address(address.data(), exact(text).get());
    if (result != 0) {
        EXPECT_EQ(result, -1) << text;
        EXPECT_EQ(address, untouched) << text;
        return std::nullopt;
    }
    return address;
}

// The platform's parser of the same family.
template <typename Address>
std::optional<Address> platform_parse(int family, const std::string &text)
{
    Address address;
    if (inet_pton(family, text.c_str(), address.data()) != 1) {
        return std::nullopt;
    }
    return address;
}

// Texts near to what a parser takes.
class Texts
{
public:
    size_t below(size_t bound) { return random_.below(bound); }

    const char *one_of(const std::vector<const char *> &pieces)
    {
        return pieces[below(pieces.size())];
    }

    // One text in three gets a character replaced by one of replacements, or loses one.
    std::string bent(std::string text, const std::string &replacements)
    {
        const size_t how = below(6);
        if (text.empty() || how > 1) {
            return text;
        }
        const size_t at = below(text.size());
        if (how == 0) {
            text[at] = replacements[below(replacements.size())];
        } else {
            text.erase(at, 1);
        }
        return text;
    }

private:
    ruk_test::Random random_;
};

// Whether a number has a zero before its other digits, as in "01".
bool has_leading_zero(const std::string &text)
{
    for (size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == '0' && isdigit(text[i + 1]) && (i == 0 || !isdigit(text[i - 1]))) {
            return true;
        }
    }
    return false;
}

bool has_long_group(const std::string &text)
{
    size_t run = 0;
    for (const char c : text) {
        run = isxdigit(c) ? run + 1 : 0;
        if (run > 4) {
            return true;
        }
    }
    return false;
}

// Whether "::" stands beside groups that fill all 16 bytes.
bool has_empty_zero_run(const std::string &text)
{
    size_t groups = text.find('.') == std::string::npos ? 0 : 1; // a dotted quad counts for two
    for (size_t i = 0; i < text.size(); ++i) {
        groups += text[i] != ':' && (i == 0 || text[i - 1] == ':');
    }
    return text.find("::") != std::string::npos && groups == 8;
}

} // namespace

TEST(kt_parse_mac_address, parses_both_forms)
{
    struct {
        const char *text;
        Mac expected;
    } const rows[] = {
        {"00:1b:2c:3d:4e:5f", k_mac},
        {"00-1B-2C-3D-4E-5F", k_mac},
        {"00:1b-2c:3d-4E:5f", k_mac},
        {"001b.2c3d.4e5f", k_mac},
        {"001b-2c3d-4e5f", k_mac},
        {"001B.2C3D-4E5F", k_mac},
        {"0:1b:2c:3d:4e:5f", k_mac},
        {"a:1b:2c:3d:4e:5f", {0x0a, 0x1b, 0x2c, 0x3d, 0x4e, 0x5f}},
        {"F:1b-2c-3d-4e-5f", {0x0f, 0x1b, 0x2c, 0x3d, 0x4e, 0x5f}},
        {" \t\n\v\f\r00:1b:2c:3d:4e:5f", k_mac},
        {" 0:1b:2c:3d:4e:5f", k_mac},
        {"00:1b:2c:3d:4e:5f ", k_mac},
        {"00:1b:2c:3d:4e:5f\n", k_mac},
        {"00:1b:2c:3d:4e:5f\tanything at all", k_mac},
        {"0:1b:2c:3d:4e:5f x", k_mac},
        {"ff:ff:ff:ff:ff:ff", {0xff, 0xff, 0xff, 0xff, 0xff, 0xff}},
        {"FF:fE:Ed:00:aA:Bb", {0xff, 0xfe, 0xed, 0x00, 0xaa, 0xbb}},
        {"ffff.ffff.ffff", {0xff, 0xff, 0xff, 0xff, 0xff, 0xff}},
        // Digits behind the last group of four belong to it, and its low 16 bits count.
        {"001b.2c3d.4e5f6", {0x00, 0x1b, 0x2c, 0x3d, 0xe5, 0xf6}},
        {"001b.2c3d.4e5f67", {0x00, 0x1b, 0x2c, 0x3d, 0x5f, 0x67}},
        {"001b.2c3d.4e5f678", {0x00, 0x1b, 0x2c, 0x3d, 0xf6, 0x78}},
        {"001b.2c3d.4e5f678 9", {0x00, 0x1b, 0x2c, 0x3d, 0xf6, 0x78}},
        // Anything else behind it is ignored while it stays short of position 17.
        {"001b.2c3d.4e5f.", k_mac},
        {"001b.2c3d.4e5fxyz", k_mac},
        {"001b.2c3d.4e5f xy z", k_mac},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        Mac mac;
        EXPECT_EQ(parse_mac(row.text, mac), 0);
        EXPECT_EQ(mac, row.expected);
    }
}

TEST(kt_parse_mac_address, keeps_the_groups_before_a_failure)
{
    kt_debug_print_ktstrings = 0;
    struct {
        const char *text;
        size_t written; // bytes of k_mac
    } const rows[] = {
        {"", 0},
        {"      ", 0},
        {"0:1b", 0},
        {" \t 0:1b", 0},
        {"0:1b:", 2},
        {"0:1b ", 1},
        // Characters at position 17.
        {"00:1b:2c:3d:4e:5f:", 0},
        {"00:1b:2c:3d:4e:5f0", 0},
        {"0:1b:2c:3d:4e:5f:", 0},
        {"0:1b:2c:3d:4e:5f5", 0},
        {"001b.2c3d.4e5f6789", 0},
        {"001b.2c3d.4e5f xyz", 0},
        // Six groups.
        {"0g:1b:2c:3d:4e:5f", 0},
        {"::::::", 0},
        {"00.1b.2c.3d.4e.5f", 0},
        {"00:1:2c:3d:4e:5f", 1},
        {"00:g1:2c:3d:4e:5f", 1},
        {"00:1b.2c:3d:4e:5f", 1},
        {"00:1b:2 :3d:4e:5f", 2},
        {"00:1b:2c:3:4e:5f", 3},
        {"00:1b:2c:3d", 3},
        {"00:1b:2c:3d:4e", 4},
        {"00:1b:2c:3d:4e.5f", 4},
        {"00:1b:2c:3d:4e:", 5},
        {"00:1b:2c:3d:4e:5", 5},
        {"00:1b:2c:3d:4e:5 f", 0},
        {"00:1b:2c:3d:4e:5 ", 5},
        {"00:1b:2c:3d:4e:x5", 5},
        // Three groups.
        {"001b:2c3d:4e5f", 0},
        {"001b2c3d4e5f", 0},
        {"0-1b-2c-3d-4e-5f", 0},
        {"0x1b.2c3d.4e5f", 0},
        {"001b.2c3g.4e5f", 2},
        {"001b.2c3d:4e5f", 2},
        {"001b.2c3d", 2},
        {"001b.2c3d.", 4},
        {"001b.2c3d.4e5", 4},
        {"001b.2c3d.4e5 f", 4},
        {"001b-2c3d-+e5f", 4},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        Mac expected;
        expected.fill(k_old);
        std::copy_n(k_mac.begin(), row.written, expected.begin());
        Mac mac;
        EXPECT_EQ(parse_mac(row.text, mac), -1);
        EXPECT_EQ(mac, expected);
    }
    kt_debug_print_ktstrings = 0x87;
}

TEST(kt_parse_mac_address, traces_behind_its_bits)
{
    EXPECT_EQ(kt_debug_print_ktstrings, 0x87u);

    struct {
        uint32_t bits;
        const char *text;
        const char *printed;
    } const rows[] = {
        {0x08, "0:1b:2c:3d:4e:5f",
         "Adjusted MAC String from 0:1b:2c:3d:4e:5f to 00:1b:2c:3d:4e:5f\n"},
        {0x08, "  0:1b:2c:3d:4e:5f",
         "Adjusted MAC String from 0:1b:2c:3d:4e:5f to 00:1b:2c:3d:4e:5f\n"},
        {0x08, "0:1b:2c:3d:4e:5f abc",
         "Adjusted MAC String from 0:1b:2c:3d:4e:5f abc to 00:1b:2c:3d:4e:5f a\n"},
        {0x08, "00:1b:2c:3d:4e:5f", ""},
        {0x10, "00:1b:2c:3d:4e:5f", "No adjustment in MAC String needed 00:1b:2c:3d:4e:5f\n"},
        {0x10, "00:1b:2c:3d:4e:5f abc", "No adjustment in MAC String needed 00:1b:2c:3d:4e:5f a\n"},
        {0x10, "001b.2c3d.4e5f", "No adjustment in MAC String needed 001b.2c3d.4e5f\n"},
        {0x10, "0:1b:2c:3d:4e:5f", ""},
        {0x10, "0:1b", ""},
        {0x04, "00:1b:2c:3d:4e:5f:",
         "kt_get_adjusted_mac_string: Mac[00:1b:2c:3d:4e:5f:] parsed has extra characters\n"},
        {0x04, " 0:1b:2c:3d:4e:5f:0123456789",
         "kt_get_adjusted_mac_string: Mac[0:1b:2c:3d:4e:5f:0123456789] parsed has extra "
         "characters\n"},
        {0x04, "001b:2c3d:4e5f", "Couldn't parse MAC address 001b:2c3d:4e5f\n"},
        {0x04, " not a mac address at all", "Couldn't parse MAC address not a mac address a\n"},
        {0x04, "00:1b:2c:3d:4e:5g", ""},
        {0x04, "001b.2c3d.4e5g", ""},
        {0x04, "0:1b", ""},
        {0x04, "00:1b:2c:3d:4e:5f", ""},
        {0x1c, "0:1b:2c:3d:4e:5f:",
         "Adjusted MAC String from 0:1b:2c:3d:4e:5f: to 00:1b:2c:3d:4e:5f:\n"
         "kt_get_adjusted_mac_string: Mac[0:1b:2c:3d:4e:5f:] parsed has extra characters\n"},
        {0x87, "0:1b:2c:3d:4e:5f", ""},
        {0x87, "001b:2c3d:4e5f", "Couldn't parse MAC address 001b:2c3d:4e5f\n"},
        {0xffffffe3, "001b:2c3d:4e5f", ""},
        {0xffffffe3, "0:1b:2c:3d:4e:5f:", ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        kt_debug_print_ktstrings = row.bits;
        Mac mac;
        EXPECT_EQ(ruk_test::captured_stdout([&] { parse_mac(row.text, mac); }), row.printed);
    }
    kt_debug_print_ktstrings = 0x87;
}

TEST(kt_parse_mac_address, agrees_with_the_platform_on_six_pairs_with_colons)
{
    kt_debug_print_ktstrings = 0;
    Texts texts;
    size_t accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (int pair = 0; pair < 6; ++pair) {
            text += text.empty() ? "" : ":";
            text += "0123456789abcdefABCDEF"[texts.below(22)];
            text += "0123456789abcdefABCDEF"[texts.below(22)];
        }
        text = texts.bent(text, "0fF:-.gG");
        if (text.size() != 17 || text.find('-') != std::string::npos) {
            continue; // only what both parsers are made for
        }
        SCOPED_TRACE(text);
        ether_addr theirs;
        Mac ours;
        const bool taken = ether_aton_r(text.c_str(), &theirs) != nullptr;
        ASSERT_EQ(parse_mac(text, ours), taken ? 0 : -1);
        if (taken) {
            ASSERT_EQ(memcmp(ours.data(), &theirs, sizeof theirs), 0);
            ++accepted;
        }
    }
    EXPECT_GT(accepted, 10000u);
    kt_debug_print_ktstrings = 0x87;
}

TEST(kt_parse_mac_address, differs_from_the_platform_where_its_forms_do)
{
    struct {
        const char *text;
        bool ours;
        bool platform;
    } const rows[] = {
        {"0:1b:2c:3d:4e:5f", true, true},  {"0:1:2:3:4:5", false, true},
        {"00:1b:2c:3d:4e:5", false, true}, {"00-1b-2c-3d-4e-5f", true, false},
        {"001b.2c3d.4e5f", true, false},   {" 0:1b:2c:3d:4e:5f", true, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        Mac mac;
        ether_addr theirs;
        EXPECT_EQ(parse_mac(row.text, mac) == 0, row.ours);
        EXPECT_EQ(ether_aton_r(row.text, &theirs) != nullptr, row.platform);
    }
}

TEST(kt_parse_ip_address, parses_four_numbers)
{
    const std::string zeros(5000, '0');
    struct {
        std::string text;
        Ipv4 expected;
    } const rows[] = {
        {"10.1.2.3", {10, 1, 2, 3}},
        {"0.0.0.0", {0, 0, 0, 0}},
        {"255.255.255.255", {255, 255, 255, 255}},
        {"  \t\n10.1.2.3", {10, 1, 2, 3}},
        {"1.2.3.4 x", {1, 2, 3, 4}},
        {"1.2.3.4\t5.6.7.8", {1, 2, 3, 4}},
        {"1.2.3.4\n", {1, 2, 3, 4}},
        {"010.1.02.003", {10, 1, 2, 3}},
        {"00.00.00.00", {0, 0, 0, 0}},
        {"1.2.3." + zeros, {1, 2, 3, 0}},
        {zeros + "77.2.3.4 ", {77, 2, 3, 4}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(parse_ip(row.text), row.expected);
    }
}

TEST(kt_parse_ip_address, refuses_everything_else)
{
    const std::string rows[] = {
        "",
        "   ",
        "1.2",
        "1.2.3",
        "1.2.3 ",
        "1.2.3.",
        "1.2.3. 4",
        "1.2.3.4.",
        "1.2.3.4.5",
        "1.2.3.4x",
        "1.2.3.4,",
        "1.2.3.4/8",
        "1.2..4",
        ".1.2.3.4",
        "1..2.3.4",
        "1.2.3 .4",
        "-1.2.3.4",
        "+1.2.3.4",
        "1.2.3.a",
        "0x1.2.3.4",
        "1:2:3:4",
        "1.2.3.256",
        "256.2.3.4",
        "1.2.3.0256",
        "1.2.3.999",
        "1.2.3.4294967297",           // 1 in 32 bits
        "1.2.3.18446744073709551617", // 1 in 64 bits
        "1.2.3." + std::string(5000, '9'),
        std::string(5000, '1'),
        "1.2.3.\xb2",
    };
    for (const auto &text : rows) {
        EXPECT_EQ(parse_ip(text), std::nullopt) << text;
    }
}

TEST(kt_parse_ip_address, agrees_with_the_platform_without_spaces_and_leading_zeros)
{
    Texts texts;
    size_t accepted = 0;
    size_t refused = 0;
    for (int i = 0; i < 50000; ++i) {
        std::string text = texts.one_of({"0", "1", "9", "10", "99", "100", "199", "255"});
        for (size_t more = texts.below(16) == 0 ? 2 + texts.below(3) : 3; more > 0; --more) {
            text += '.';
            text += texts.one_of({"0", "7", "42", "199", "249", "255", "255", "256", "00", "01"});
        }
        text = texts.bent(text, "0129.:x-");
        SCOPED_TRACE(text);
        const auto ours = parse_ip(text);
        const auto platform = platform_parse<Ipv4>(AF_INET, text);
        if (has_leading_zero(text)) {
            ASSERT_EQ(platform, std::nullopt);
            continue;
        }
        ASSERT_EQ(ours, platform);
        ++(ours ? accepted : refused);
    }
    EXPECT_GT(accepted, 10000u);
    EXPECT_GT(refused, 10000u);
}

TEST(kt_parse_ip_address, takes_what_the_platform_refuses)
{
    for (const char *text : {"01.2.3.4", "1.2.3.00", " 1.2.3.4", "1.2.3.4 ", "1.2.3.4 x"}) {
        EXPECT_NE(parse_ip(text), std::nullopt) << text;
        EXPECT_EQ(platform_parse<Ipv4>(AF_INET, text), std::nullopt) << text;
    }
}

TEST(kt_parse_ipv6_address, parses_the_text_form)
{
    struct {
        std::string text;
        Ipv6 expected;
    } const rows[] = {
        {"::", {}},
        {"::1", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {"1::", {0, 1}},
        {"1:2:3:4:5:6:7:8", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}},
        {"2001:db8::8:800:200C:417a",
         {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 8, 8, 0, 0x20, 0x0c, 0x41, 0x7a}},
        {"FfFf:aBcD::", {0xff, 0xff, 0xab, 0xcd}},
        {"1::8", {0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 8}},
        {"1:2:3::7:8", {0, 1, 0, 2, 0, 3, 0, 0, 0, 0, 0, 0, 0, 7, 0, 8}},
        {"1:2:3:4:5:6:7::", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 0}},
        {"::2:3:4:5:6:7:8", {0, 0, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}},
        // A zero run that stands for no group.
        {"1:2:3:4:5:6:7::8", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}},
        {"::1:2:3:4:5:6:7:8", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}},
        {"1:2:3:4:5:6:7:8::", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}},
        {"1:2:3:4:5:6::1.2.3.4", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 1, 2, 3, 4}},
        // Leading zeros without limit.
        {"00001::00000000000000000000000ffff",
         {0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff}},
        {std::string(5000, '0') + "::2", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2}},
        // Dotted tails.
        {"::10.1.2.3", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 10, 1, 2, 3}},
        {"::ffff:10.1.2.3", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 10, 1, 2, 3}},
        {"::ffff:255.0.0.255", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 255, 0, 0, 255}},
        {"1:2:3:4:5:6:1.2.3.4", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 1, 2, 3, 4}},
        {"64:ff9b::192.0.2.33", {0, 0x64, 0xff, 0x9b, 0, 0, 0, 0, 0, 0, 0, 0, 192, 0, 2, 33}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(parse_ipv6(row.text), row.expected);
    }
}

TEST(kt_parse_ipv6_address, refuses_everything_else)
{
    const std::string rows[] = {
        "",
        ":",
        ":1::",
        ":1:2:3:4:5:6:7",
        ":x",
        ":::",
        "1:::2",
        "1::2::3",
        "::1::",
        "1",
        "1:",
        "1:2:3:4:5:6:7",
        "1:2:3:4:5:6:7:",
        "1::2:",
        "::1:",
        "1:2:3:4:5:6:7:8:",
        "1:2:3:4:5:6:7:8:9",
        "1:2:3:4:5:6:7:8:9:",
        "1:2:3:4:5:6:7:8:9:a",
        "::1:2:3:4:5:6:7:8:9",
        "1:2:3:4:5:6:7:8::9",
        "10000::",
        "::12345",
        "::0000000010000",
        "::fffffffff",
        "::100000000",
        "::10000000000000001",
        "::" + std::string(5000, 'f'),
        "::g",
        "1;2::",
        " ::1",
        "::1 ",
        "::1\n",
        "::1/64",
        "::1%eth1",
        "[::1]",
        // Dotted tails.
        "1.2.3.4",
        ".",
        "::.",
        "::1.2.3",
        "::1.2.3.",
        "::1.2.3.4.",
        "::1.2.3.4.5",
        "::1..2.3",
        "::1.2.3.4:5",
        "::1.2.3.4 ",
        "::1.2.3.256",
        "::1.2.3.4294967297",
        "::01.2.3.4",
        "::1.2.3.00",
        "::1.2.3.a",
        "::a.2.3.4",
        "::12345.2.3.4",
        "1:2:3:4:5:1.2.3.4",
        "1:2:3:4:5:6:7:1.2.3.4",
        "1:2:3:4:5:6:7:8:1.2.3.4",
        "1:2:3:4:5:6:7::1.2.3.4",
    };
    for (const auto &text : rows) {
        EXPECT_EQ(parse_ipv6(text), std::nullopt) << text;
    }
}

TEST(kt_parse_ipv6_address, agrees_with_the_platform_but_for_two_liberties)
{
    Texts texts;
    size_t accepted = 0;
    size_t refused = 0;
    size_t wider = 0;
    for (int i = 0; i < 100000; ++i) {
        std::string text = texts.one_of({"", "", "1", "fe80", "00001"});
        for (size_t more = texts.below(10); more > 0; --more) {
            text += texts.one_of({":", ":", ":", ":", "::"});
            text += texts.one_of({"0", "1", "ab", "FFFF", "0db8", "10", "ffff", "00000", "", "1a"});
        }
        text += texts.one_of({"", "", "", "", ":", "::", ":1.2.3.4", "::255.0.9.10", "::1.2.3.04"});
        text = texts.bent(text, "0f:.gG ");
        SCOPED_TRACE(text);
        const auto ours = parse_ipv6(text);
        const auto platform = platform_parse<Ipv6>(AF_INET6, text);
        if (ours && !platform) {
            ASSERT_TRUE(has_long_group(text) || has_empty_zero_run(text));
            ++wider;
            continue;
        }
        ASSERT_EQ(ours, platform);
        ++(ours ? accepted : refused);
    }
    EXPECT_GT(accepted, 5000u);
    EXPECT_GT(refused, 10000u);
    EXPECT_GT(wider, 1000u);
}

TEST(kt_parse_ipv6_address, takes_what_the_platform_refuses)
{
    for (const char *text : {"00001::", "::00001", "1:2:3:4:5:6:7::8", "1:2:3:4:5:6::1.2.3.4"}) {
        EXPECT_NE(parse_ipv6(text), std::nullopt) << text;
        EXPECT_EQ(platform_parse<Ipv6>(AF_INET6, text), std::nullopt) << text;
    }
}

TEST(kt_parse_intf_uuid, copies_48_bytes_and_drops_one_line_feed)
{
    const std::string filler(46, 'u');
    struct {
        std::string text;
        std::string expected; // followed by zeros up to 48 bytes
    } const rows[] = {
        {"", ""},
        {"\n", ""},
        {"a", "a"},
        {"abc", "abc"},
        {"abc\n", "abc"},
        {"abc\n\n", "abc\n"},
        {"abc\r\n", "abc\r"},
        {"\nabc", "\nabc"},
        {"123e4567-e89b-12d3-a456-426614174000\n", "123e4567-e89b-12d3-a456-426614174000"},
        {filler + "v", filler + "v"},
        {filler + "\n", filler},
        {filler + "vw", filler + "vw"},
        {filler + "v\n", filler + "v"},
        {filler + "vw\n", filler + "vw"},
        {filler + "v\nx", filler + "v"},
        {filler + "vwxyz and a lot more", filler + "vw"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        std::string expected = row.expected;
        expected.resize(48, '\0');
        std::vector<char> uuid(48, '#');
        EXPECT_EQ(kt_parse_intf_uuid(uuid.data(), exact(row.text).get()), 0);
        EXPECT_EQ(std::string(uuid.begin(), uuid.end()), expected);
    }
}

// A text without any terminator: 48 bytes are all that is looked at.
TEST(kt_parse_intf_uuid, reads_no_more_than_48_bytes)
{
    const std::vector<char> text(48, 'u');
    std::vector<char> uuid(48, '#');
    EXPECT_EQ(kt_parse_intf_uuid(uuid.data(), text.data()), 0);
    EXPECT_EQ(uuid, text);
}

namespace
{

// Formats into blocks of every size from 0 past the whole text: what fits, terminated, the whole
// length returned, nothing written behind the size.
void expect_formats(const std::string &whole,
                    const std::function<int32_t(char *, uint32_t)> &format)
{
    for (uint32_t size = 0; size <= whole.size() + 2; ++size) {
        SCOPED_TRACE(size);
        std::string expected(whole.size() + 8, '#');
        if (size > 0) {
            const std::string kept = whole.substr(0, size - 1);
            expected.replace(0, kept.size() + 1, kept + '\0');
        }
        std::string buffer(whole.size() + 8, '#');
        EXPECT_EQ(format(buffer.data(), size), static_cast<int32_t>(whole.size()));
        EXPECT_EQ(buffer, expected);
    }
    EXPECT_EQ(format(nullptr, 0), static_cast<int32_t>(whole.size()));
}

} // namespace

TEST(snprintf_mac_address, writes_pairs_with_colons)
{
    const std::pair<Mac, const char *> rows[] = {
        {k_mac, "00:1b:2c:3d:4e:5f"},
        {{0, 0, 0, 0, 0, 0}, "00:00:00:00:00:00"},
        {{0xff, 0xfe, 0xa0, 0x0a, 0x90, 0x09}, "ff:fe:a0:0a:90:09"},
    };
    for (const auto &[mac, text] : rows) {
        SCOPED_TRACE(text);
        expect_formats(text, [&mac = mac](char *buffer, uint32_t size) {
            return snprintf_mac_address(buffer, size, mac.data());
        });
    }
}

TEST(snprintf_ip_address, writes_the_byte_at_the_lowest_address_first)
{
    const std::pair<Ipv4, const char *> rows[] = {
        {{10, 1, 2, 3}, "10.1.2.3"},
        {{0, 0, 0, 0}, "0.0.0.0"},
        {{255, 255, 255, 255}, "255.255.255.255"},
        {{192, 168, 99, 100}, "192.168.99.100"},
        {{9, 200, 19, 0}, "9.200.19.0"},
    };
    for (const auto &[octets, text] : rows) {
        SCOPED_TRACE(text);
        uint32_t value;
        memcpy(&value, octets.data(), sizeof value);
        expect_formats(text, [value](char *buffer, uint32_t size) {
            return snprintf_ip_address(buffer, size, value);
        });
    }
}

TEST(snprintf_ipv6_address, writes_every_digit)
{
    const std::pair<Ipv6, const char *> rows[] = {
        {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
         "0000:0000:0000:0000:0000:0000:0000:0001"},
        {{0x20, 0x01, 0x0d, 0xb8, 0, 0xa0, 0x0f, 0xff, 1, 2, 3, 4, 0xfe, 0xdc, 0xba, 0x98},
         "2001:0db8:00a0:0fff:0102:0304:fedc:ba98"},
    };
    for (const auto &[address, text] : rows) {
        SCOPED_TRACE(text);
        expect_formats(text, [&address = address](char *buffer, uint32_t size) {
            return snprintf_ipv6_address(buffer, size, address.data());
        });
    }
}

TEST(snprintf_ipv6_address, writes_nothing_for_a_null_address)
{
    char buffer[] = "####";
    EXPECT_EQ(snprintf_ipv6_address(buffer, sizeof buffer, nullptr), -1);
    EXPECT_STREQ(buffer, "####");
}

TEST(addresses, survive_the_way_to_text_and_back)
{
    ruk_test::Random random;
    for (int i = 0; i < 2000; ++i) {
        Ipv6 bytes;
        for (uint8_t &byte : bytes) {
            byte = random.byte();
        }
        char text[40];
        snprintf_ipv6_address(text, sizeof text, bytes.data());
        ASSERT_EQ(parse_ipv6(text), bytes);

        Mac mac;
        snprintf_mac_address(text, sizeof text, bytes.data());
        ASSERT_EQ(parse_mac(text, mac), 0);
        ASSERT_TRUE(std::equal(mac.begin(), mac.end(), bytes.begin()));

        uint32_t value;
        memcpy(&value, bytes.data(), sizeof value);
        snprintf_ip_address(text, sizeof text, value);
        ASSERT_EQ(parse_ip(text), (Ipv4{bytes[0], bytes[1], bytes[2], bytes[3]}));
    }
}

TEST(kt_format_mac_address, prints_nothing)
{
    EXPECT_EQ(ruk_test::captured_stdout(kt_format_mac_address), "");
}
