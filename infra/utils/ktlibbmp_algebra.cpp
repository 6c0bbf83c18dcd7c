// Bit sets: algebra, comparison and the number of bits.
#include "infra/utils/ktlibbmp.h"
#include "infra/utils/ktlibbmp_kernels.h"

using namespace ktlibbmp;

namespace
{

// The preconditions of the operations over two and over three sets; each operation has line
// numbers of its own.
void require_pair(const bitset *b, const bitset *b1, int32_t null_line, int32_t size_line)
{
    require(b != nullptr && b1 != nullptr, "b && b1", null_line);
    require(size_of(b) == size_of(b1), "b->size == b1->size", size_line);
}

void require_triple(const bitset *b, const bitset *b1, const bitset *mask, int32_t null_line,
                    int32_t size_line, int32_t mask_line)
{
    require(b != nullptr && b1 != nullptr && mask != nullptr, "b && b1 && mask", null_line);
    require(size_of(b) == size_of(b1), "b->size == b1->size", size_line);
    require(size_of(b1) == size_of(mask), "b1->size == mask->size", mask_line);
}

} // namespace

void bitset_union(bitset *b, const bitset *b1)
{
    require_pair(b, b1, 561, 564);
    active_kernels().unite(bits_of(b).data(), bits_of(b1).data(), size_of(b));
}

void bitset_intersection(bitset *b, const bitset *b1)
{
    require_pair(b, b1, 577, 580);
    active_kernels().intersect(bits_of(b).data(), bits_of(b1).data(), size_of(b));
}

void bitset_subtract(bitset *b, const bitset *b1)
{
    require_pair(b, b1, 592, 595);
    active_kernels().subtract(bits_of(b).data(), bits_of(b1).data(), size_of(b));
}

int32_t bitset_equal(const bitset *b, const bitset *b1)
{
    require_pair(b, b1, 605, 608);
    return active_kernels().equal(bits_of(b).data(), bits_of(b1).data(), size_of(b)) ? 1 : 0;
}

int32_t bitset_maskequal(const bitset *b, const bitset *b1, const bitset *mask)
{
    require_triple(b, b1, mask, 620, 623, 626);
    return active_kernels().mask_equal(bits_of(b).data(), bits_of(b1).data(), bits_of(mask).data(),
                                       size_of(b))
               ? 1
               : 0;
}

void bitset_maskcopy(bitset *b, const bitset *b1, const bitset *mask)
{
    require_triple(b, b1, mask, 639, 642, 645);
    active_kernels().mask_copy(bits_of(b).data(), bits_of(b1).data(), bits_of(mask).data(),
                               size_of(b));
}

int32_t bitset_subset(const bitset *b, const bitset *b1)
{
    const std::span bits = bits_of(b);
    const std::span others = bits_of(b1);
    const size_t shared = bits.size() < others.size() ? bits.size() : others.size();
    const std::span beyond = bits.subspan(shared);
    const kernels &use = active_kernels();
    return use.is_subset(bits.data(), others.data(), shared) &&
                   use.is_empty(beyond.data(), beyond.size())
               ? 1
               : 0;
}

uint32_t bitset_bitcount(const bitset *b)
{
    const std::span bits = bits_of(b);
    return active_kernels().count(bits.data(), bits.size());
}
