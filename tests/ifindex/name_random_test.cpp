// Names against a plain model: of every type with any fields, in buffers of any size; and parsed
// from names of the grammar, mutated ones and any numbers.
#include <cstdlib>
#include <string>

#include "tests/ifindex/name_model.h"
#include "tests/ifindex/name_parse_model.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/random.h"

using name_model::Form;
using ruk_test::GuardedMemory;
using ruk_test::Random;

namespace
{

constexpr IfIndex k_untouched = 0xdeadbeef;

// Any value, mostly of the types that exist, with runs of clear and of set bits among the fields.
IfIndex some_value(Random &random)
{
    IfIndex value = random.bits32();
    switch (random.below(4)) {
    case 0:
        value &= random.bits32() & random.bits32();
        break;
    case 1:
        value |= random.bits32() | random.bits32();
        break;
    default:
        break;
    }
    return random.once_in(16) ? value : (value & 0x80ffffff) | random.below(40) << 24;
}

// What format writes into a buffer of that size, with a page that can't be touched behind it and
// marks before it.
template <typename Format>
void expect_written(const GuardedMemory &memory, int32_t size, const name_model::Written &expected,
                    Format format)
{
    const size_t room = size > 0 ? static_cast<size_t>(size) : 0;
    char *whole = reinterpret_cast<char *>(memory.last(room + 8));
    memset(whole, '#', room + 8);
    ASSERT_EQ(format(whole + 8, size), expected.result);
    ASSERT_EQ(std::string(whole, 8), "########");
    if (!expected.text) {
        ASSERT_EQ(std::string(whole + 8, room), std::string(room, '#'));
    } else if (room > 0) {
        ASSERT_EQ(std::string(whole + 8), expected.text->substr(0, room - 1));
    }
}

void expect_name(const GuardedMemory &memory, int32_t size, const std::string &name,
                 int32_t (*format)(char *, int32_t, IfIndex), IfIndex value)
{
    expect_written(memory, size, {static_cast<int32_t>(name.size()), name},
                   [&](char *buffer, int32_t room) { return format(buffer, room, value); });
}

void expect_names(const GuardedMemory &memory, int32_t size, IfIndex value)
{
    SCOPED_TRACE(testing::Message() << name_model::hex(value) << " in " << size);
    const std::string long_name = name_model::name(value, Form::long_name);
    const std::string short_name = name_model::name(value, Form::short_name);
    expect_name(memory, size, long_name, snprintf_if_index, value);
    expect_name(memory, size, long_name, snprintf_if_index_native, value);
    expect_name(memory, size, short_name, snprintf_if_index_short, value);
    expect_name(memory, size, short_name, snprintf_if_index_short_native, value);
    expect_name(memory, size, name_model::internal_name(value), snprintf_if_index_internal, value);
}

void expect_ranges(const GuardedMemory &memory, int32_t size, const IfIndex pair[2])
{
    SCOPED_TRACE(testing::Message() << name_model::hex(pair[0]) << " to "
                                    << name_model::hex(pair[1]) << " in " << size);
    expect_written(
        memory, size, name_model::range(pair, size, Form::long_name),
        [&](char *buffer, int32_t room) { return snprintf_if_index_range(buffer, room, pair); });
    expect_written(memory, size, name_model::range(pair, size, Form::short_name),
                   [&](char *buffer, int32_t room) {
                       return snprintf_if_index_range_short(buffer, room, pair);
                   });
}

std::string some_number(Random &random)
{
    switch (random.below(6)) {
    case 0:
        return std::to_string(random.below(5));
    case 1:
        return std::to_string(uint64_t{1} << random.below(64));
    case 2:
        return std::string(random.below(12), '0') + std::to_string(random.bits32());
    default:
        return std::to_string(random.below(uint64_t{2} << random.below(17)));
    }
}

std::string some_name(Random &random)
{
    std::string text(random.once_in(8) ? random.below(3) : 0, ' ');
    const std::string keyword = random.one_of(name_model::k_keywords);
    for (const char c : random.once_in(16) ? "null0" : keyword) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        text += letter && random.once_in(4) ? static_cast<char>(c ^ 0x20) : c;
    }
    uint32_t count = random.once_in(8) ? random.below(12) : random.below(4);
    for (bool first = true; count > 0; --count, first = false) {
        text +=
            first ? (random.once_in(2) ? "" : " ") : std::string(1, random.one_char("///.: ,-"));
        text += some_number(random);
    }
    for (uint32_t times = random.once_in(2) ? random.below(4) : 0; times > 0; --times) {
        const size_t at = random.below(text.size() + 1);
        const char c = random.once_in(8) ? static_cast<char>(random.byte() | 1)
                                         : random.one_char("019/.,- ethvfcN");
        switch (random.below(3)) {
        case 0:
            text.insert(at, 1, c);
            break;
        case 1:
            text.erase(at, 1);
            break;
        default:
            text.replace(at, 1, 1, c);
        }
    }
    return text;
}

void set_some_context(Random &random)
{
    if (random.once_in(2)) {
        unsetenv("SYSMGR_VDC_ID");
    } else {
        setenv("SYSMGR_VDC_ID", some_number(random).c_str(), 1);
    }
}

void expect_parsed(const GuardedMemory &memory, const std::string &text)
{
    IfIndex expected = k_untouched;
    const int32_t result = name_model::parse(text, &expected);
    IfIndex value = k_untouched;
    ASSERT_EQ(ulx_interface_name_to_ifindex(memory.put(text), &value), result) << text;
    ASSERT_EQ(value, expected) << text;
}

class if_index_names_random : public testing::Test
{
protected:
    ~if_index_names_random() override { unsetenv("SYSMGR_VDC_ID"); }
};

} // namespace

TEST_F(if_index_names_random, names_agree_with_the_model)
{
    Random random;
    const GuardedMemory memory;
    for (int i = 0; i < 100000 && !HasFailure(); ++i) {
        const IfIndex value = some_value(random);
        expect_names(memory, 64, value);
        expect_names(memory, static_cast<int32_t>(random.below(40)) - 2, value);
    }
}

TEST_F(if_index_names_random, ranges_agree_with_the_model)
{
    Random random;
    const GuardedMemory memory;
    for (int i = 0; i < 100000 && !HasFailure(); ++i) {
        IfIndex pair[2] = {some_value(random), some_value(random)};
        if (!random.once_in(8)) {
            pair[1] = (pair[0] & 0x7f000000) | (pair[1] & 0x80ffffff);
        }
        if (random.once_in(8)) {
            pair[1] = pair[0];
        }
        expect_ranges(memory, 64, pair);
        expect_ranges(memory, static_cast<int32_t>(random.below(48)) - 2, pair);
    }
}

TEST_F(if_index_names_random, parsed_names_agree_with_the_model)
{
    Random random;
    const GuardedMemory memory;
    for (int i = 0; i < 200000 && !HasFailure(); ++i) {
        if (i % 64 == 0) {
            set_some_context(random);
        }
        expect_parsed(memory, some_name(random));
    }
}

TEST_F(if_index_names_random, parsed_long_names_agree_with_the_model)
{
    Random random;
    const GuardedMemory memory;
    for (int i = 0; i < 100000 && !HasFailure(); ++i) {
        expect_parsed(memory, name_model::name(some_value(random), Form::long_name));
    }
}

TEST_F(if_index_names_random, keywords_cut_and_continued_agree_with_the_model)
{
    const GuardedMemory memory;
    for (const std::string keyword : name_model::k_keywords) {
        for (size_t kept = 0; kept <= keyword.size(); ++kept) {
            for (const char *rest :
                 {"", "0", "1", "1/2", "1/2/3", "1/2/3/4", "s1/2", "-1/2", " "}) {
                expect_parsed(memory, keyword.substr(0, kept) + rest);
            }
            for (const std::string other : name_model::k_keywords) {
                expect_parsed(memory, keyword.substr(0, kept) + other + "1");
            }
        }
    }
}

TEST_F(if_index_names_random, built_kinds_agree_with_the_model)
{
    Random random;
    for (int i = 0; i < 100000 && !HasFailure(); ++i) {
        const int32_t kind = random.once_in(32) ? static_cast<int32_t>(random.bits32())
                                                : static_cast<int32_t>(random.below(72)) - 1;
        set_some_context(random);
        std::vector<int32_t> numbers(random.once_in(4) ? random.below(12) : random.below(5));
        for (int32_t &number : numbers) {
            number = random.once_in(8) ? static_cast<int32_t>(random.bits32())
                                       : name_model::decimal(some_number(random));
        }
        IfIndex expected = k_untouched;
        const int32_t result = name_model::build(kind, numbers, &expected);
        IfIndex value = k_untouched;
        ASSERT_EQ(ulx_interface_coordinates_to_ifindex(
                      kind, numbers.data(), static_cast<int32_t>(numbers.size()), &value),
                  result)
            << kind;
        ASSERT_EQ(value, expected) << kind;
    }
}
