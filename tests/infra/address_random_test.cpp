// Address text against a plain model: texts of the grammar, mutated ones, and all the short ones of
// a few telling characters.
#include "ruk/address.h"

#include <functional>

#include "tests/infra/address_model.h"
#include "tests/support/capture.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/random.h"

namespace model = ruk_test::address_model;
using ruk_test::GuardedMemory;
using ruk_test::Random;

namespace
{

constexpr int k_texts = 60000;
constexpr uint8_t k_old = 0xee;

// The trace word while a test runs.
class Trace
{
public:
    explicit Trace(uint32_t bits) { kt_debug_print_ktstrings = bits; }
    ~Trace() { kt_debug_print_ktstrings = 0x87; }
    Trace(const Trace &) = delete;
    Trace &operator=(const Trace &) = delete;
};

// Each returns whether the text was accepted, after comparing everything with the model.
bool mac_agrees(GuardedMemory &memory, const std::string &text)
{
    std::array<uint8_t, 6> old;
    old.fill(k_old);
    const model::MacAnswer expected = model::parse_mac(text, old, 0);
    std::array<uint8_t, 6> mac = old;
    EXPECT_EQ(kt_parse_mac_address(mac.data(), memory.put(text)), expected.result) << text;
    EXPECT_EQ(mac, expected.bytes) << text;
    return expected.result == 0;
}

bool ip_agrees(GuardedMemory &memory, const std::string &text)
{
    const auto expected = model::parse_ip(text);
    model::Ipv4 old;
    old.fill(k_old);
    uint32_t value;
    memcpy(&value, old.data(), sizeof value);
    EXPECT_EQ(kt_parse_ip_address(&value, memory.put(text)), expected ? 0 : -1) << text;
    model::Ipv4 octets;
    memcpy(octets.data(), &value, sizeof value);
    EXPECT_EQ(octets, expected.value_or(old)) << text;
    return expected.has_value();
}

bool ipv6_agrees(GuardedMemory &memory, const std::string &text)
{
    const auto expected = model::parse_ipv6(text);
    model::Ipv6 old;
    old.fill(k_old);
    model::Ipv6 address = old;
    EXPECT_EQ(kt_parse_ipv6_address(address.data(), memory.put(text)), expected ? 0 : -1) << text;
    EXPECT_EQ(address, expected.value_or(old)) << text;
    return expected.has_value();
}

using agreement = bool (*)(GuardedMemory &, const std::string &);

// A few characters replaced, removed, doubled or put in.
std::string mutated(Random &random, std::string text, std::string_view characters)
{
    for (uint32_t times = random.below(4); times > 0 && !text.empty(); --times) {
        const size_t at = random.below(text.size());
        const char c =
            random.once_in(8) ? static_cast<char>(random.byte() | 1) : random.one_char(characters);
        switch (random.below(4)) {
        case 0:
            text[at] = c;
            break;
        case 1:
            text.erase(at, 1);
            break;
        case 2:
            text.insert(at, 1, text[at]);
            break;
        default:
            text.insert(at, 1, c);
        }
    }
    return text;
}

std::string some_of(Random &random, std::string_view characters, size_t most)
{
    std::string text;
    for (uint32_t length = random.below(most + 1); length > 0; --length) {
        text += random.one_char(characters);
    }
    return text;
}

std::string hex_digits(Random &random, size_t count)
{
    std::string text;
    while (text.size() < count) {
        text += random.one_char("0123456789abcdefABCDEF");
    }
    return text;
}

constexpr std::string_view k_white = " \t\n\v\f\r";

std::string some_mac(Random &random)
{
    std::string text = some_of(random, k_white, random.once_in(4) ? 3 : 0);
    const bool pairs = random.once_in(2);
    for (size_t i = 0; i < (pairs ? 6 : 3); ++i) {
        text += i == 0 ? "" : std::string(1, random.one_char(pairs ? "::::-" : "...-"));
        text += hex_digits(random, pairs ? 2 - (i == 0 && random.once_in(4)) : 4);
    }
    if (random.once_in(4)) {
        text += some_of(random, "0fF:-. x", 6);
    }
    return text;
}

std::string some_number(Random &random)
{
    constexpr const char *k_edges[] = {"0",   "9",   "10",  "99",  "100",
                                       "199", "200", "249", "250", "255"};
    std::string text =
        random.once_in(2) ? std::string(random.one_of(k_edges)) : std::to_string(random.below(256));
    if (random.once_in(24)) {
        text = std::to_string(random.below(1200));
    }
    if (random.once_in(24)) {
        text.insert(0, 1 + random.below(30), '0');
    }
    return text;
}

std::string some_quad(Random &random)
{
    std::string text = some_number(random);
    for (uint32_t more = random.once_in(16) ? random.below(6) : 3; more > 0; --more) {
        text += "." + some_number(random);
    }
    return text;
}

std::string some_ip(Random &random)
{
    return some_of(random, k_white, random.once_in(4) ? 3 : 0) + some_quad(random) +
           (random.once_in(4) ? some_of(random, " \t.1x", 4) : "");
}

std::string some_ipv6(Random &random)
{
    const size_t groups = random.once_in(2) ? 8 : random.below(10);
    const size_t mark = groups < 8 || random.once_in(4) ? random.below(groups + 1) : 99;
    std::string text;
    for (size_t i = 0; i < groups; ++i) {
        if (i == mark) {
            text += i == 0 ? "::" : ":";
        }
        text += random.once_in(20) ? std::string(random.below(8), '0') : "";
        text += hex_digits(random, 1 + random.below(4));
        text += i + 1 < groups ? ":" : "";
    }
    if (mark == groups) {
        text += "::";
    }
    if (random.once_in(4)) {
        text += (text.empty() || text.back() == ':' ? "" : ":") + some_quad(random);
    }
    return text;
}

// Random texts made by some, half of them mutated.  Both answers must be frequent.
void compare(agreement agrees, std::string (*some)(Random &), std::string_view characters)
{
    Trace quiet(0);
    Random random;
    GuardedMemory memory;
    int accepted = 0;
    for (int i = 0; i < k_texts && !testing::Test::HasFailure(); ++i) {
        std::string text = some(random);
        if (random.once_in(2)) {
            text = mutated(random, text, characters);
        }
        accepted += agrees(memory, text) ? 1 : 0;
    }
    EXPECT_GT(accepted, k_texts / 10);
    EXPECT_GT(k_texts - accepted, k_texts / 10);
}

// Every text of at most so many of these characters, between a head and a tail.
void compare_all(agreement agrees, const std::string &head, std::string_view characters,
                 size_t most, const std::string &tail = "")
{
    Trace quiet(0);
    GuardedMemory memory;
    size_t texts = 1;
    for (size_t length = 0; length <= most; ++length, texts *= characters.size()) {
        for (size_t n = 0; n < texts && !testing::Test::HasFailure(); ++n) {
            std::string text = head;
            for (size_t i = 0, rest = n; i < length; ++i, rest /= characters.size()) {
                text += characters[rest % characters.size()];
            }
            agrees(memory, text + tail);
        }
    }
}

// The formatter into every size around the text's, with bytes around the buffer that must not
// change.
void expect_format(const std::string &expected,
                   const std::function<int32_t(char *, uint32_t)> &format)
{
    for (uint32_t size = 0; size <= expected.size() + 2; ++size) {
        std::vector<char> buffer(size + 2, '#');
        ASSERT_EQ(format(buffer.data() + 1, size), static_cast<int32_t>(expected.size()));
        std::string whole(size + 2, '#');
        if (size > 0) {
            const std::string kept = expected.substr(0, size - 1);
            whole.replace(1, kept.size(), kept);
            whole[1 + kept.size()] = '\0';
        }
        ASSERT_EQ(std::string(buffer.begin(), buffer.end()), whole) << expected << " in " << size;
    }
}

} // namespace

TEST(address_random, mac_texts_agree_with_the_model)
{
    compare(mac_agrees, some_mac, "0aF:-. \tg");
}

TEST(address_random, mac_messages_agree_with_the_model)
{
    Random random;
    GuardedMemory memory;
    for (int batch = 0; batch < 400 && !testing::Test::HasFailure(); ++batch) {
        Trace trace(random.byte());
        std::vector<std::string> texts;
        std::string expected;
        for (int i = 0; i < 8; ++i) {
            texts.push_back(mutated(random, some_mac(random), "0aF:-. \tg"));
            expected += model::parse_mac(texts.back(), {}, kt_debug_print_ktstrings).said;
        }
        EXPECT_EQ(ruk_test::captured_stdout([&] {
                      for (const std::string &text : texts) {
                          uint8_t mac[KT_MAC_ADDRESS_SIZE];
                          kt_parse_mac_address(mac, memory.put(text));
                      }
                  }),
                  expected);
    }
}

TEST(address_random, mac_texts_with_every_short_part_agree_with_the_model)
{
    compare_all(mac_agrees, "", "0F:-. g", 5);
    compare_all(mac_agrees, "0:1b:2c:3d:", "4F:-. g", 5);
    compare_all(mac_agrees, "00:1b:2c:3d:", "4F:-. g", 5);
    compare_all(mac_agrees, "001b.2c3d.4e", "4F:-. g", 5);
}

TEST(address_random, ip_texts_agree_with_the_model)
{
    compare(ip_agrees, some_ip, "0125.. \tx");
}

TEST(address_random, ip_texts_with_every_short_part_agree_with_the_model)
{
    compare_all(ip_agrees, "", "1.0 ", 8);
    compare_all(ip_agrees, "1.2.", "2561. x", 5);
    compare_all(ip_agrees, "", "2561. x", 5, ".3.4");
}

TEST(address_random, ipv6_texts_agree_with_the_model)
{
    compare(ipv6_agrees, some_ipv6, "0aF:::. g");
}

TEST(address_random, ipv6_texts_with_every_short_part_agree_with_the_model)
{
    compare_all(ipv6_agrees, "", ":1.0g", 7);
    compare_all(ipv6_agrees, "::", ":1.fF0", 6);
    compare_all(ipv6_agrees, "1:2:3:4:5:6", ":7.g", 7);
    compare_all(ipv6_agrees, "1:2:3:4:5:6:", ":7.0", 7);
    compare_all(ipv6_agrees, "1:2:3", ":0f", 7, ":6:7:8");
}

TEST(address_random, every_byte_at_every_place_agrees_with_the_model)
{
    Trace quiet(0);
    GuardedMemory memory;
    const struct {
        agreement agrees;
        std::string text;
    } rows[] = {
        {mac_agrees, "00:1b:2c:3d:4e:5f "}, {mac_agrees, "001b.2c3d.4e5f"},
        {mac_agrees, "  0:1b:2c:3d:4e:5f"}, {ip_agrees, " 10.200.30.4 x"},
        {ip_agrees, "255.255.255.255"},     {ipv6_agrees, "1:20:300:4000:5:6:7:8"},
        {ipv6_agrees, "::ffff:10.1.2.3"},   {ipv6_agrees, "fe80::1:2"},
    };
    for (const auto &row : rows) {
        for (size_t at = 0; at < row.text.size(); ++at) {
            for (int c = 0; c < 256; ++c) {
                std::string text = row.text;
                text[at] = static_cast<char>(c);
                // The model takes a text as it ends: at a zero byte.
                row.agrees(memory, text.c_str());
            }
        }
    }
}

TEST(address_random, uuids_agree_with_the_model)
{
    Random random;
    GuardedMemory memory;
    for (int i = 0; i < k_texts; ++i) {
        std::string text;
        for (uint32_t length = random.below(60); length > 0; --length) {
            text += random.once_in(6) ? '\n' : static_cast<char>(random.byte() | 1);
        }
        std::array<char, 50> buffer;
        buffer.fill('#');
        ASSERT_EQ(kt_parse_intf_uuid(buffer.data() + 1, memory.put(text)), 0);
        const std::array<char, 48> expected = model::uuid(text);
        ASSERT_EQ(memcmp(buffer.data() + 1, expected.data(), expected.size()), 0) << text;
        ASSERT_EQ(buffer.front(), '#');
        ASSERT_EQ(buffer.back(), '#');
    }
}

TEST(address_random, formatted_texts_agree_with_the_model)
{
    Random random;
    for (int i = 0; i < 1000; ++i) {
        std::array<uint8_t, 16> bytes;
        for (uint8_t &byte : bytes) {
            byte = random.once_in(4) ? uint8_t{0} : random.byte();
        }
        uint32_t value;
        memcpy(&value, bytes.data(), sizeof value);
        expect_format(model::mac_text(bytes.data()), [&](char *buffer, uint32_t size) {
            return snprintf_mac_address(buffer, size, bytes.data());
        });
        expect_format(model::ip_text(bytes.data()), [&](char *buffer, uint32_t size) {
            return snprintf_ip_address(buffer, size, value);
        });
        expect_format(model::ipv6_text(bytes.data()), [&](char *buffer, uint32_t size) {
            return snprintf_ipv6_address(buffer, size, bytes.data());
        });
    }
}

// Each octet's text, all of them, at each place.
TEST(address_random, every_octet_is_formatted_as_the_model_says)
{
    for (unsigned octet = 0; octet < 256; ++octet) {
        for (size_t at = 0; at < 4; ++at) {
            std::array<uint8_t, 4> octets = {1, 22, 0, 255};
            octets[at] = static_cast<uint8_t>(octet);
            uint32_t value;
            memcpy(&value, octets.data(), sizeof value);
            char text[16];
            EXPECT_EQ(snprintf_ip_address(text, sizeof text, value),
                      static_cast<int32_t>(model::ip_text(octets.data()).size()));
            EXPECT_EQ(text, model::ip_text(octets.data()));
        }
    }
}
