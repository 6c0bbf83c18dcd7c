/*
 * Bit sets of a fixed size, kept in one flat record: a byte count and the bits.
 *
 * Numbering: bit n lies in byte n / 8 under the mask 0x80 >> (n % 8), so bit 0 is the top bit of
 * the first byte.  A set has numbits = size * 8 bits (computed in 32 bits, hence exact up to a
 * size of 2^29 - 1).  Bit numbers are signed 32-bit integers.
 *
 * Memory: the caller allocates size + 4 bytes, sets size and owns the record; nothing here ever
 * reads or writes outside of those bytes.
 *
 * Searches - first, next, previous and n-th bit, the ranges, bitset_is_range_free and the print
 * functions - need the record on a 4-byte boundary (fatal otherwise); everything else takes any
 * address.  The forward searches, and all that is built on them, look at the first size / 4
 * whole 32-bit words only: bits of the last size % 4 bytes are never found.  Sizes that are
 * multiples of 4 are the intended use.  Bits from 2^31 on have no number that a search could
 * return, so searches end before them.  Not found is -1.
 *
 * A broken precondition is fatal: kt_assert_bad with the text given here, the path
 * "infra/utils/ktlibbmp" and a fixed line number.  Where no precondition on a pointer is named,
 * the pointer is not checked.  Conditions are checked in the order in which they are given.
 *
 * No locks.  Everything but bitset_snprintf may run in several threads as long as none of them
 * writes to a set that another one uses.
 */
#ifndef RUK_BITSET_H
#define RUK_BITSET_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* C++ has no arrays of unknown length in records; both compilers take them as C does. */
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
typedef struct bitset {
    uint32_t size;  /* number of bytes in bits */
    uint8_t bits[]; /* most significant bit first */
} bitset;
#pragma GCC diagnostic pop

/*
 * A run of bits, both bounds included.  lower = 1, upper = 0 starts an enumeration.
 */
typedef struct bitset_range {
    int32_t lower;
    int32_t upper;
} bitset_range;

static_assert(sizeof(bitset) == 4, "the bits follow the size at once");
static_assert(offsetof(bitset, bits) == 4, "the bits follow the size at once");
static_assert(sizeof(bitset_range) == 8 && offsetof(bitset_range, upper) == 4, "two bounds");

/*
 * The 4-bit reversal of each index: a byte is reversed as
 * swaparray[low nibble] << 4 | swaparray[high nibble].
 */
RUK_EXPORT extern const uint32_t swaparray[16];

/*
 * The last bit that an unfinished bitset_snprintf printed, 0 when none is under way.  One value
 * for the whole process.
 */
RUK_EXPORT extern int32_t bitset_snprintf_cursor;

/* ---- Whole sets ---- */

/* Clears all bits of b.  Fatal: "b" 76. */
RUK_EXPORT void bitset_clear(bitset *b);

/* Sets all bits of b.  Fatal: "b" 85. */
RUK_EXPORT void bitset_fill(bitset *b);

/* Copies the bits of src to dst.  Fatal: "dst->size == src->size" 67. */
RUK_EXPORT void bitset_copy(bitset *dst, const bitset *src);

/* Returns the bytes that the record occupies, size + 4.  Fatal: "b" 1023. */
RUK_EXPORT uint32_t bitset_size(const bitset *b);

/* ---- Single bits and ranges ---- */

/* Sets bit bNo.  Fatal: "bNo >= 0 && bNo < bitset_numbits( b )" 94. */
RUK_EXPORT void bitset_set_bit(bitset *b, int32_t bNo);

/* Clears bit bNo.  Fatal: "bNo >= 0 && bNo < bitset_numbits( b )" 102. */
RUK_EXPORT void bitset_clear_bit(bitset *b, int32_t bNo);

/*
 * Returns 1 when bit bNo is set, else 0.  Fatal: "b" 111, "bNo >= 0 && bNo < bitset_numbits( b )"
 * 114.
 */
RUK_EXPORT int32_t bitset_is_bit_set(const bitset *b, int32_t bNo);

/*
 * Sets (value other than 0) or clears (value 0) the len bits from bNo on; a len of 0 or less
 * changes nothing.  Fatal: "b" 395, "bNo >= 0 && bNo+len <= bitset_numbits( b )" 398; the sum is
 * the exact one, also where it exceeds 32 bits.
 */
RUK_EXPORT void bitset_set_range_value(bitset *b, int32_t bNo, int32_t len, int32_t value);

/* bitset_set_range_value with value 1. */
RUK_EXPORT void bitset_set_range(bitset *b, int32_t bNo, int32_t len);

/* bitset_set_range_value with value 0. */
RUK_EXPORT void bitset_clear_range(bitset *b, int32_t bNo, int32_t len);

/* ---- Algebra and comparison: the sets may be the same one ---- */

/* b := b or b1.  Fatal: "b && b1" 561, "b->size == b1->size" 564. */
RUK_EXPORT void bitset_union(bitset *b, const bitset *b1);

/* b := b and b1.  Fatal: "b && b1" 577, "b->size == b1->size" 580. */
RUK_EXPORT void bitset_intersection(bitset *b, const bitset *b1);

/* b := b and not b1.  Fatal: "b && b1" 592, "b->size == b1->size" 595. */
RUK_EXPORT void bitset_subtract(bitset *b, const bitset *b1);

/* Returns 1 when b and b1 hold the same bits, else 0.  Fatal: "b && b1" 605,
 * "b->size == b1->size" 608. */
RUK_EXPORT int32_t bitset_equal(const bitset *b, const bitset *b1);

/*
 * Returns 1 when b and b1 agree in every bit that mask has, else 0.  Fatal: "b && b1 && mask"
 * 620, "b->size == b1->size" 623, "b1->size == mask->size" 626.
 */
RUK_EXPORT int32_t bitset_maskequal(const bitset *b, const bitset *b1, const bitset *mask);

/*
 * Copies to b those bits of b1 that mask has and leaves the others of b alone.  Fatal:
 * "b && b1 && mask" 639, "b->size == b1->size" 642, "b1->size == mask->size" 645.
 */
RUK_EXPORT void bitset_maskcopy(bitset *b, const bitset *b1, const bitset *mask);

/*
 * Returns 1 when every bit of b is set in b1, else 0; 1 for an empty b.  The sizes may differ: a
 * bit that b1 is too short for is not set in it.
 */
RUK_EXPORT int32_t bitset_subset(const bitset *b, const bitset *b1);

/* Returns the number of set bits in all size bytes, those of the last size % 4 included. */
RUK_EXPORT uint32_t bitset_bitcount(const bitset *b);

/* ---- Searches: see the top for what they look at ---- */

/*
 * Returns the first set bit at or after bNo, or -1.  Fatal: "!((uint64_t)bp & 0x3)" 154,
 * "bNo >= 0" 172.
 */
RUK_EXPORT int32_t bitset_find_next_bit(const bitset *b, int32_t bNo);

/*
 * Returns the first clear bit at or after bNo, or -1.  Fatal: "!((uint64_t)bp & 0x3)" 311,
 * "bNo >= 0" 321.
 */
RUK_EXPORT int32_t bitset_find_next_free_bit(const bitset *b, int32_t bNo);

/*
 * Returns the highest set bit at or before bNo, or -1.  Unlike the forward searches this one
 * does find bits of the last size % 4 bytes.  Fatal: "!((uint64_t)bp & 0x3)" 214, "bNo >= 0" 224,
 * "bNo < (b->size * 8)" 227.
 */
RUK_EXPORT int32_t bitset_find_prev_bit(const bitset *b, int32_t bNo);

/* Returns the first set bit, or -1.  Fatal as bitset_find_next_bit. */
RUK_EXPORT int32_t bitset_first_bit(const bitset *b);

/*
 * Returns the first set bit after bNo, or -1.  bNo may be -1.  The largest bNo, 2^31 - 1, has no
 * successor: bNo + 1 wraps round.  Fatal as bitset_find_next_bit with bNo + 1.
 */
RUK_EXPORT int32_t bitset_next_bit(const bitset *b, int32_t bNo);

/* Returns the n-th set bit, counted from 0, or -1.  Fatal: "0" 276 for an n below 0; then as
 * bitset_find_next_bit. */
RUK_EXPORT int32_t bitset_nth_bit(const bitset *b, int32_t n);

/* As bitset_first_bit for clear bits.  Fatal as bitset_find_next_free_bit. */
RUK_EXPORT int32_t bitset_first_free_bit(const bitset *b);

/* As bitset_next_bit for clear bits.  Fatal as bitset_find_next_free_bit with bNo + 1. */
RUK_EXPORT int32_t bitset_next_free_bit(const bitset *b, int32_t bNo);

/* As bitset_nth_bit for clear bits.  Fatal: "0" 369 for an n below 0; then as
 * bitset_find_next_free_bit. */
RUK_EXPORT int32_t bitset_nth_free_bit(const bitset *b, int32_t n);

/*
 * Finds the run of set bits that follows *range, or the first one when *range is the start
 * value.  Returns 0 and fills *range, or returns -1; lower may be overwritten then, upper is
 * left untouched.  The search starts at upper + 2, since upper + 1 is known to end the run before
 * it.  A run that nothing ends within the whole words reaches to numbits - 1.  Fatal as
 * bitset_find_next_bit and bitset_find_next_free_bit.
 */
RUK_EXPORT int32_t bitset_next_range(const bitset *b, bitset_range *range);

/* As bitset_next_range for runs of clear bits. */
RUK_EXPORT int32_t bitset_next_free_range(const bitset *b, bitset_range *range);

/*
 * Returns 1 when no bit from lower + 1 to upper is set, else 0.  Bit lower itself is not looked
 * at: callers pass a lower bound that they know to be free.  Fatal: "range->lower <= range->upper"
 * 124, "b" 127, "range->lower >= 0 && range->upper < bitset_numbits( b )" 130; then as
 * bitset_find_next_bit.
 */
RUK_EXPORT int32_t bitset_is_range_free(const bitset *b, const bitset_range *range);

/* ---- Text: set bits as a list such as "0-2,5,7-8" ---- */

/*
 * Writes the whole list and a terminator to text, however long it gets, and returns its length.
 * A run of two or more bits becomes "first-last".  A set without bits gives "" and 0.  Fatal as
 * bitset_find_next_bit.
 */
RUK_EXPORT int32_t bitset_sprintf(char *text, const bitset *b);

/*
 * Writes the list in pieces: as many whole items as fit into the capacity bytes at text, the
 * terminator included, without a leading "," in any piece.  Returns the length of the piece and
 * sets *done to 1 when the list is complete, to 0 when the next call, with a restart of 0, is to
 * continue after the last item written.  A restart other than 0 begins a new list.
 *
 * A capacity of 0 writes nothing to text, else text is always terminated; *done and the cursor
 * are set by the same rules.  The place to continue at is bitset_snprintf_cursor: only one
 * unfinished list can be under way in the process, and threads must take turns.  A cursor of 0
 * means bit 0, even if nothing was printed: without restart, a list whose first item did not fit,
 * or one that was already done, goes on after bit 0.  Fatal as bitset_find_next_bit with the
 * cursor + 1.
 */
RUK_EXPORT int32_t bitset_snprintf(char *text, uint32_t capacity, const bitset *b, int32_t restart,
                                   int32_t *done);

/* ---- Bit arrays: bit n is 1 << (n % 8) of byte n / 8 ---- */

/*
 * Stores the first length bytes of b in array, each byte reversed; bytes that b does not have
 * become 0.  A length of 0 or less writes nothing.
 */
RUK_EXPORT void bitset_to_bitarray(const bitset *b, uint8_t *array, int32_t length);

/*
 * Sets b from the first length bytes of array, each byte reversed; bytes of b beyond them become
 * 0, bytes of array beyond b are ignored.  A length of 0 or less clears b.
 */
RUK_EXPORT void bitset_from_bitarray(bitset *b, const uint8_t *array, int32_t length);

#ifdef __cplusplus
}
#endif

#endif /* RUK_BITSET_H */
