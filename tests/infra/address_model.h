// Address text as plainly as can be: whole strings, cut into pieces at their separators.  What the
// parsers and formatters answer is compared with this.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "ruk/address.h"

namespace ruk_test::address_model
{

inline bool is_one_of(char c, const std::string &characters)
{
    return c != '\0' && characters.find(c) != std::string::npos;
}

inline bool is_white(char c)
{
    return is_one_of(c, " \t\n\v\f\r");
}

inline bool is_hex(char c)
{
    return is_one_of(c, "0123456789abcdefABCDEF");
}

inline bool is_decimal(char c)
{
    return is_one_of(c, "0123456789");
}

inline std::string without_leading_white(std::string text)
{
    while (!text.empty() && is_white(text[0])) {
        text.erase(0, 1);
    }
    return text;
}

// The pieces between the separators: one more than there are separators.
inline std::vector<std::string> pieces(const std::string &text, char separator)
{
    std::vector<std::string> all(1);
    for (const char c : text) {
        if (c == separator) {
            all.emplace_back();
        } else {
            all.back() += c;
        }
    }
    return all;
}

template <typename Test> bool all_are(const std::string &text, Test test)
{
    for (const char c : text) {
        if (!test(c)) {
            return false;
        }
    }
    return true;
}

// --- MAC ----------------------------------------------------------------------------------------

struct MacAnswer {
    int32_t result;
    std::array<uint8_t, 6> bytes; // also after a failure: groups before it are stored
    std::string said;             // the messages
};

// The character at a position of a text that zeros follow.
inline char at(const std::string &text, size_t position)
{
    return position < text.size() ? text[position] : '\0';
}

// Reads the groups of so many digits each; a dash separates like the given separator.
inline bool mac_groups(const std::string &copy, size_t count, size_t digits, char separator,
                       std::array<uint8_t, 6> &bytes)
{
    for (size_t i = 0; i < count; ++i) {
        const size_t start = i * (digits + 1);
        for (size_t k = start; k < start + digits; ++k) {
            if (!is_hex(at(copy, k))) {
                return false;
            }
        }
        const char after = at(copy, start + digits);
        if (i + 1 < count && after != separator && after != '-') {
            return false;
        }
        size_t end = start;
        while (is_hex(at(copy, end))) {
            ++end;
        }
        const unsigned long value = std::stoul(copy.substr(start, end - start), nullptr, 16);
        if (digits == 2) {
            bytes[i] = static_cast<uint8_t>(value);
        } else {
            bytes[2 * i] = static_cast<uint8_t>(value >> 8);
            bytes[2 * i + 1] = static_cast<uint8_t>(value);
        }
    }
    return true;
}

inline MacAnswer parse_mac(const std::string &whole, std::array<uint8_t, 6> before, uint32_t trace)
{
    MacAnswer answer{-1, before, ""};
    const std::string text = without_leading_white(whole);
    if (text.size() < 5) {
        return answer;
    }
    std::string copy;
    if (is_hex(text[0]) && text[1] == ':') {
        copy = "0" + text.substr(0, 18);
        if ((trace & 0x08) != 0) {
            answer.said += "Adjusted MAC String from " + text + " to " + copy + "\n";
        }
    } else {
        copy = text.substr(0, 19);
        if ((trace & 0x10) != 0) {
            answer.said += "No adjustment in MAC String needed " + copy + "\n";
        }
    }
    if (at(copy, 17) != '\0' && !is_white(at(copy, 17))) {
        if ((trace & 0x04) != 0) {
            answer.said +=
                "kt_get_adjusted_mac_string: Mac[" + text + "] parsed has extra characters\n";
        }
        return answer;
    }
    bool taken = false;
    if (is_one_of(at(copy, 2), ":-")) {
        taken = mac_groups(copy, 6, 2, ':', answer.bytes);
    } else if (is_one_of(at(copy, 4), ".-")) {
        taken = mac_groups(copy, 3, 4, '.', answer.bytes);
    } else if ((trace & 0x04) != 0) {
        answer.said += "Couldn't parse MAC address " + copy + "\n";
    }
    answer.result = taken ? 0 : -1;
    return answer;
}

// --- IPv4 ---------------------------------------------------------------------------------------

using Ipv4 = std::array<uint8_t, 4>;

enum class Zeros { may_lead, must_not_lead };

// Four decimal numbers of at most 255 with dots between them.
inline std::optional<Ipv4> quad(const std::string &text, Zeros zeros)
{
    const std::vector<std::string> numbers = pieces(text, '.');
    Ipv4 octets;
    if (numbers.size() != octets.size()) {
        return std::nullopt;
    }
    for (size_t i = 0; i < octets.size(); ++i) {
        std::string number = numbers[i];
        if (number.empty() || !all_are(number, is_decimal)) {
            return std::nullopt;
        }
        if (zeros == Zeros::must_not_lead && number.size() > 1 && number[0] == '0') {
            return std::nullopt;
        }
        while (number.size() > 1 && number[0] == '0') {
            number.erase(0, 1);
        }
        if (number.size() > 3 || std::stoul(number) > 255) {
            return std::nullopt;
        }
        octets[i] = static_cast<uint8_t>(std::stoul(number));
    }
    return octets;
}

inline std::optional<Ipv4> parse_ip(const std::string &whole)
{
    const std::string text = without_leading_white(whole);
    if (text.size() < 5) {
        return std::nullopt;
    }
    std::string word;
    for (size_t i = 0; i < text.size() && !is_white(text[i]); ++i) {
        word += text[i];
    }
    return quad(word, Zeros::may_lead);
}

// --- IPv6 ---------------------------------------------------------------------------------------

using Ipv6 = std::array<uint8_t, 16>;

// A group of hexadecimal digits of at most 0xffff, any number of zeros before it.
inline std::optional<unsigned long> group(std::string text)
{
    if (text.empty() || !all_are(text, is_hex)) {
        return std::nullopt;
    }
    while (text.size() > 1 && text[0] == '0') {
        text.erase(0, 1);
    }
    if (text.size() > 4) {
        return std::nullopt;
    }
    return std::stoul(text, nullptr, 16);
}

inline std::optional<Ipv6> parse_ipv6(std::string text)
{
    if (!text.empty() && text[0] == ':') {
        if (text.substr(0, 2) != "::") {
            return std::nullopt;
        }
        // From here on an empty piece stands for "::" wherever it is.
        text.erase(0, 1);
    }
    const std::vector<std::string> groups = pieces(text, ':');
    std::vector<uint8_t> bytes;
    std::optional<size_t> mark;
    for (size_t i = 0; i < groups.size(); ++i) {
        const bool last = i + 1 == groups.size();
        if (groups[i].empty() && last) {
            // Nothing may end in one ":".
            if (i > 0 && !groups[i - 1].empty()) {
                return std::nullopt;
            }
        } else if (groups[i].empty()) {
            if (mark) {
                return std::nullopt;
            }
            mark = bytes.size();
        } else if (last && groups[i].find('.') != std::string::npos) {
            const auto octets = quad(groups[i], Zeros::must_not_lead);
            if (!octets) {
                return std::nullopt;
            }
            bytes.insert(bytes.end(), octets->begin(), octets->end());
        } else {
            const auto value = group(groups[i]);
            if (!value) {
                return std::nullopt;
            }
            bytes.push_back(static_cast<uint8_t>(*value >> 8));
            bytes.push_back(static_cast<uint8_t>(*value));
        }
    }
    if (bytes.size() > 16 || (!mark && bytes.size() < 16)) {
        return std::nullopt;
    }
    while (bytes.size() < 16) {
        bytes.insert(bytes.begin() + static_cast<long>(*mark), 0);
    }
    Ipv6 address;
    std::copy(bytes.begin(), bytes.end(), address.begin());
    return address;
}

// --- UUID ---------------------------------------------------------------------------------------

inline std::array<char, 48> uuid(const std::string &text)
{
    std::string copy = text.substr(0, 48);
    if (!copy.empty() && copy.back() == '\n') {
        copy.back() = '\0';
    }
    std::array<char, 48> bytes{};
    std::copy(copy.begin(), copy.end(), bytes.begin());
    return bytes;
}

// --- formatters ---------------------------------------------------------------------------------

inline std::string hex_pair(uint8_t byte)
{
    char text[3];
    snprintf(text, sizeof text, "%02x", byte);
    return text;
}

inline std::string mac_text(const uint8_t *mac)
{
    std::string text = hex_pair(mac[0]);
    for (size_t i = 1; i < 6; ++i) {
        text += ":" + hex_pair(mac[i]);
    }
    return text;
}

inline std::string ip_text(const uint8_t *octets)
{
    std::string text = std::to_string(octets[0]);
    for (size_t i = 1; i < 4; ++i) {
        text += "." + std::to_string(octets[i]);
    }
    return text;
}

inline std::string ipv6_text(const uint8_t *address)
{
    std::string text;
    for (size_t i = 0; i < 16; ++i) {
        text += (i > 0 && i % 2 == 0 ? ":" : "") + hex_pair(address[i]);
    }
    return text;
}

} // namespace ruk_test::address_model
