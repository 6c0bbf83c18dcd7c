// Ranges and FSPF numbers of any values against a plain model.
#include "tests/ifindex/range_model.h"
#include "tests/support/random.h"

using ruk_test::Random;

namespace
{

constexpr int k_ranges = 400000;

// Lower bits that often agree with those of another member in all but one field.
IfIndex near(Random &random, IfIndex value)
{
    switch (random.below(6)) {
    case 0:
        return value;
    case 1:
        return value ^ 1U << random.below(24);
    case 2:
        return value + random.below(16);
    case 3:
        return value + (random.below(16) << random.below(20));
    case 4:
        return value ^ (random.bits32() & 0xffffff & (0xffU << random.below(24)));
    default:
        return random.bits32();
    }
}

IfIndex some_value(Random &random)
{
    uint32_t bits = random.bits32();
    for (uint32_t times = random.below(4); times > 0; --times) {
        bits &= random.bits32();
    }
    return random.once_in(32) ? bits : (bits & 0x80ffffff) | random.below(40) << 24;
}

} // namespace

TEST(if_index_ranges_random, agree_with_the_model)
{
    Random random;
    int counted = 0;
    for (int i = 0; i < k_ranges; ++i) {
        const IfIndex first = some_value(random);
        const IfIndex last = near(random, first);
        const IfIndex current = near(random, random.once_in(2) ? first : last);
        const uint32_t offset =
            random.once_in(8) ? random.bits32() : random.below(uint64_t{1} << random.below(18));
        ASSERT_TRUE(range_model::ranges_agree(first, last, current, offset))
            << std::hex << first << " to " << last << ", current " << current << ", offset "
            << offset;
        counted += range_model::count(first, last).result == 0 && first != last ? 1 : 0;
    }
    EXPECT_GT(counted, k_ranges / 100);
}

TEST(if_index_fspf_random, agrees_with_the_model)
{
    Random random;
    for (int i = 0; i < k_ranges; ++i) {
        const IfIndex value = some_value(random);
        uint32_t word = random.bits32();
        if (random.once_in(2)) { // a number that there is, in network order
            constexpr uint32_t k_kinds[] = {0x01, 0x04, 0x0A, 0x10, 0x13, 0x1E, 0xFA, 0xFB};
            word = range_model::reversed(random.one_of(k_kinds) << 16 |
                                         (random.bits32() & random.bits32() & 0xffff));
        }
        ASSERT_TRUE(range_model::fspf_agrees(value, word)) << std::hex << value << " and " << word;
    }
}

// The words that there are of the 16-bit form.
TEST(if_index_fspf_random, every_16_bit_word_agrees_with_the_model)
{
    for (uint32_t word = 0; word <= 0xffff; ++word) {
        ASSERT_TRUE(range_model::fspf_agrees(0x01000000, range_model::reversed(word))) << word;
    }
}
