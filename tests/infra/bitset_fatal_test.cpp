// Bit sets: every broken precondition is fatal, with its text and its line.
#include <limits>
#include <string>
#include <unistd.h>

#include "tests/infra/bitset_support.h"

using ruk_test::set_of;
using bytes = std::vector<uint8_t>;

namespace
{

constexpr int32_t k_max = std::numeric_limits<int32_t>::max();
constexpr int32_t k_min = std::numeric_limits<int32_t>::min();

struct broken {
    const char *what;
    const char *expression;
    int line;
    void (*call)();
};

// Records for the rows below; a death test leaves its own copy of them behind.
set_of g_four(4);
set_of g_eight(8);
set_of g_crooked(bytes(4, 0x00), 2);
bitset *const k_null = nullptr;

constexpr const char *k_bit = "bNo >= 0 && bNo < bitset_numbits( b )";
constexpr const char *k_span = "bNo >= 0 && bNo+len <= bitset_numbits( b )";
constexpr const char *k_range = "range->lower >= 0 && range->upper < bitset_numbits( b )";
constexpr const char *k_aligned = "!((uint64_t)bp & 0x3)";
constexpr const char *k_sizes = "b->size == b1->size";
constexpr const char *k_mask_sizes = "b1->size == mask->size";

void is_free(bitset *b, int32_t lower, int32_t upper)
{
    const bitset_range range = {lower, upper};
    bitset_is_range_free(b, &range);
}

void next_range(bitset *b, int32_t lower, int32_t upper)
{
    bitset_range range = {lower, upper};
    bitset_next_range(b, &range);
}

void next_free_range(bitset *b, int32_t lower, int32_t upper)
{
    bitset_range range = {lower, upper};
    bitset_next_free_range(b, &range);
}

void print_piece(bitset *b, int32_t cursor)
{
    char text[64];
    int32_t done;
    bitset_snprintf_cursor = cursor;
    bitset_snprintf(text, sizeof text, b, 0, &done);
}

char g_text[64];

// clang-format off
const broken k_broken[] = {
    {"clear null", "b", 76, [] { bitset_clear(k_null); }},
    {"fill null", "b", 85, [] { bitset_fill(k_null); }},
    {"copy sizes", "dst->size == src->size", 67, [] { bitset_copy(g_four, g_eight); }},
    {"size null", "b", 1023, [] { bitset_size(k_null); }},
    {"set -1", k_bit, 94, [] { bitset_set_bit(g_four, -1); }},
    {"set min", k_bit, 94, [] { bitset_set_bit(g_four, k_min); }},
    {"set numbits", k_bit, 94, [] { bitset_set_bit(g_four, 32); }},
    {"set -1 of null", k_bit, 94, [] { bitset_set_bit(k_null, -1); }},
    {"clear -1", k_bit, 102, [] { bitset_clear_bit(g_four, -1); }},
    {"clear numbits", k_bit, 102, [] { bitset_clear_bit(g_four, 32); }},
    {"is set null", "b", 111, [] { bitset_is_bit_set(k_null, -1); }},
    {"is set -1", k_bit, 114, [] { bitset_is_bit_set(g_four, -1); }},
    {"is set numbits", k_bit, 114, [] { bitset_is_bit_set(g_four, 32); }},
    {"range null", "b", 395, [] { bitset_set_range_value(k_null, -1, 1, 1); }},
    {"range of null, set", "b", 395, [] { bitset_set_range(k_null, 0, 1); }},
    {"range of null, clear", "b", 395, [] { bitset_clear_range(k_null, 0, 1); }},
    {"range -1", k_span, 398, [] { bitset_set_range_value(g_four, -1, 1, 1); }},
    {"range -1 without length", k_span, 398, [] { bitset_set_range(g_four, -1, 0); }},
    {"range too long", k_span, 398, [] { bitset_set_range(g_four, 0, 33); }},
    {"range too far", k_span, 398, [] { bitset_clear_range(g_four, 32, 1); }},
    {"range too far without length", k_span, 398, [] { bitset_clear_range(g_four, 33, 0); }},
    {"range beyond 32 bits", k_span, 398, [] { bitset_set_range(g_four, k_max, k_max); }},
    {"range of the greatest sum", k_span, 398, [] { bitset_set_range(g_four, 1, k_max); }},
    {"union null", "b && b1", 561, [] { bitset_union(k_null, g_four); }},
    {"union with null", "b && b1", 561, [] { bitset_union(g_four, k_null); }},
    {"union sizes", k_sizes, 564, [] { bitset_union(g_four, g_eight); }},
    {"intersection null", "b && b1", 577, [] { bitset_intersection(k_null, g_four); }},
    {"intersection with null", "b && b1", 577, [] { bitset_intersection(g_four, k_null); }},
    {"intersection sizes", k_sizes, 580, [] { bitset_intersection(g_four, g_eight); }},
    {"subtract null", "b && b1", 592, [] { bitset_subtract(k_null, g_four); }},
    {"subtract with null", "b && b1", 592, [] { bitset_subtract(g_four, k_null); }},
    {"subtract sizes", k_sizes, 595, [] { bitset_subtract(g_four, g_eight); }},
    {"equal null", "b && b1", 605, [] { bitset_equal(k_null, g_four); }},
    {"equal with null", "b && b1", 605, [] { bitset_equal(g_four, k_null); }},
    {"equal sizes", k_sizes, 608, [] { bitset_equal(g_four, g_eight); }},
    {"maskequal null", "b && b1 && mask", 620, [] { bitset_maskequal(k_null, g_four, g_four); }},
    {"maskequal with null", "b && b1 && mask", 620, [] { bitset_maskequal(g_four, k_null, g_four); }},
    {"maskequal null mask", "b && b1 && mask", 620, [] { bitset_maskequal(g_four, g_eight, k_null); }},
    {"maskequal sizes", k_sizes, 623, [] { bitset_maskequal(g_four, g_eight, g_eight); }},
    {"maskequal mask size", k_mask_sizes, 626, [] { bitset_maskequal(g_four, g_four, g_eight); }},
    {"maskcopy null", "b && b1 && mask", 639, [] { bitset_maskcopy(k_null, g_four, g_four); }},
    {"maskcopy with null", "b && b1 && mask", 639, [] { bitset_maskcopy(g_four, k_null, g_four); }},
    {"maskcopy null mask", "b && b1 && mask", 639, [] { bitset_maskcopy(g_four, g_eight, k_null); }},
    {"maskcopy sizes", k_sizes, 642, [] { bitset_maskcopy(g_four, g_eight, g_eight); }},
    {"maskcopy mask size", k_mask_sizes, 645, [] { bitset_maskcopy(g_four, g_four, g_eight); }},
    {"find crooked", k_aligned, 154, [] { bitset_find_next_bit(g_crooked, -1); }},
    {"find -1", "bNo >= 0", 172, [] { bitset_find_next_bit(g_four, -1); }},
    {"find free crooked", k_aligned, 311, [] { bitset_find_next_free_bit(g_crooked, -1); }},
    {"find free -1", "bNo >= 0", 321, [] { bitset_find_next_free_bit(g_four, -1); }},
    {"find prev crooked", k_aligned, 214, [] { bitset_find_prev_bit(g_crooked, -1); }},
    {"find prev -1", "bNo >= 0", 224, [] { bitset_find_prev_bit(g_four, -1); }},
    {"find prev numbits", "bNo < (b->size * 8)", 227, [] { bitset_find_prev_bit(g_four, 32); }},
    {"find prev max", "bNo < (b->size * 8)", 227, [] { bitset_find_prev_bit(g_four, k_max); }},
    {"first crooked", k_aligned, 154, [] { bitset_first_bit(g_crooked); }},
    {"first free crooked", k_aligned, 311, [] { bitset_first_free_bit(g_crooked); }},
    {"next crooked", k_aligned, 154, [] { bitset_next_bit(g_crooked, 0); }},
    {"next -2", "bNo >= 0", 172, [] { bitset_next_bit(g_four, -2); }},
    {"next max", "bNo >= 0", 172, [] { bitset_next_bit(g_four, k_max); }},
    {"next free crooked", k_aligned, 311, [] { bitset_next_free_bit(g_crooked, 0); }},
    {"next free -2", "bNo >= 0", 321, [] { bitset_next_free_bit(g_four, -2); }},
    {"next free max", "bNo >= 0", 321, [] { bitset_next_free_bit(g_four, k_max); }},
    {"nth -1", "0", 276, [] { bitset_nth_bit(g_four, -1); }},
    {"nth min", "0", 276, [] { bitset_nth_bit(g_four, k_min); }},
    {"nth crooked", k_aligned, 154, [] { bitset_nth_bit(g_crooked, 0); }},
    {"nth free -1", "0", 369, [] { bitset_nth_free_bit(g_four, -1); }},
    {"nth free crooked", k_aligned, 311, [] { bitset_nth_free_bit(g_crooked, 0); }},
    {"range free order", "range->lower <= range->upper", 124, [] { is_free(k_null, 1, 0); }},
    {"range free null", "b", 127, [] { is_free(k_null, -1, 0); }},
    {"range free -1", k_range, 130, [] { is_free(g_four, -1, 0); }},
    {"range free numbits", k_range, 130, [] { is_free(g_four, 0, 32); }},
    {"range free crooked", k_aligned, 154, [] { is_free(g_crooked, 0, 0); }},
    {"next range crooked", k_aligned, 154, [] { next_range(g_crooked, 1, 0); }},
    {"next range of an empty set", "bNo >= 0", 172,
     [] { static set_of empty(0); next_range(empty, 0, -3); }},
    {"next free range crooked", k_aligned, 311, [] { next_free_range(g_crooked, 1, 0); }},
    {"sprintf crooked", k_aligned, 154, [] { bitset_sprintf(g_text, g_crooked); }},
    {"snprintf crooked", k_aligned, 154, [] { print_piece(g_crooked, 0); }},
    {"snprintf after -2", "bNo >= 0", 172, [] { print_piece(g_four, -2); }},
    {"snprintf after max", "bNo >= 0", 172, [] { print_piece(g_four, k_max); }},
};
// clang-format on

} // namespace

// The panic goes to standard output, which a death test does not see: it is brought to
// standard error for the length of the call.
TEST(bitset, broken_preconditions_are_fatal_with_their_text_and_line)
{
    const auto fails = [](void (*call)()) {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        call();
    };
    for (const broken &row : k_broken) {
        SCOPED_TRACE(row.what);
        const std::string panic = "panic ASSERT  infra/utils/ktlibbmp  line " +
                                  std::to_string(row.line) + ":  " + row.expression + "\n";
        EXPECT_EXIT(fails(row.call), testing::ExitedWithCode(1), testing::StrEq(panic));
    }
}
