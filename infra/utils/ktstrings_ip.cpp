// IPv4 and IPv6 addresses: text to bytes and back.
#include "ruk/address.h"

#include <array>
#include <bit>

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
// groups end is found out for all of them at once, and their digits are read all at once, so that
// little is left to mispredict: how many groups there are.

constexpr size_t k_longest_ipv6 = sizeof "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff" - 1;
constexpr size_t k_ipv6_groups = KT_IPV6_ADDRESS_SIZE / 2;
constexpr size_t k_word = sizeof(uint64_t);

// Bit n says that character n of the readable ones, a word at least, is a ":".
uint64_t find_colons(const char *text, size_t readable)
{
    constexpr uint64_t k_ones = 0x0101010101010101;
    constexpr uint64_t k_high_bits = k_ones << 7;
    const auto in_word = [=](size_t from) {
        // The last words overlap: nothing behind the readable ones is touched.
        const size_t at = std::min(from, readable - k_word);
        const uint64_t differs = kttext::load_word<uint64_t>(text + at) ^ k_ones * ':';
        const uint64_t same = ~(((differs & ~k_high_bits) + ~k_high_bits) | differs) & k_high_bits;
        // The product gathers the eight high bits in the topmost byte.
        return ((same >> 7) * 0x0102040810204080 >> 56) << at;
    };
    return in_word(0) | in_word(8) | in_word(16) | in_word(24) | in_word(32);
}

// Where the parts of a text are, as bits like those of find_colons.
struct Ipv6Layout {
    uint64_t ends;     // of the groups: the character behind each
    uint64_t zero_run; // the first ":" of "::", or 0

    Ipv6Layout(uint64_t colons, size_t length)
    {
        const uint64_t end_of_text = uint64_t{1} << length;
        const uint64_t empty = (colons << 1 | 1) & (colons | end_of_text);
        zero_run = colons & colons >> 1;
        ends = (colons | end_of_text) & ~empty;
        // "::" leaves a group empty, and one more where the text begins or ends with it.
        const uint64_t empty_at_zero_run =
            zero_run << 1 | (zero_run & 1) | (zero_run << 2 & end_of_text);
        // Five characters in a row without a colon.
        uint64_t run = ~colons & (end_of_text - 1);
        const uint64_t fifth = run >> 4;
        run &= run >> 1;
        run &= run >> 2;
        is_plain = (zero_run & (zero_run - 1)) == 0 && empty == empty_at_zero_run &&
                   (run & fifth) == 0 && ends != 0;
    }

    // At most one "::", no other empty group, none of more than four digits, and not "::" alone.
    bool is_plain;
};

// The four characters up to an end; where there are fewer, terminators in front of them.
uint32_t four_up_to(const char *text, size_t end)
{
    // A table, since whether a first group is short can't be predicted.
    static constexpr uint8_t k_missing[] = {4, 3, 2, 1, 0};
    const size_t missing = k_missing[std::min<size_t>(end, 4)];
    return kttext::load_word<uint32_t>(text + (end + missing - 4)) << 8 * missing;
}

// Stores the four characters up to the end of each group, and returns how many groups there are.
size_t gather_groups(const char *text, uint64_t ends, uint32_t *groups)
{
    const auto first = [&ends] { return static_cast<size_t>(__builtin_ctzll(ends)); };
    groups[0] = four_up_to(text, first());
    ends &= ends - 1;
    if (ends == 0) {
        return 1;
    }
    groups[1] = four_up_to(text, first());
    size_t count = 2;
    // The third group ends behind the fourth character at the earliest.
    for (ends &= ends - 1; ends != 0; ends &= ends - 1) {
        groups[count++] = kttext::load_word<uint32_t>(text + first() - 4);
    }
    return count;
}

// Sixteen bytes at once, in the compiler's portable vectors.
using Chars [[gnu::vector_size(16)]] = uint8_t;
using Pairs [[gnu::vector_size(16)]] = uint16_t;
using Fours [[gnu::vector_size(16)]] = uint32_t;

// Puts terminators in place of the colons in four characters each, and of what is in front of them.
Chars drop_up_to_colons(Chars chars)
{
    auto colons = std::bit_cast<Fours>(static_cast<Chars>(chars == ':'));
    colons |= colons >> 8;
    colons |= colons >> 16;
    return chars & ~std::bit_cast<Chars>(colons);
}

// The values of sixteen hexadecimal digits at once, where a terminator counts as 0.  Bytes of bad
// become other than 0 where a character is neither.
Chars hex_values(Chars chars, Chars &bad)
{
    const Chars digits = chars - '0';
    const Chars letters = (chars | 0x20) - 'a';
    const auto is_digit = static_cast<Chars>(digits < 10);
    const auto is_letter = static_cast<Chars>(letters < 6);
    bad |= ~(is_digit | is_letter | static_cast<Chars>(chars == 0));
    return (digits & is_digit) | ((letters + 10) & is_letter);
}

// Two digits at a time side by side, in every other byte.
Chars join_pairs(Chars values)
{
    const auto pairs = std::bit_cast<Pairs>(values);
    return std::bit_cast<Chars>((pairs << 4 | pairs >> 8) & 0xff);
}

__extension__ using Uint128 = unsigned __int128;

// The bytes of eight groups, each given as the four characters up to its end.  False when one of
// its own is no digit.
bool read_digits(const uint32_t *groups, uint64_t (&bytes)[2])
{
    Chars bad{};
    const auto pairs_of = [&bad](const uint32_t *four) {
        return join_pairs(hex_values(drop_up_to_colons(kttext::load_word<Chars>(four)), bad));
    };
    const Chars left = pairs_of(groups);
    const Chars right = pairs_of(groups + 4);
    const Chars all = __builtin_shufflevector(left, right, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20,
                                              22, 24, 26, 28, 30);
    memcpy(bytes, &all, sizeof bytes);
    uint64_t flaws[2];
    memcpy(flaws, &bad, sizeof flaws);
    return (flaws[0] | flaws[1]) == 0;
}

__extension__ using Uint128 = unsigned __int128;

// Moves all but the first groups to the end of the sixteen bytes, of which count groups are filled.
void move_to_end(uint64_t (&bytes)[2], size_t first, size_t count)
{
    const Uint128 all = Uint128{__builtin_bswap64(bytes[0])} << 64 | __builtin_bswap64(bytes[1]);
    const Uint128 behind = ~Uint128{0} >> 16 * first;
    const Uint128 moved = (all & ~behind) | (all & behind) >> 16 * (k_ipv6_groups - count);
    bytes[0] = __builtin_bswap64(static_cast<uint64_t>(moved >> 64));
    bytes[1] = __builtin_bswap64(static_cast<uint64_t>(moved));
}

// Reads a text of which so many bytes, a word at least, may be read.
[[gnu::always_inline]] inline bool read_groups_of(const char *text, size_t length, size_t readable,
                                                  uint8_t *address)
{
    const Ipv6Layout layout(find_colons(text, readable), length);
    if (!layout.is_plain) {
        return false;
    }
    uint32_t groups[k_longest_ipv6 / 2 + 1];
    memset(groups, 0, k_ipv6_groups * sizeof *groups);
    const size_t count = gather_groups(text, layout.ends, groups);
    uint64_t bytes[2];
    if (count > k_ipv6_groups || (count < k_ipv6_groups && layout.zero_run == 0) ||
        !read_digits(groups, bytes)) {
        return false;
    }
    if (count < k_ipv6_groups) {
        const uint64_t up_to_zero_run = (layout.zero_run << 1) - 1;
        move_to_end(bytes, static_cast<size_t>(std::popcount(layout.ends & up_to_zero_run)), count);
    }
    memcpy(address, bytes, sizeof bytes);
    return true;
}

// The same for what is too short to be read in words.
[[gnu::noinline]] bool read_few_groups(const char *text, size_t length, uint8_t *address)
{
    char copy[k_word] = {};
    memcpy(copy, text, length);
    return read_groups_of(copy, length, k_word, address);
}

// Gives what read_any_groups gives.  False, with nothing written, for texts that are to be read
// that way.
bool read_plain_groups(const char *text, uint8_t *address)
{
    const size_t length = strnlen(text, k_longest_ipv6 + 1);
    if (length > k_longest_ipv6) {
        return false;
    }
    return length < k_word ? read_few_groups(text, length, address)
                           : read_groups_of(text, length, length + 1, address);
}

// What every octet looks like in a text.
struct OctetText {
    uint32_t chars; // with a "." behind the digits
    uint32_t bits;  // that chars has, eight for each character
};

constexpr std::array<OctetText, 256> k_octet_texts = [] {
    std::array<OctetText, 256> texts{};
    for (uint32_t octet = 0; octet < texts.size(); ++octet) {
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
