// IPv4 and IPv6 addresses: text to bytes and back.
#include "ruk/address.h"

#include <array>
#include <bit>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// One number of the way below, of at most three digits.
struct ShortNumber {
    uint32_t value;
    const char *rest;

    // Takes the next character if it is a digit.  If not it changes nothing, and finds no digit
    // when it is asked again.
    void take_digit()
    {
        const uint32_t digit = static_cast<uint8_t>(*rest - '0');
        const uint32_t is_digit = (digit - 10) >> 31;
        value += (value * 9 + digit) & -is_digit;
        rest += is_digit;
    }
};

// The text as most are: four numbers of one to three digits and nothing else.  Gives what read_quad
// gives, but no branch depends on how many digits there are, since every second one would be
// mispredicted.  False for texts that are to be read the other way.
bool read_short_quad(const char *p, uint32_t &quad)
{
    uint32_t read = 0;
    for (size_t i = 0; i < k_octets; ++i) {
        if (!is_digit(*p)) {
            return false;
        }
        ShortNumber number{kttext::digit_value(*p), p + 1};
        number.take_digit();
        number.take_digit();
        if (number.value > 255 || *number.rest != (i + 1 < k_octets ? '.' : '\0')) {
            return false;
        }
        read |= number.value << 8 * i;
        p = number.rest + 1;
    }
    quad = read;
    return true;
}

// The whole text, in any form.
[[gnu::noinline]] bool read_any_quad(const char *p, uint32_t &quad)
{
    uint8_t octets[k_octets];
    const char *end = read_quad(p, LeadingZeros::allowed, octets);
    if (end == nullptr || (*end != '\0' && !kttext::is_space(*end))) {
        return false;
    }
    memcpy(&quad, octets, sizeof octets);
    return true;
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

// The whole text, in any form.
[[gnu::noinline]] bool read_any_groups(const char *text, uint8_t *address)
{
    Ipv6Bytes bytes;
    if (!read_groups(text, bytes) || !bytes.finish()) {
        return false;
    }
    memcpy(address, bytes.data(), KT_IPV6_ADDRESS_SIZE);
    return true;
}

// IPv6 texts as most are: hexadecimal digits and colons, no longer than they have to be.  Where the
// groups end is found out for all of them at once, and always eight groups are read, all at once,
// so that little is left to mispredict: how long the text is, and whether it has a "::".

constexpr size_t k_longest_ipv6 = sizeof "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff" - 1;

// Sixteen bytes at once, in the compiler's portable vectors.
using Chars [[gnu::vector_size(16)]] = uint8_t;
using Pairs [[gnu::vector_size(16)]] = uint16_t;
using Fours [[gnu::vector_size(16)]] = uint32_t;
using Words [[gnu::vector_size(16)]] = uint64_t;

// Bit n says that byte n of a comparison's result is set.
uint64_t bits_of(Chars compared)
{
#if defined(__SSE2__)
    // Every x86-64 has it, and with the words below it takes a fifth longer to read an address.
    return static_cast<uint32_t>(_mm_movemask_epi8(std::bit_cast<__m128i>(compared)));
#else
    // The product gathers one bit of each byte in the topmost one.
    const auto gathered = [](uint64_t bytes) {
        return (bytes & 0x0101010101010101) * 0x0102040810204080 >> 56;
    };
    uint64_t words[2];
    memcpy(words, &compared, sizeof words);
    return gathered(words[0]) | gathered(words[1]) << 8;
#endif
}

// Bit n says that character n of the readable ones, sixteen at least, is a ":".
uint64_t find_colons(const char *text, size_t readable)
{
    const auto in_chars = [=](size_t from) {
        // The last ones overlap: nothing behind the readable ones is touched.
        const size_t at = std::min(from, readable - sizeof(Chars));
        return bits_of(static_cast<Chars>(kttext::load_word<Chars>(text + at) == ':')) << at;
    };
    return in_chars(0) | in_chars(16) | in_chars(32);
}

// Where the parts of a text are, as bits like those of find_colons.
struct Ipv6Layout {
    uint64_t end_of_text;
    uint64_t zero_run; // the first ":" of "::", or 0
    // Of the groups: the character behind each.  A "::" is between two groups, of which the one at
    // the beginning or at the end of the text is without digits, and so as good as a zero.
    uint64_t ends;
    // At most one "::", no other groups without digits, and none of more than four.
    bool is_plain;

    Ipv6Layout(uint64_t colons, size_t length)
    {
        end_of_text = uint64_t{1} << length;
        zero_run = colons & colons >> 1;
        ends = (colons | end_of_text) & ~(zero_run << 1);
        const uint64_t single = colons & ~(zero_run | zero_run << 1);
        // Five characters in a row without a colon.
        uint64_t run = ~colons & (end_of_text - 1);
        const uint64_t fifth = run >> 4;
        run &= run >> 1;
        run &= run >> 2;
        is_plain =
            ((zero_run & (zero_run - 1)) | (single & (1 | end_of_text >> 1)) | (run & fifth)) == 0;
    }
};

// Eight groups, each as the four characters up to its end.
struct Ipv6Groups {
    Fours left, right;
    bool are_all;  // there are no more than these
    bool are_less; // the last one is there more than once

    // Eight characters may be read, and one in front of a text of three.
    Ipv6Groups(const char *text, const Ipv6Layout &layout)
    {
        uint64_t ends = layout.ends;
        const auto end = [&ends] { return static_cast<size_t>(__builtin_ctzll(ends)); };
        // The end of the text is never dropped.
        const auto drop = [&] { ends = (ends & (ends - 1)) | layout.end_of_text; };
        const auto next = [&] {
            drop();
            return kttext::load_word<uint32_t>(text + end() - 4);
        };
        // A first group has terminators in front of it where it is short.
        const auto first =
            static_cast<uint32_t>(kttext::load_word<uint64_t>(text) << 32 >> 8 * end());
        drop();
        const size_t missing = end() < 4 ? 4 - end() : 0;
        const uint32_t second = kttext::load_word<uint32_t>(text + end() + missing - 4)
                                << 8 * missing;
        // A third group ends behind the fourth character at the earliest.
        const uint32_t third = next();
        const uint32_t fourth = next();
        left = Fours{first, second, third, fourth};
        const uint32_t fifth = next();
        const uint32_t sixth = next();
        const uint32_t seventh = next();
        are_less = ends == layout.end_of_text;
        const uint32_t eighth = next();
        are_all = ends == layout.end_of_text;
        right = Fours{fifth, sixth, seventh, eighth};
    }
};

// Puts terminators in place of the colons in four characters each, and of what is in front of them.
Chars drop_up_to_colons(Fours chars)
{
    auto colons = std::bit_cast<Fours>(static_cast<Chars>(std::bit_cast<Chars>(chars) == ':'));
    colons |= colons >> 8;
    colons |= colons >> 16;
    return std::bit_cast<Chars>(chars & ~colons);
}

// The values of sixteen hexadecimal digits at once, where a terminator counts as 0.  Bytes of good
// become 0 where a character is neither.
Chars hex_values(Chars chars, Chars &good)
{
    const auto is_digit = static_cast<Chars>(chars - '0' < 10);
    const auto is_letter = static_cast<Chars>((chars | 0x20) - 'a' < 6);
    good &= is_digit | is_letter | static_cast<Chars>(chars == 0);
    return (chars & 0xf) + (is_letter & 9);
}

// Two digits at a time side by side, in every other byte.
Chars join_pairs(Chars values)
{
    const auto pairs = std::bit_cast<Pairs>(values);
    return std::bit_cast<Chars>((pairs << 4 | pairs >> 8) & 0xff);
}

// The bytes of eight groups.  False when one of their characters is no digit.
bool read_digits(const Ipv6Groups &groups, Chars &bytes)
{
    Chars good = ~Chars{};
    const auto pairs_of = [&good](Fours chars) {
        return join_pairs(hex_values(drop_up_to_colons(chars), good));
    };
    const Chars left = pairs_of(groups.left);
    const Chars right = pairs_of(groups.right);
    bytes = __builtin_shufflevector(left, right, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26,
                                    28, 30);
    return bits_of(good) == 0xffff;
}

// How many bits of ends are set: no two side by side, and no more than eight.
size_t count_ends(uint64_t ends)
{
    // Sums of two bits, of four, and of all.
    ends = (ends | ends >> 1) & 0x5555555555555555;
    ends = (ends + (ends >> 2)) & 0x3333333333333333;
    return ends * 0x1111111111111111 >> 60;
}

// Moves the groups behind "::" to the end of the sixteen bytes.
Chars spread(Chars bytes, const Ipv6Layout &layout)
{
    static constexpr auto k_kept = [] {
        std::array<uint8_t, 2 * sizeof(Chars)> kept{};
        std::fill(kept.begin(), kept.begin() + sizeof(Chars), uint8_t{0xff});
        return kept;
    }();
    const size_t count = count_ends(layout.ends);
    const size_t in_front = count_ends(layout.ends & ((layout.zero_run << 1) - 1));
    const auto kept = kttext::load_word<Chars>(&k_kept[sizeof(Chars) - 2 * in_front]);
    const Chars halves[2] = {Chars{}, bytes & ~kept};
    const auto *moved = reinterpret_cast<const uint8_t *>(halves) + 2 * count;
    return (bytes & kept) | kttext::load_word<Chars>(moved);
}

// Reads a text of which so many bytes, sixteen at least, may be read; and one in front of the text
// where it has but three characters.
bool read_groups_of(const char *text, size_t length, size_t readable, uint8_t *address)
{
    const Ipv6Layout layout(find_colons(text, readable), length);
    if (!layout.is_plain) {
        return false;
    }
    const Ipv6Groups groups(text, layout);
    Chars bytes;
    if (!groups.are_all || !read_digits(groups, bytes)) {
        return false;
    }
    if (layout.zero_run != 0) {
        bytes = spread(bytes, layout);
    } else if (groups.are_less) {
        return false;
    }
    memcpy(address, &bytes, sizeof bytes);
    return true;
}

// A text of three to fourteen characters with terminators behind it, read as two words that may
// overlap.
Chars load_short(const char *text, size_t length)
{
    Words chars{};
    if (length < 8) {
        const uint64_t last = kttext::load_word<uint32_t>(text + length - 3);
        chars[0] = kttext::load_word<uint32_t>(text) | last << 8 * (length - 3);
    } else {
        const uint64_t last = kttext::load_word<uint64_t>(text + length - 7);
        chars = Words{kttext::load_word<uint64_t>(text), last >> 8 * (15 - length)};
    }
    return std::bit_cast<Chars>(chars);
}

// Gives what read_any_groups gives.  False, with nothing written, for texts that are to be read
// that way.
bool read_plain_groups(const char *text, uint8_t *address)
{
    const size_t length = strnlen(text, k_longest_ipv6 + 1);
    if (length > k_longest_ipv6 || length < 3) {
        return false;
    }
    size_t readable = length + 1;
    Chars copy[2];
    if (readable < sizeof(Chars)) {
        // With terminators in front, since four characters up to the end of "::1" are read.
        copy[0] = Chars{};
        copy[1] = load_short(text, length);
        text = reinterpret_cast<const char *>(&copy[1]);
        readable = sizeof(Chars);
    }
    return read_groups_of(text, length, readable, address);
}

// What every octet looks like in a text.
struct OctetText {
    uint32_t chars; // with a "." behind the digits
    uint32_t bits;  // that chars has, eight for each character
};

constexpr std::array<OctetText, 256> k_octet_texts = [] {
    std::array<OctetText, 256> texts{};
    for (uint32_t octet = 0; octet != texts.size(); ++octet) {
        OctetText &text = texts[octet];
        for (uint32_t unit = octet > 99 ? 100 : octet > 9 ? 10 : 1; unit > 0; unit /= 10) {
            text.chars |= ('0' + octet / unit % 10) << text.bits;
            text.bits += 8;
        }
        text.chars |= uint32_t{'.'} << text.bits;
        text.bits += 8;
    }
    return texts;
}();

constexpr size_t k_longest_ipv4 = sizeof "255.255.255.255" - 1;

// Two octets and the "." behind each: four to eight characters.
struct QuadHalf {
    uint64_t chars;
    uint32_t bits;

    QuadHalf(uint32_t first, uint32_t second)
    {
        const OctetText &left = k_octet_texts[first & 0xff];
        const OctetText &right = k_octet_texts[second & 0xff];
        chars = left.chars | uint64_t{right.chars} << left.bits;
        bits = left.bits + right.bits;
    }
};

// Writes "a.b.c.d" from the bytes of value in memory order and returns its length.  No branch
// depends on the value, and nothing behind the terminator is written: the first half's eight bytes
// are no more than the shortest text has, and the second half ends with the text.
int32_t write_quad(char *at, uint32_t value)
{
    const QuadHalf left(value, value >> 8);
    const QuadHalf right(value >> 16, value >> 24);
    char *const middle = at + left.bits / 8;
    char *const end = middle + right.bits / 8;
    kttext::store_chars<uint64_t>(at, left.chars);
    kttext::store_chars<uint32_t>(middle, right.chars);
    kttext::store_chars<uint32_t>(end - 4, right.chars >> (right.bits - 32));
    // In place of the "." behind the last octet.
    end[-1] = '\0';
    return static_cast<int32_t>(end - at) - 1;
}

// The digits of sixteen half bytes at once.
Chars hex_digits(Chars halves)
{
    constexpr uint8_t k_to_letters = 'a' - '9' - 1;
    return halves + '0' + (static_cast<Chars>(halves > 9) & k_to_letters);
}

// Writes four groups of the 16 digits and what ends them.  The stores of the first three have three
// bytes more than the group and its ":", which the next one overwrites.
[[gnu::always_inline]] inline void write_half(char *at, Chars digits, char end)
{
    uint64_t pairs[2];
    memcpy(pairs, &digits, sizeof pairs);
    constexpr uint64_t k_colon = uint64_t{':'} << 32;
    constexpr uint64_t k_group = UINT32_MAX;
    kttext::store_chars<uint64_t>(at, (pairs[0] & k_group) | k_colon);
    kttext::store_chars<uint64_t>(at + 5, pairs[0] >> 32 | k_colon);
    kttext::store_chars<uint64_t>(at + 10, (pairs[1] & k_group) | k_colon);
    kttext::store_chars<uint32_t>(at + 15, pairs[1] >> 32);
    at[19] = end;
}

// Writes all digits of all groups and returns the length, which is always the same.
int32_t write_groups(char *at, const uint8_t *address)
{
    // Read before anything is written, for callers whose buffer holds the address.
    const auto bytes = kttext::load_word<Chars>(address);
    const Chars high = hex_digits(bytes >> 4);
    const Chars low = hex_digits(bytes & 0xf);
    write_half(
        at,
        __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23),
        ':');
    write_half(at + 20,
               __builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14,
                                       30, 15, 31),
               '\0');
    return int32_t{k_longest_ipv6};
}

} // namespace

int32_t kt_parse_ip_address(uint32_t *value, const char *text)
{
    text = kttext::skip_space(text);
    return read_short_quad(text, *value) || read_any_quad(text, *value) ? 0 : -1;
}

int32_t kt_parse_ipv6_address(uint8_t *address, const char *text)
{
    return read_plain_groups(text, address) || read_any_groups(text, address) ? 0 : -1;
}

int32_t snprintf_ip_address(char *buffer, uint32_t size, uint32_t value)
{
    return size > k_longest_ipv4
               ? write_quad(buffer, value)
               : kttext::put_cut<k_longest_ipv4>(buffer, size, value, snprintf_ip_address);
}

int32_t snprintf_ipv6_address(char *buffer, uint32_t size, const uint8_t *address)
{
    if (address == nullptr) {
        return -1;
    }
    return size > k_longest_ipv6
               ? write_groups(buffer, address)
               : kttext::put_cut<k_longest_ipv6>(buffer, size, address, snprintf_ipv6_address);
}
