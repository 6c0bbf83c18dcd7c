// Bit sets between pages that nobody may touch: every operation stays within the record, for each
// size, at its first and at its last possible address, and with every variant of the loops.
#include <sys/mman.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "tests/infra/bitset_support.h"

using ruk_test::with_each_variant;

namespace
{

// More than two of the widest blocks.
constexpr uint32_t k_largest = 300;
// More than the print functions read at once.
constexpr uint32_t k_largest_printed = 524;

enum class place { first, last };

// A record in a page between two that fault; the rest of the page must keep its bytes.
class fenced_set
{
public:
    fenced_set(uint32_t size, place where, size_t alignment, uint32_t pattern)
        : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE)))
    {
        pages_ = static_cast<uint8_t *>(
            mmap(nullptr, 3 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        EXPECT_NE(pages_, MAP_FAILED);
        EXPECT_EQ(mprotect(pages_ + page_, page_, PROT_READ | PROT_WRITE), 0);
        memset(pages_ + page_, k_unused, page_);
        const size_t room = page_ - 4 - size;
        record_ = pages_ + page_ + (where == place::first ? 0 : room - room % alignment);
        memcpy(record_, &size, sizeof size);
        size_ = size;
        for (uint32_t i = 0; i < size; ++i) {
            record_[4 + i] = static_cast<uint8_t>((i + pattern) * pattern >> 3);
        }
    }
    fenced_set(const fenced_set &) = delete;
    fenced_set &operator=(const fenced_set &) = delete;
    ~fenced_set()
    {
        for (const uint8_t *byte = pages_ + page_; byte != pages_ + 2 * page_; ++byte) {
            if (byte < record_ || byte >= record_ + 4 + size_) {
                EXPECT_EQ(*byte, k_unused) << byte - record_;
            }
        }
        munmap(pages_, 3 * page_);
    }
    operator bitset *() { return reinterpret_cast<bitset *>(record_); }

private:
    static constexpr uint8_t k_unused = 0xa5;
    size_t page_;
    uint8_t *pages_;
    uint8_t *record_;
    uint32_t size_;
};

void for_each_fence(uint32_t largest, const std::function<void(uint32_t, place)> &check)
{
    with_each_variant([&] {
        for (uint32_t size = 0; size <= largest; ++size) {
            SCOPED_TRACE(size);
            for (const place where : {place::first, place::last}) {
                check(size, where);
            }
        }
    });
}

} // namespace

TEST(bitset_fence, operations_at_any_address_stay_within_the_record)
{
    for_each_fence(k_largest, [](uint32_t size, place where) {
        fenced_set b(size, where, 1, 7);
        fenced_set b1(size, where == place::first ? place::last : place::first, 1, 11);
        fenced_set mask(size, where, 1, 13);
        uint8_t array[k_largest + 1];
        EXPECT_EQ(bitset_maskequal(b, b, mask), 1);
        EXPECT_EQ(bitset_equal(b, b), 1);
        bitset_maskcopy(b, b1, mask);
        bitset_union(b, b1);
        EXPECT_EQ(bitset_subset(b1, b), 1);
        bitset_to_bitarray(b, array, static_cast<int32_t>(size) + 1);
        bitset_from_bitarray(b1, array, static_cast<int32_t>(size) + 1);
        EXPECT_EQ(bitset_equal(b, b1), 1);
        bitset_intersection(b, mask);
        bitset_subtract(b, mask);
        EXPECT_EQ(bitset_bitcount(b), 0u);
        bitset_fill(b);
        EXPECT_EQ(bitset_bitcount(b), size * 8);
        bitset_copy(b1, b);
        bitset_clear(b);
        EXPECT_EQ(bitset_subset(b, b1), 1);
        if (size > 0) {
            const auto last = static_cast<int32_t>(size * 8 - 1);
            bitset_set_bit(b, last);
            EXPECT_EQ(bitset_is_bit_set(b, last), 1);
            bitset_clear_bit(b, last);
            bitset_set_range(b, 0, last + 1);
            EXPECT_EQ(bitset_equal(b, b1), 1);
        }
    });
}

TEST(bitset_fence, searches_stay_within_the_record)
{
    for_each_fence(k_largest, [](uint32_t size, place where) {
        // An empty set, a full one and one with runs.
        for (const uint32_t pattern : {0u, 1u, 7u}) {
            fenced_set b(size, where, 4, pattern);
            if (pattern == 1) {
                bitset_fill(b);
            }
            const auto searched = static_cast<int32_t>(size / 4 * 32);
            for (int32_t bit = 0; bit < static_cast<int32_t>(size * 8); bit += 5) {
                const int32_t next = bitset_find_next_bit(b, bit);
                const int32_t free = bitset_find_next_free_bit(b, bit);
                EXPECT_TRUE(next == -1 || (next >= bit && next < searched)) << bit;
                EXPECT_TRUE(free == -1 || (free >= bit && free < searched)) << bit;
                EXPECT_LE(bitset_find_prev_bit(b, bit), bit);
            }
            EXPECT_EQ(bitset_nth_bit(b, searched), -1);
            EXPECT_EQ(bitset_nth_free_bit(b, searched), -1);
            bitset_range range = {1, 0};
            while (bitset_next_range(b, &range) == 0) {
            }
            range = {1, 0};
            while (bitset_next_free_range(b, &range) == 0) {
            }
        }
    });
}

TEST(bitset_fence, lists_stay_within_the_record_and_the_text)
{
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    auto *const text =
        static_cast<char *>(mmap(nullptr, 3 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(static_cast<void *>(text), MAP_FAILED);
    char *const end = text + 2 * page;
    ASSERT_EQ(mprotect(text, 2 * page, PROT_READ | PROT_WRITE), 0);
    for_each_fence(k_largest_printed, [&](uint32_t size, place where) {
        for (const uint32_t pattern : {1u, 7u, 11u}) {
            fenced_set b(size, where, 4, pattern);
            const auto length = static_cast<size_t>(bitset_sprintf(text, b));
            ASSERT_LT(length, 2 * page);
            const std::string list(text);
            EXPECT_EQ(list.size(), length);
            EXPECT_EQ(bitset_sprintf(end - length - 1, b), static_cast<int32_t>(length));
            EXPECT_EQ(end - length - 1, list);
            int32_t done = 0;
            const auto capacity = static_cast<uint32_t>(length + 1);
            EXPECT_EQ(bitset_snprintf(end - capacity, capacity, b, 1, &done),
                      static_cast<int32_t>(length));
            EXPECT_EQ(end - capacity, list);
            EXPECT_EQ(done, 1);
        }
    });
    munmap(text, 3 * page);
}
