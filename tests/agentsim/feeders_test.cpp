// Where events come from: lines, records of the kernel's log, the generator.
#include "agentsim/event.h"
#include "agentsim/generator.h"
#include "agentsim/kmsg_feeder.h"
#include "agentsim/line_feeder.h"
#include "agentsim/syslog_priority.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <vector>

#include "tests/agentsim/records.h"

using namespace agentsim;
using namespace ruk_test;
using namespace std::string_literals;

namespace
{

constexpr int64_t k_second = 1'000'000'000;

class FeedersTest : public testing::Test
{
protected:
    LogService service_{EventLog(100'000, 0), ModuleTable::standard(), {}};

    LogInfo info()
    {
        Client client;
        LogInfo info{};
        service_.answer(client, request_of(233, 0, 48),
                        std::as_writable_bytes(std::span(&info, 1)));
        return info;
    }

    void clear()
    {
        Client client;
        uint64_t value = 0;
        service_.answer(client, request_of(236, 4, 8),
                        std::as_writable_bytes(std::span(&value, 1)));
    }

    // Every entry of the log, oldest first.
    std::vector<LogEntry> entries()
    {
        Client client;
        LogEntry entry{};
        entry.entry = k_none;
        std::vector<LogEntry> all;
        while (service_.answer(client, request_of(234, 0, 152),
                               std::as_writable_bytes(std::span(&entry, 1))) == 0) {
            all.push_back(entry);
        }
        return all;
    }
};

std::string whole_field(const LogEntry &entry)
{
    return {entry.message, sizeof entry.message};
}

// text and as many terminators as fill the field.
std::string filled(const std::string &text)
{
    return text + std::string(128 - text.size(), '\0');
}

} // namespace

TEST(set_message, ends_in_a_line_feed_and_a_terminator)
{
    const std::string most(126, 'x');
    const std::string more(5000, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {"", "\n"},          {"text", "text\n"},        {"a\0b"s, "a b\n"},
        {most, most + "\n"}, {most + "x", most + "\n"}, {more, most + "\n"},
    };
    for (const auto &[text, expected] : rows) {
        SCOPED_TRACE(text.size());
        LogEntry event;
        memset(&event, '#', sizeof event);
        set_message(event, text, Ending::LINE_FEED);
        EXPECT_EQ(whole_field(event), filled(expected));
    }
}

TEST(set_message, as_it_is_fills_the_field)
{
    for (const size_t length : {0U, 1U, 125U, 126U, 127U, 128U}) {
        SCOPED_TRACE(length);
        LogEntry event;
        memset(&event, '#', sizeof event);
        set_message(event, std::string(length, 'x'), Ending::AS_IT_IS);
        EXPECT_EQ(whole_field(event), filled(std::string(length, 'x')));
    }
    LogEntry event;
    set_message(event, std::string(5000, 'x'), Ending::AS_IT_IS);
    EXPECT_EQ(whole_field(event), std::string(128, 'x'));
}

TEST(set_time, splits_a_wall_time)
{
    LogEntry event{};
    set_time(event, 1'600'000'000'123'456'789);
    EXPECT_EQ(event.seconds, 1'600'000'000U);
    EXPECT_EQ(event.microseconds, 123'456U);
}

TEST(level_of_priority, follows_the_severity)
{
    const std::pair<uint32_t, uint16_t> rows[] = {
        {0, 0x01}, {1, 0x01}, {2, 0x01},  {3, 0x01},   {4, 0x04},   {5, 0x02},
        {6, 0x08}, {7, 0x10}, {30, 0x08}, {188, 0x04}, {191, 0x10},
    };
    for (const auto &[priority, level] : rows) {
        EXPECT_EQ(level_of_priority(priority), level) << priority;
    }
}

TEST(module_of_priority, follows_the_facility)
{
    struct {
        uint32_t facility;
        uint32_t standard;
        uint32_t of_five; // in a table of five generated modules
    } const rows[] = {
        {0, 0, 0}, {1, 1, 1},  {2, 2, 2},  {3, 2, 3},  {4, 3, 4},  {5, 4, 0},
        {9, 5, 4}, {10, 3, 0}, {15, 5, 0}, {16, 6, 1}, {23, 6, 3},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.facility);
        EXPECT_EQ(module_of_priority(row.facility * 8 + 7, ModuleTable::standard()), row.standard);
        EXPECT_EQ(module_of_priority(row.facility * 8, ModuleTable::generated(5)), row.of_five);
    }
}

TEST(parse_line, takes_a_priority_or_a_level_off)
{
    struct {
        std::string line;
        uint32_t priority;
        uint16_t level;
        std::string text;
    } const rows[] = {
        {"plain", 14, 0x08, "plain"},
        {"", 14, 0x08, ""},
        {"<30>started", 30, 0x08, "started"},
        {"<0>", 0, 0x01, ""},
        {"<191> x", 191, 0x10, " x"},
        {"<192>x", 14, 0x08, "<192>x"},
        {"<>x", 14, 0x08, "<>x"},
        {"<3", 14, 0x08, "<3"},
        {"<-3>x", 14, 0x08, "<-3>x"},
        {"<b>x", 14, 0x08, "<b>x"},
        {"Error: broken", 14, 0x01, "broken"},
        {"notice:x", 14, 0x02, "x"},
        {"WARNING:  x", 14, 0x04, " x"},
        {"Info:", 14, 0x08, ""},
        {"debug: a: b", 14, 0x10, "a: b"},
        {"temp: x", 14, 0x20, "x"},
        {"Packet: x", 14, 0x40, "x"},
        {"log: x", 14, 0x80, "x"},
        {" error: x", 14, 0x08, " error: x"},
        {"errors: x", 14, 0x08, "errors: x"},
        {"error x", 14, 0x08, "error x"},
        {"<4>error: x", 4, 0x04, "error: x"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.line);
        const ParsedLine parsed = parse_line(row.line);
        EXPECT_EQ(parsed.priority, row.priority);
        EXPECT_EQ(parsed.level, row.level);
        EXPECT_EQ(parsed.text, row.text);
    }
}

TEST_F(FeedersTest, lines_are_events_wherever_the_pieces_end)
{
    const std::string text = "first\n\n<3>second\r\nDebug: third\nlast";
    struct {
        uint32_t module;
        uint16_t level;
        const char *message;
    } const expected[] = {
        {1, 0x08, "first\n"}, {1, 0x08, "\n"},     {0, 0x01, "second\n"},
        {1, 0x10, "third\n"}, {1, 0x08, "last\n"},
    };
    for (const size_t size : {1U, 2U, 5U, 100U}) {
        SCOPED_TRACE(size);
        clear();
        LineFeeder feeder(UniqueFd(), Ending::LINE_FEED);
        for (size_t at = 0; at < text.size(); at += size) {
            feeder.take(std::string_view(text).substr(at, size), service_);
        }
        feeder.finish(service_);
        feeder.finish(service_);
        const auto all = entries();
        ASSERT_EQ(all.size(), std::size(expected));
        for (size_t i = 0; i < all.size(); ++i) {
            EXPECT_EQ(all[i].module, expected[i].module);
            EXPECT_EQ(all[i].level, expected[i].level);
            EXPECT_STREQ(all[i].message, expected[i].message);
        }
    }
}

// Nothing to read yet is no end.
TEST_F(FeedersTest, an_empty_pipe_is_no_end)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
    LineFeeder lines((UniqueFd(ends[0])), Ending::LINE_FEED);
    EXPECT_TRUE(lines.collect(service_, 0));
    close(ends[1]);
    EXPECT_FALSE(lines.collect(service_, 0));
    LineFeeder folder(UniqueFd(open("/", O_RDONLY | O_CLOEXEC)), Ending::LINE_FEED);
    EXPECT_FALSE(folder.collect(service_, 0));
    EXPECT_TRUE(entries().empty());
}

TEST_F(FeedersTest, the_kernels_log_ends_where_it_cannot_be_read)
{
    KmsgFeeder ended(UniqueFd(open("/dev/null", O_RDONLY | O_CLOEXEC)), 0);
    EXPECT_FALSE(ended.collect(service_, 0));
    KmsgFeeder folder(UniqueFd(open("/", O_RDONLY | O_CLOEXEC)), 0);
    EXPECT_FALSE(folder.collect(service_, 0));
    // A record that can't be read is passed over; what gives nothing else is left for this turn.
    KmsgFeeder unreadable(UniqueFd(epoll_create1(EPOLL_CLOEXEC)), 0);
    EXPECT_TRUE(unreadable.collect(service_, 0));
    EXPECT_TRUE(entries().empty());
}

TEST_F(FeedersTest, lines_carry_the_time_of_reading)
{
    const int64_t before = wall_time() / 1000;
    LineFeeder feeder(UniqueFd(), Ending::LINE_FEED);
    feeder.take("now\n", service_);
    const int64_t after = wall_time() / 1000;
    const LogEntry entry = entries().at(0);
    const int64_t time = int64_t{entry.seconds} * 1'000'000 + entry.microseconds;
    EXPECT_GE(time, before);
    EXPECT_LE(time, after);
}

TEST_F(FeedersTest, long_lines_are_cut)
{
    LineFeeder feeder(UniqueFd(), Ending::LINE_FEED);
    for (int i = 0; i < 1000; ++i) {
        feeder.take(std::string(100, 'x'), service_);
    }
    feeder.take("\nnext\n", service_);
    const auto all = entries();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(whole_field(all[0]), filled(std::string(126, 'x') + "\n"));
    EXPECT_STREQ(all[1].message, "next\n");
}

TEST_F(FeedersTest, lines_may_stay_without_a_line_feed)
{
    LineFeeder feeder(UniqueFd(), Ending::AS_IT_IS);
    const std::string lengths[] = {"",
                                   std::string(125, 'a'),
                                   std::string(126, 'b'),
                                   std::string(127, 'c'),
                                   std::string(128, 'd'),
                                   "carriage\r"};
    for (const std::string &line : lengths) {
        feeder.take(line + "\n", service_);
    }
    feeder.take("warning: " + std::string(500, 'e') + "\n", service_);
    const auto all = entries();
    ASSERT_EQ(all.size(), 7U);
    for (size_t i = 0; i < std::size(lengths); ++i) {
        EXPECT_EQ(whole_field(all[i]), filled(lengths[i]));
    }
    EXPECT_EQ(whole_field(all[6]), std::string(128, 'e'));
    EXPECT_EQ(all[6].level, 0x04);
}

TEST(parse_kmsg, reads_the_fields)
{
    struct {
        const char *record;
        uint32_t priority;
        uint64_t sequence;
        uint64_t microseconds;
        uint16_t cpu;
        const char *text;
    } const rows[] = {
        {"6,60,98809,-;CPU\n", 6, 60, 98809, 0, "CPU"},
        {"30,1,2,-,caller=C3;a;b\n", 30, 1, 2, 3, "a;b"},
        {"4,1,2,-,caller=T812;text\n", 4, 1, 2, 0, "text"},
        {"4,1,2,-,caller=T812,C17;text\n", 4, 1, 2, 17, "text"},
        {"4,1,2,c,x=1,caller=C65535;text", 4, 1, 2, 65535, "text"},
        {"4,1,2,-,caller=C65536;text", 4, 1, 2, 0, "text"},
        {"4,1,2,-,caller=C;text", 4, 1, 2, 0, "text"},
        {"0,18446744073709551615,0,-;", 0, UINT64_MAX, 0, 0, ""},
        {"3,4,5,-;text\n SUBSYSTEM=usb\n A=b\n", 3, 4, 5, 0, "text"},
        {"3,4,5;no flags\n", 3, 4, 5, 0, "no flags"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.record);
        const auto parsed = parse_kmsg(row.record);
        ASSERT_TRUE(parsed.has_value());
        EXPECT_EQ(parsed->priority, row.priority);
        EXPECT_EQ(parsed->sequence, row.sequence);
        EXPECT_EQ(parsed->microseconds, row.microseconds);
        EXPECT_EQ(parsed->cpu, row.cpu);
        EXPECT_EQ(parsed->text, row.text);
    }
}

TEST(parse_kmsg, refuses_what_is_no_record)
{
    for (const char *record : {"", ";", "text", "6,1,2,-", "6;x", "6,1;x", "x,1,2,-;t", "6,,2,-;t",
                               "-1,1,2,-;t", "6,1,2 ,-;t", "6,18446744073709551616,2,-;t"}) {
        EXPECT_FALSE(parse_kmsg(record).has_value()) << record;
    }
}

TEST(unescape_kmsg, gives_back_what_can_be_read)
{
    const std::pair<std::string, std::string> rows[] = {
        {"plain", "plain"},
        {"a\\x5cb", "a\\b"},
        {"tab\\x09end", "tab\tend"},
        {"caf\\xc3\\xa9", "caf\xC3\xA9"},
        {"\\x1b[31m red \\x0a\\x7f", "\\x1b[31m red \\x0a\\x7f"},
        {"\\x00", "\\x00"},
        {"\\x", "\\x"},
        {"\\x5", "\\x5"},
        {"\\xg5z", "\\xg5z"},
        {"\\x-5z", "\\x-5z"},
        {"\\x5\\x5c", "\\x5\\"},
    };
    for (const auto &[text, expected] : rows) {
        char out[64];
        EXPECT_EQ(std::string(out, unescape_kmsg(text, out, sizeof out)), expected);
    }
}

TEST(unescape_kmsg, stops_at_the_size)
{
    char out[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(unescape_kmsg("a\\x5cbcdef", out, 3), 3U);
    EXPECT_EQ(std::string(out, 4), "a\\b#");
    EXPECT_EQ(unescape_kmsg("abc", out, 0), 0U);
}

TEST_F(FeedersTest, kernel_records_keep_their_own_time_cpu_and_origin)
{
    KmsgFeeder feeder(UniqueFd(), 1'600'000'000 * k_second + 900'000'000);
    feeder.take("4,339,1250001,-,caller=C1;link \\x5c up\n SUBSYSTEM=net\n", service_);
    feeder.take("38,340,1250002,-;session\n", service_);
    const auto all = entries();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].seconds, 1'600'000'002U);
    EXPECT_EQ(all[0].microseconds, 150'001U);
    EXPECT_EQ(all[0].module, 0U);
    EXPECT_EQ(all[0].level, 0x04);
    EXPECT_EQ(all[0].cpu, 1);
    EXPECT_STREQ(all[0].message, "link \\ up\n");
    EXPECT_EQ(all[1].module, 3U);
    EXPECT_EQ(all[1].level, 0x08);
    EXPECT_EQ(all[1].cpu, 0);
}

TEST_F(FeedersTest, kernel_records_that_are_missing_are_lost)
{
    KmsgFeeder feeder(UniqueFd(), 0);
    feeder.take("6,100,1,-;a\n", service_); // what was before the first is not ours to miss
    feeder.take("6,101,1,-;b\n", service_);
    EXPECT_EQ(info().lost, 0U);
    feeder.take("6,105,1,-;c\n", service_);
    EXPECT_EQ(info().lost, 3U);
    feeder.take("no record", service_);
    EXPECT_EQ(info().lost, 4U);
    EXPECT_EQ(info().total, 3U);
}

TEST_F(FeedersTest, long_kernel_messages_are_cut)
{
    KmsgFeeder feeder(UniqueFd(), 0);
    feeder.take("6,100,1,-;" + std::string(8000, 'k') + "\n", service_);
    EXPECT_EQ(whole_field(entries().at(0)), filled(std::string(126, 'k') + "\n"));
}

TEST_F(FeedersTest, the_generator_preloads_what_it_is_told_to)
{
    Generator generator;
    generator.preload(service_, 10);
    EXPECT_EQ(generator.due(), INT64_MAX);
    struct {
        uint32_t module;
        uint16_t level;
        const char *message;
    } const expected[] = {
        {7, 0x08, "flow 0 added: port 0 to port 7\n"},
        {9, 0x10, "learned 02:00:00:00:00:01 on port 1\n"},
        {8, 0x02, "port 2: link is up\n"},
        {10, 0x08, "segment 4099: peer 192.0.2.4 reachable\n"},
        {7, 0x08, "flow 4 aged out after 148 packets\n"},
        {8, 0x04, "port 6: receive queue 81% full\n"},
        {12, 0x80, "statistics sweep 7 done\n"},
        {10, 0x01, "segment 4104: no route to peer 192.0.2.9\n"},
        {7, 0x08, "flow 9 added: port 9 to port 16\n"},
    };
    const auto all = entries();
    ASSERT_EQ(all.size(), std::size(expected));
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i].module, expected[i].module);
        EXPECT_EQ(all[i].level, expected[i].level);
        EXPECT_STREQ(all[i].message, expected[i].message);
    }
    // The mirrored packet: its level is off at first.
    expect_info(info(), {9, 1, 9, 0, 0, 1, k_none});
}

TEST_F(FeedersTest, the_generator_keeps_its_rate)
{
    // 3 events a second, in pieces of 0.1 seconds; every ninth is skipped.
    Generator generator;
    generator.start(3, 50 * k_second);
    EXPECT_EQ(generator.due(), 50 * k_second + 333'333'334);
    for (int64_t tenth = 1; tenth <= 100; ++tenth) {
        EXPECT_TRUE(generator.collect(service_, 50 * k_second + tenth * k_second / 10));
    }
    EXPECT_EQ(info().total + info().skipped, 30U);
    EXPECT_EQ(info().lost, 0U);
    EXPECT_EQ(generator.due(), 60 * k_second + 333'333'334);
}

TEST_F(FeedersTest, the_generator_makes_an_event_when_it_is_due)
{
    for (const uint32_t rate : {1U, 3U, 7U, 60U, 999U, 1000U}) {
        SCOPED_TRACE(rate);
        Generator generator;
        int64_t now = 17;
        generator.start(rate, now);
        const uint64_t before = info().total + info().skipped;
        for (int i = 0; i < 50; ++i) {
            now = generator.due();
            EXPECT_TRUE(generator.collect(service_, now));
        }
        EXPECT_GE(info().total + info().skipped - before, 50U);
        EXPECT_LE(info().total + info().skipped - before, 51U);
    }
}

TEST_F(FeedersTest, the_generator_loses_what_is_older_than_a_second)
{
    struct {
        int64_t late; // in milliseconds
        uint64_t made;
        uint64_t lost;
    } const rows[] = {
        {1000, 1000, 0},
        {1001, 1000, 1},
        {1500, 1000, 500},
        {10'000, 1000, 9000},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.late);
        const LogInfo before = info();
        Generator generator;
        generator.start(1000, 0);
        EXPECT_TRUE(generator.collect(service_, row.late * 1'000'000));
        EXPECT_EQ(info().total + info().skipped - before.total - before.skipped, row.made);
        EXPECT_EQ(info().lost - before.lost, row.lost);
    }
}

TEST_F(FeedersTest, the_generator_makes_at_most_a_batch_at_a_time)
{
    Generator generator;
    generator.start(1'000'000, 0);
    EXPECT_TRUE(generator.collect(service_, k_second / 100));
    EXPECT_EQ(info().total + info().skipped, 4096U);
    EXPECT_TRUE(generator.collect(service_, k_second / 100));
    EXPECT_TRUE(generator.collect(service_, k_second / 100));
    EXPECT_EQ(info().total + info().skipped, 10'000U);
}
