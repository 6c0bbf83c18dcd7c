// The lines of a read-out, between reading and printing.
#include "rukcmd/line_store.h"

#include <cstdlib>
#include <sys/mman.h>

#include "rukcmd/entry_line.h"
#include "rukcmd/output.h"

[[gnu::section(".bss.large")]] LineStore::Block LineStore::first_;

LineStore::~LineStore()
{
    for (size_t i = 0; i < allocated_; ++i) {
        free(slabs_[i]);
    }
}

bool LineStore::add(const LogEntry &entry, size_t message_length)
{
    const bool has_room =
        open_ != nullptr && open_->length + entry_line::k_size <= sizeof open_->text;
    if (!has_room && !open_block()) {
        return false;
    }
    open_->length += entry_line::write(open_->text + open_->length, entry, message_length);
    return true;
}

void LineStore::print_and_empty(const InterruptionGuard &guard)
{
    for (size_t i = 0; i < used_ && !guard.interrupted(); ++i) {
        const Block &block = block_at(i);
        output::put({block.text, block.length});
    }
    used_ = 0;
    open_ = nullptr;
}

bool LineStore::open_block()
{
    const size_t slabs = (used_ + k_blocks - 1) / k_blocks; // for one block more
    if (slabs > allocated_ && !add_slab()) {
        return false;
    }
    open_ = &block_at(used_++);
    open_->length = 0;
    return true;
}

bool LineStore::add_slab()
{
    void *const slab =
        allocated_ == k_most_slabs ? nullptr : aligned_alloc(sizeof(Slab), sizeof(Slab));
    if (slab == nullptr) {
        return false;
    }
    madvise(slab, sizeof(Slab), MADV_HUGEPAGE); // or small pages, where that is refused
    slabs_[allocated_++] = static_cast<Slab *>(slab);
    return true;
}

LineStore::Block &LineStore::block_at(size_t index)
{
    return index == 0 ? first_ : slabs_[(index - 1) / k_blocks]->blocks[(index - 1) % k_blocks];
}
