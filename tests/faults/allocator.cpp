// malloc, realloc, calloc and free, counted.
#include "tests/faults/allocator.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>

#ifdef RUK_REPLACES_ALLOCATOR
#define ALLOCATOR_NAME(name) name
#define UNDERLYING(name) __libc_##name
#else
#define ALLOCATOR_NAME(name) __wrap_##name
#define UNDERLYING(name) __real_##name
#endif

extern "C" {
// The linker sets these at the bounds of the executable's code.
extern const char __executable_start;
extern const char etext;

void *UNDERLYING(malloc)(size_t size);
void *UNDERLYING(calloc)(size_t count, size_t size);
void *UNDERLYING(realloc)(void *block, size_t size);
void UNDERLYING(free)(void *block);
}

namespace
{

using ruk_test::Owner;

struct Block {
    void *start;
    Owner owner;
};

// Nothing here may allocate.
constexpr int k_most_blocks = 8192;

struct Account {
    bool is_open;
    Owner refused_owner;
    int refused;
    bool has_refused;
    int allocations[2];
    Block blocks[k_most_blocks];
    int block_count;
    void *latest;
};
thread_local Account account;

Owner owner_of(const void *caller)
{
    const auto address = reinterpret_cast<uintptr_t>(caller);
    const bool is_own = address >= reinterpret_cast<uintptr_t>(&__executable_start) &&
                        address < reinterpret_cast<uintptr_t>(&etext);
    return is_own ? Owner::product : Owner::library;
}

bool refuses(Owner owner)
{
    if (!account.is_open) {
        return false;
    }
    const int nth = ++account.allocations[static_cast<int>(owner)];
    if (owner != account.refused_owner || nth != account.refused) {
        return false;
    }
    account.has_refused = true;
    errno = ENOMEM;
    return true;
}

void *entered(void *block, Owner owner)
{
    if (account.is_open && block != nullptr && account.block_count < k_most_blocks) {
        account.blocks[account.block_count++] = {block, owner};
        account.latest = owner == Owner::product ? block : account.latest;
    }
    return block;
}

// Frees count whenever they come.
void strike_out(const void *block)
{
    for (int i = 0; i < account.block_count; ++i) {
        if (account.blocks[i].start == block) {
            account.blocks[i] = account.blocks[--account.block_count];
            return;
        }
    }
}

} // namespace

extern "C" {

void *ALLOCATOR_NAME(malloc)(size_t size)
{
    const Owner owner = owner_of(__builtin_return_address(0));
    return refuses(owner) ? nullptr : entered(UNDERLYING(malloc)(size), owner);
}

void *ALLOCATOR_NAME(calloc)(size_t count, size_t size)
{
    const Owner owner = owner_of(__builtin_return_address(0));
    return refuses(owner) ? nullptr : entered(UNDERLYING(calloc)(count, size), owner);
}

void *ALLOCATOR_NAME(realloc)(void *block, size_t size)
{
    const Owner owner = owner_of(__builtin_return_address(0));
    if (refuses(owner)) {
        return nullptr;
    }
    strike_out(block);
    return entered(UNDERLYING(realloc)(block, size), owner);
}

void ALLOCATOR_NAME(free)(void *block)
{
    strike_out(block);
    UNDERLYING(free)(block);
}

} // extern "C"

namespace ruk_test
{

Heap::Heap(Owner owner, int refused)
{
    account.refused_owner = owner;
    account.refused = refused;
    account.has_refused = false;
    account.allocations[0] = account.allocations[1] = 0;
    account.block_count = 0;
    account.is_open = true;
}

Heap::~Heap()
{
    account.is_open = false;
}

bool Heap::has_refused() const
{
    return account.has_refused;
}

int Heap::allocations(Owner owner) const
{
    return account.allocations[static_cast<int>(owner)];
}

int Heap::held(Owner owner) const
{
    int count = 0;
    for (int i = 0; i < account.block_count; ++i) {
        count += account.blocks[i].owner == owner ? 1 : 0;
    }
    return count;
}

void *Heap::latest()
{
    return account.latest;
}

bool Heap::sees_library()
{
#ifdef RUK_REPLACES_ALLOCATOR
    return true;
#else
    return false;
#endif
}

} // namespace ruk_test
