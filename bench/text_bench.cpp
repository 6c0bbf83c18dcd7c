// Address text beside the C library and libfmt, which parse and print the same texts.
#include "ruk/address.h"

#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fmt/format.h>
#include <netinet/ether.h>

#include "bench/inputs.h"

namespace
{

using bench::random_numbers;
using bench::texts;
using mac_address = std::array<uint8_t, 6>;
using ipv6_address = std::array<uint8_t, 16>;

// Seven to fifteen characters.
std::string draw_ipv4(random_numbers &random)
{
    std::string text;
    for (int i = 0; i < 4; ++i) {
        text += (i > 0 ? "." : "") + std::to_string(random.of_random_length(10, 255));
    }
    return text;
}

// As ether_aton_r and this library take them: pairs with colons, upper or lower case, a zero at
// the start written or not.
std::string draw_mac(random_numbers &random)
{
    const bool upper = random.between(0, 1) == 1;
    const uint32_t first = random.between(0, 255);
    std::string text =
        random.between(0, 1) == 1 ? fmt::format("{:x}", first) : fmt::format("{:02x}", first);
    for (int i = 1; i < 6; ++i) {
        text += fmt::format(":{:02x}", random.between(0, 255));
    }
    if (upper) {
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char c) { return static_cast<char>(toupper(c)); });
    }
    return text;
}

// As inet_ntop prints the addresses of hosts.  Half of them have no run of zero groups to leave
// out; of the others there are as many of each of four sorts.
std::string draw_ipv6(random_numbers &random)
{
    std::array<uint16_t, 8> groups{};
    const auto fill = [&](size_t from, size_t behind, auto draw) {
        std::generate(groups.begin() + from, groups.begin() + behind,
                      [draw] { return htons(static_cast<uint16_t>(draw())); });
    };
    const auto of_any_length = [&] { return random.of_random_length(16, 0xffff); };
    const auto any = [&] { return random.between(0, 0xffff); };
    const auto global = [&] { return random.between(0x2000, 0x3fff); };
    switch (random.between(0, 7)) {
    case 0: // A server, with a low number in its network.
        fill(0, 1, global);
        fill(1, random.between(2, 4), of_any_length);
        fill(7, 8, of_any_length);
        break;
    case 1: // On the link.
        fill(0, 1, [] { return 0xfe80; });
        fill(4, 8, any);
        break;
    case 2: // Neighbours asked for.
        fill(0, 1, [] { return 0xff02; });
        fill(5, 6, [] { return 1; });
        fill(6, 7, [&] { return random.between(0xff00, 0xffff); });
        fill(7, 8, any);
        break;
    case 3: // The loopback and its like.
        fill(7, 8, of_any_length);
        break;
    default: // A host that drew its number in a network.
        fill(0, 1, global);
        fill(1, 4, of_any_length);
        fill(4, 8, any);
    }
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, groups.data(), text, sizeof text);
}

template <typename address, typename parse_function> auto into(parse_function parse)
{
    return [parse](const char *text) {
        address out;
        parse(&out, text);
        return out;
    };
}

template <typename address> std::vector<address> draw_addresses()
{
    random_numbers random;
    std::vector<address> drawn(bench::k_inputs);
    for (address &one : drawn) {
        for (uint8_t &byte : one) {
            byte = static_cast<uint8_t>(random.between(0, 255));
        }
    }
    return drawn;
}

// Octets of one, two and three digits alike.
std::vector<uint32_t> draw_ipv4_addresses()
{
    random_numbers random;
    std::vector<uint32_t> drawn(bench::k_inputs);
    for (uint32_t &one : drawn) {
        for (int i = 0; i < 4; ++i) {
            one = one << 8 | random.of_random_length(10, 255);
        }
    }
    return drawn;
}

// What stands for ipv4 text after "{}.{}.{}.{}" by hand.
char *put_with_to_chars(char *at, char *end, uint32_t value)
{
    uint8_t octets[4];
    memcpy(octets, &value, sizeof octets);
    for (size_t i = 0; i < 4; ++i) {
        if (i > 0) {
            *at++ = '.';
        }
        at = std::to_chars(at, end, octets[i]).ptr;
    }
    *at = '\0';
    return at;
}

struct peer {
    const char *name;
    void (*run)(benchmark::State &);
};

void parse_ipv4(benchmark::State &state, auto parse)
{
    static const texts inputs(draw_ipv4);
    bench::time_parser(state, inputs, into<uint32_t>(parse));
}

void parse_mac(benchmark::State &state, auto parse)
{
    static const texts inputs(draw_mac);
    bench::time_parser(state, inputs, into<mac_address>(parse));
}

void parse_ipv6(benchmark::State &state, auto parse)
{
    static const texts inputs(draw_ipv6);
    bench::time_parser(state, inputs, into<ipv6_address>(parse));
}

void format_ipv4(benchmark::State &state, auto format)
{
    static const auto inputs = draw_ipv4_addresses();
    bench::time_formatter(state, inputs, format);
}

void format_mac(benchmark::State &state, auto format)
{
    static const auto inputs = draw_addresses<mac_address>();
    bench::time_formatter(state, inputs, format);
}

void format_ipv6(benchmark::State &state, auto format)
{
    static const auto inputs = draw_addresses<ipv6_address>();
    bench::time_formatter(state, inputs, format);
}

constexpr peer k_peers[] = {
    {"parse/ipv4/ruk",
     [](benchmark::State &state) {
         parse_ipv4(state, [](uint32_t *out, const char *text) { kt_parse_ip_address(out, text); });
     }},
    {"parse/ipv4/inet_pton",
     [](benchmark::State &state) {
         parse_ipv4(state, [](uint32_t *out, const char *text) { inet_pton(AF_INET, text, out); });
     }},
    {"parse/mac/ruk",
     [](benchmark::State &state) {
         parse_mac(state, [](mac_address *out, const char *text) {
             kt_parse_mac_address(out->data(), text);
         });
     }},
    {"parse/mac/ether_aton_r",
     [](benchmark::State &state) {
         parse_mac(state, [](mac_address *out, const char *text) {
             ether_aton_r(text, reinterpret_cast<ether_addr *>(out));
         });
     }},
    {"parse/ipv6/ruk",
     [](benchmark::State &state) {
         parse_ipv6(state, [](ipv6_address *out, const char *text) {
             kt_parse_ipv6_address(out->data(), text);
         });
     }},
    {"parse/ipv6/inet_pton",
     [](benchmark::State &state) {
         parse_ipv6(state,
                    [](ipv6_address *out, const char *text) { inet_pton(AF_INET6, text, out); });
     }},
    {"format/ipv4/ruk",
     [](benchmark::State &state) {
         format_ipv4(state, [](char *buffer, size_t size, uint32_t value) {
             return snprintf_ip_address(buffer, static_cast<uint32_t>(size), value);
         });
     }},
    {"format/ipv4/snprintf",
     [](benchmark::State &state) {
         format_ipv4(state, [](char *buffer, size_t size, uint32_t value) {
             const uint32_t host = ntohl(value);
             return snprintf(buffer, size, "%d.%d.%d.%d", host >> 24, host >> 16 & 0xff,
                             host >> 8 & 0xff, host & 0xff);
         });
     }},
    {"format/ipv4/inet_ntop",
     [](benchmark::State &state) {
         format_ipv4(state, [](char *buffer, size_t size, uint32_t value) {
             return inet_ntop(AF_INET, &value, buffer, static_cast<socklen_t>(size));
         });
     }},
    {"format/ipv4/to_chars",
     [](benchmark::State &state) {
         format_ipv4(state, [](char *buffer, size_t size, uint32_t value) {
             return put_with_to_chars(buffer, buffer + size, value);
         });
     }},
    {"format/ipv4/fmt",
     [](benchmark::State &state) {
         format_ipv4(state, [](char *buffer, size_t size, uint32_t value) {
             const uint32_t host = ntohl(value);
             return fmt::format_to_n(buffer, size, "{}.{}.{}.{}", host >> 24, host >> 16 & 0xff,
                                     host >> 8 & 0xff, host & 0xff)
                 .size;
         });
     }},
    {"format/mac/ruk",
     [](benchmark::State &state) {
         format_mac(state, [](char *buffer, size_t size, const mac_address &m) {
             return snprintf_mac_address(buffer, static_cast<uint32_t>(size), m.data());
         });
     }},
    {"format/mac/snprintf",
     [](benchmark::State &state) {
         format_mac(state, [](char *buffer, size_t size, const mac_address &m) {
             return snprintf(buffer, size, "%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3],
                             m[4], m[5]);
         });
     }},
    {"format/mac/fmt",
     [](benchmark::State &state) {
         format_mac(state, [](char *buffer, size_t size, const mac_address &m) {
             return fmt::format_to_n(buffer, size, "{:02x}:{:02x}:{:02x}:{:02x}:{:02x}:{:02x}",
                                     m[0], m[1], m[2], m[3], m[4], m[5])
                 .size;
         });
     }},
    {"format/ipv6/ruk",
     [](benchmark::State &state) {
         format_ipv6(state, [](char *buffer, size_t size, const ipv6_address &a) {
             return snprintf_ipv6_address(buffer, static_cast<uint32_t>(size), a.data());
         });
     }},
    {"format/ipv6/snprintf",
     [](benchmark::State &state) {
         format_ipv6(state, [](char *buffer, size_t size, const ipv6_address &a) {
             const auto group = [&a](size_t i) { return a[2 * i] << 8 | a[2 * i + 1]; };
             return snprintf(buffer, size, "%04x:%04x:%04x:%04x:%04x:%04x:%04x:%04x", group(0),
                             group(1), group(2), group(3), group(4), group(5), group(6), group(7));
         });
     }},
};

} // namespace

int main(int argc, char **argv)
{
    for (const peer &row : k_peers) {
        benchmark::RegisterBenchmark(row.name, row.run)->Unit(benchmark::kMicrosecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
