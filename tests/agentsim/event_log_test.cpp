// The ring: numbers, cursors, counters, limits and holds.
#include "agentsim/event_log.h"

#include "tests/agentsim/records.h"

using agentsim::EventLog;
using namespace ruk_test;

namespace
{

void add(EventLog &log, int count)
{
    for (int i = 0; i < count; ++i) {
        log.add(event_of(7, 8, "event\n"));
    }
}

} // namespace

TEST(EventLog, is_empty_and_on_at_first)
{
    const EventLog log(4, 0);
    expect_info(log.info(), {0, 1, 0, 0, 0, 0, k_none});
    EXPECT_EQ(log.after(k_none), nullptr);
    EXPECT_EQ(log.after(0), nullptr);
}

TEST(EventLog, keeps_events_as_they_are_and_numbers_them)
{
    EventLog log(4, 0);
    LogEntry event = event_of(9, 0x10, "first\n");
    event.entry = 77;
    log.add(event);
    const LogEntry *kept = log.after(k_none);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->entry, 0U);
    EXPECT_EQ(kept->seconds, 1'600'000'000U);
    EXPECT_EQ(kept->microseconds, 250'000U);
    EXPECT_EQ(kept->module, 9U);
    EXPECT_EQ(kept->level, 0x10);
    EXPECT_EQ(kept->cpu, 3);
    EXPECT_STREQ(kept->message, "first\n");
}

TEST(EventLog, overwrites_the_oldest_when_full)
{
    EventLog log(3, 0);
    add(log, 3);
    expect_info(log.info(), {3, 1, 3, 0, 0, 0, k_none});
    add(log, 2);
    expect_info(log.info(), {3, 1, 5, 2, 0, 0, k_none});
}

TEST(EventLog, after_gives_the_oldest_entry_above_the_cursor)
{
    EventLog log(3, 0);
    add(log, 5); // held: 2, 3, 4
    struct {
        uint64_t cursor;
        int64_t expected; // -1: none
    } const rows[] = {
        {k_none, 2},      {0, 2},  {1, 2},  {2, 3},
        {3, 4},           {4, -1}, {5, -1}, {0x8000000000000000, -1},
        {k_none - 1, -1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.cursor);
        const LogEntry *entry = log.after(row.cursor);
        EXPECT_EQ(entry != nullptr ? static_cast<int64_t>(entry->entry) : -1, row.expected);
    }
}

TEST(EventLog, a_ring_of_one_holds_the_newest)
{
    EventLog log(1, 0);
    add(log, 4);
    expect_info(log.info(), {1, 1, 4, 3, 0, 0, k_none});
    EXPECT_EQ(log.after(k_none)->entry, 3U);
    EXPECT_EQ(log.after(3), nullptr);
}

TEST(EventLog, numbers_start_where_they_are_told_to)
{
    EventLog log(4, 0xFFFFFFFE);
    expect_info(log.info(), {0, 1, 0xFFFFFFFE, 0, 0, 0, k_none});
    add(log, 3);
    expect_info(log.info(), {3, 1, 0x100000001, 0, 0, 0, k_none});
    EXPECT_EQ(log.after(k_none)->entry, 0xFFFFFFFEU);
    EXPECT_EQ(log.after(0xFFFFFFFF)->entry, 0x100000000U);
}

TEST(EventLog, loses_events_once_the_numbers_are_used_up)
{
    EventLog log(4, k_none - 1);
    add(log, 3);
    expect_info(log.info(), {1, 1, k_none, 0, 2, 0, k_none});
    EXPECT_EQ(log.after(k_none)->entry, k_none - 1);
    EXPECT_EQ(log.after(k_none - 1), nullptr);
}

TEST(EventLog, counts_what_others_skip_and_lose)
{
    EventLog log(4, 0);
    log.skip();
    log.lose(5);
    log.lose(2);
    expect_info(log.info(), {0, 1, 0, 0, 7, 1, k_none});
}

TEST(EventLog, start_with_a_limit_stops_by_itself)
{
    EventLog log(8, 0);
    add(log, 2);
    log.start(3);
    expect_info(log.info(), {2, 1, 2, 0, 0, 0, 4});
    add(log, 2);
    expect_info(log.info(), {4, 1, 4, 0, 0, 0, 4});
    add(log, 1);
    expect_info(log.info(), {5, 0, 5, 0, 0, 0, k_none});
    add(log, 2);
    expect_info(log.info(), {5, 0, 5, 0, 0, 2, k_none});
}

TEST(EventLog, start_without_a_limit_removes_one)
{
    EventLog log(8, 0);
    log.start(3);
    log.start(0);
    expect_info(log.info(), {0, 1, 0, 0, 0, 0, k_none});
    add(log, 5);
    expect_info(log.info(), {5, 1, 5, 0, 0, 0, k_none});
}

TEST(EventLog, stop_at_once_skips_what_comes_and_keeps_the_limit)
{
    EventLog log(8, 0);
    log.start(2);
    log.stop(0);
    add(log, 3);
    expect_info(log.info(), {0, 0, 0, 0, 0, 3, 1});
    log.resume();
    expect_info(log.info(), {0, 1, 0, 0, 0, 3, 1});
    add(log, 3);
    expect_info(log.info(), {2, 0, 2, 0, 0, 4, k_none});
}

TEST(EventLog, stop_with_a_count_sets_the_limit_and_nothing_else)
{
    EventLog log(8, 0);
    log.stop(1);
    expect_info(log.info(), {0, 1, 0, 0, 0, 0, 0});
    add(log, 2);
    expect_info(log.info(), {1, 0, 1, 0, 0, 1, k_none});
    log.stop(2);
    expect_info(log.info(), {1, 0, 1, 0, 0, 1, 2});
    log.resume();
    add(log, 3);
    expect_info(log.info(), {3, 0, 3, 0, 0, 2, k_none});
}

TEST(EventLog, a_limit_beyond_the_last_number_is_none)
{
    struct {
        uint64_t total;
        uint64_t count;
        uint64_t stop_after;
    } const rows[] = {
        {0, 1, 0},
        {0, k_none, k_none - 1},
        {1, k_none, k_none},
        {1, k_none - 1, k_none - 1},
        {100, k_none - 5, k_none},
        {k_none - 1, 1, k_none - 1},
        {k_none - 1, 2, k_none},
        {k_none, 1, k_none},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.total);
        SCOPED_TRACE(row.count);
        EventLog log(1, row.total);
        log.start(row.count);
        EXPECT_EQ(log.info().stop_after, row.stop_after);
    }
}

TEST(EventLog, clear_empties_the_ring_and_numbers_go_on)
{
    EventLog log(3, 0);
    add(log, 5);
    log.start(4);
    log.clear();
    expect_info(log.info(), {0, 1, 5, 2, 0, 0, 8});
    EXPECT_EQ(log.after(k_none), nullptr);
    EXPECT_EQ(log.after(2), nullptr);
    add(log, 2);
    expect_info(log.info(), {2, 1, 7, 2, 0, 0, 8});
    EXPECT_EQ(log.after(k_none)->entry, 5U);
    EXPECT_EQ(log.after(0)->entry, 5U);
    EXPECT_EQ(log.after(5)->entry, 6U);
    EXPECT_EQ(log.after(6), nullptr);
}

TEST(EventLog, holds_nest_and_leave_the_switch_alone)
{
    EventLog log(8, 0);
    log.hold();
    log.hold();
    add(log, 1);
    expect_info(log.info(), {0, 1, 0, 0, 0, 1, k_none});
    log.release();
    add(log, 1);
    expect_info(log.info(), {0, 1, 0, 0, 0, 2, k_none});
    log.release();
    add(log, 1);
    expect_info(log.info(), {1, 1, 1, 0, 0, 2, k_none});
}
