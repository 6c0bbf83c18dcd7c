// The lines of a read-out in memory: nothing lost between its blocks, and nothing when there is no
// room for more.
#include "rukcmd/line_store.h"

#include <cerrno>
#include <cstring>
#include <string>

#include "ruk/front_end.h"
#include "rukcmd/entry_line.h"
#include "tests/dpa/faults.h"
#include "tests/rukcmd/rig.h"

using namespace ruk_test;

namespace
{

// Lines of every length up to the longest message.
LogEntry entry_of(uint64_t number)
{
    LogEntry entry{};
    entry.seconds = 1'700'000'000;
    entry.entry = number;
    entry.level = 1;
    const std::string message(number % (sizeof entry.message - 1), 'm');
    memcpy(entry.message, message.data(), message.size());
    return entry;
}

std::string line_of(uint64_t number)
{
    char line[entry_line::k_size];
    return {line, entry_line::write_plainly(line, entry_of(number))};
}

std::string lines_of(uint64_t first, uint64_t last)
{
    std::string lines;
    for (uint64_t n = first; n <= last; ++n) {
        lines += line_of(n);
    }
    return lines;
}

bool add(LineStore &store, uint64_t number)
{
    const LogEntry entry = entry_of(number);
    return store.add(entry, strnlen(entry.message, sizeof entry.message));
}

std::string printed(LineStore &store)
{
    return captured_stdout([&] {
        const InterruptionGuard guard;
        store.print_and_empty(guard);
    });
}

// Adds entries from first on until one is refused, and returns that one's number.
uint64_t fill(LineStore &store, uint64_t first)
{
    while (add(store, first)) {
        ++first;
    }
    return first;
}

using line_store = FrontEnd;

} // namespace

TEST_F(line_store, prints_nothing_when_nothing_was_added)
{
    LineStore store;
    ruk_rcli_print_len = 7; // what a print of no text would move the cursor by
    EXPECT_EQ(printed(store), "");
    EXPECT_EQ(ruk_rcli_buffer_ptr, nullptr);
}

// Five slabs, and what was printed is forgotten.
TEST_F(line_store, prints_every_line_once_and_in_order)
{
    LineStore store;
    for (const uint64_t count : {1U, 3'000U, 80'000U, 2U, 40'000U}) {
        for (uint64_t n = 0; n < count; ++n) {
            ASSERT_TRUE(add(store, n));
        }
        EXPECT_EQ(printed(store), lines_of(0, count - 1)) << count;
        EXPECT_EQ(printed(store), "");
    }
}

TEST_F(line_store, refuses_an_entry_when_no_memory_is_given_and_keeps_the_others)
{
    for (const int slab : {1, 2, 3}) {
        LineStore store;
        const Fault fault(Call::allocate_aligned, ENOMEM, slab);
        const uint64_t refused = fill(store, 0);
        const std::string lines = lines_of(0, refused - 1);
        const auto blocks = static_cast<size_t>(1 + (slab - 1) * 16);
        EXPECT_GT(lines.size(), blocks * 127 * 1024);
        EXPECT_LT(lines.size(), blocks * 128 * 1024);
        EXPECT_EQ(printed(store), lines);
        // The memory that it has serves again, and more is asked for.
        for (uint64_t n = 0; n <= refused; ++n) {
            ASSERT_TRUE(add(store, n));
        }
        EXPECT_EQ(printed(store), lines_of(0, refused));
    }
}

// 128 MiB and a block, in blocks that have no room for the longest line when they are full.
TEST_F(line_store, takes_a_bounded_share_of_the_memory)
{
    constexpr uint64_t k_same = 126; // the longest line, always the same
    LineStore store;
    uint64_t lines = 0;
    while (add(store, k_same)) {
        ++lines;
    }
    const size_t length = line_of(k_same).size();
    constexpr size_t k_text = 128 * 1024 - sizeof(size_t);
    const uint64_t in_block = (k_text - entry_line::k_size) / length + 1;
    EXPECT_EQ(lines, in_block * (1 + 64 * 16));
}

// What has been read is printed when there is no room for more, and the read-out goes on.
TEST_F(line_store, gives_way_to_printing_under_the_hold)
{
    constexpr uint64_t k_entries = 3'000;
    const Peer peer([](const Request &request) {
        if (request.opcode() != 234) {
            return std::optional(reply_to(request, 0, u64(1)));
        }
        const uint64_t next = number_at<uint64_t>(request.bytes, 56 + 8) + 1;
        return std::optional(next < k_entries ? reply_to(request, 0, numbered_entry(next))
                                              : reply_to(request, 1));
    });
    const Fault fault(Call::allocate_aligned, ENOMEM);
    const std::string lines = captured_stdout([] { EXPECT_EQ(ruk_log_show_all(nullptr), 0); });
    EXPECT_EQ(lines, k_entry_header + numbered_lines(0, k_entries - 1));
    EXPECT_EQ(peer.agent.requests().size(), k_entries + 3);
}
