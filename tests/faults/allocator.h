// The heap under the code under test: refuses one allocation on demand and keeps count of blocks.
//
// With the GNU C library and without sanitizers it takes the place of the process's own, so that it
// sees the C library's allocations too; elsewhere the linker's --wrap brings it the products'.
#pragma once

namespace ruk_test
{

enum class Owner {
    product, // the code of this executable
    library, // the C library, on behalf of a call
};

// While it lives, allocations of this thread are counted, and the nth of the owner's is refused.
class Heap
{
public:
    explicit Heap(Owner owner = Owner::product, int refused = 0);
    ~Heap();
    Heap(const Heap &) = delete;
    Heap &operator=(const Heap &) = delete;

    bool has_refused() const;
    int allocations(Owner owner) const;
    // Blocks allocated since it was made and not freed.
    int held(Owner owner) const;

    // The product's block that was asked for last, under whichever Heap.
    static void *latest();

    // Whether the C library's allocations are seen.
    static bool sees_library();
};

} // namespace ruk_test
