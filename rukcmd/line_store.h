// The lines of a read-out, between reading and printing.
#pragma once

#include <cstddef>

#include "ruk/log.h"
#include "rukcmd/interruption.h"

// One at a time: the first lines lie in static memory, which is all that most read-outs need.
class LineStore
{
public:
    LineStore() = default;
    ~LineStore();
    LineStore(const LineStore &) = delete;
    LineStore &operator=(const LineStore &) = delete;

    // Keeps the line of an entry whose message has been settled to that length.  False when memory,
    // or the share of it that a log may take, is used up.
    bool add(const LogEntry &entry, size_t message_length);

    // Prints until the end, or until guard has noted a signal.
    void print_and_empty(const InterruptionGuard &guard);

private:
    // Whole lines, printed with one call.
    struct Block {
        size_t length;
        char text[size_t{128} * 1024 - sizeof(size_t)];
    };
    // As large as a huge page, which costs less than a tenth of as many small ones.
    static constexpr size_t k_blocks = 16;
    struct Slab {
        Block blocks[k_blocks];
    };
    static constexpr size_t k_most_slabs = 64;

    static Block first_;

    bool open_block();
    bool add_slab();
    Block &block_at(size_t index);

    Slab *slabs_[k_most_slabs] = {}; // the blocks behind the first
    size_t allocated_ = 0;           // slabs
    size_t used_ = 0;                // blocks
    Block *open_ = nullptr;          // the last of those
};
