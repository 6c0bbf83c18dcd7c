// An entry's line written the fast way, beside the one format that says what it is; and local time
// beside the C library's, in every zone of the host.
#include "rukcmd/entry_line.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <random>
#include <thread>

#include "rukcmd/local_time.h"
#include "tests/rukcmd/rig.h"

using namespace ruk_test;

namespace
{

template <typename Write> std::string written(Write write, const LogEntry &entry)
{
    // Behind the line's room stands what must stay.
    std::string room(entry_line::k_size + 16, '#');
    const size_t length = write(room.data(), entry);
    EXPECT_LT(length, entry_line::k_size);
    EXPECT_EQ(room.substr(entry_line::k_size), std::string(16, '#'));
    return room.substr(0, length);
}

void expect_line_of_the_format(const LogEntry &entry)
{
    const auto write_fast = [](char *line, const LogEntry &e) {
        return entry_line::write(line, e, strnlen(e.message, sizeof e.message));
    };
    EXPECT_EQ(written(write_fast, entry), written(entry_line::write_plainly, entry))
        << "seconds " << entry.seconds << " microseconds " << entry.microseconds << " entry "
        << entry.entry << " module " << entry.module << " level " << entry.level << " cpu "
        << entry.cpu;
}

void set_zone(const std::string &zone)
{
    setenv("TZ", zone.c_str(), 1);
    tzset();
}

std::mt19937_64 seeded()
{
    const uint64_t seed = std::random_device{}();
    printf("seed %llu\n", static_cast<unsigned long long>(seed));
    return std::mt19937_64(seed);
}

// Numbers of every length.
uint64_t any_number(std::mt19937_64 &random)
{
    return random() >> random() % 64;
}

LogEntry any_entry(std::mt19937_64 &random)
{
    LogEntry entry{};
    entry.seconds = static_cast<uint32_t>(1'700'000'000 + random() % 600);
    entry.microseconds =
        static_cast<uint32_t>(random() % 8 == 0 ? any_number(random) : random() % 1'000'000);
    entry.entry = any_number(random);
    entry.module = static_cast<uint32_t>(any_number(random));
    entry.level = static_cast<uint16_t>(random() % 2 == 0 ? 1U << random() % 9 : random());
    entry.cpu = static_cast<uint16_t>(any_number(random));
    for (char &c : entry.message) {
        c = static_cast<char>(random());
    }
    if (random() % 4 != 0) {
        entry.message[random() % sizeof entry.message] = '\0';
    }
    return entry;
}

std::string plain_time(time_t seconds)
{
    char date[32] = {};
    ctime_r(&seconds, date);
    return std::string(date).substr(4, local_time::k_size);
}

std::string time_of(time_t seconds)
{
    char text[local_time::k_size];
    return local_time::put(text, seconds) ? std::string(text, sizeof text) : "";
}

// The names of all zones, those with leap seconds included; some rules where there are none.
std::vector<std::string> zones()
{
    std::vector<std::string> names{"UTC0", "IST-5:30", "<-0930>9:30", "EST5EDT,M3.2.0,M11.1.0",
                                   // Its offset changes within a minute, and by odd seconds.
                                   "AAA3BBB1:59:17,M3.2.0/2:00:30,M11.1.0/1:30:45"};
    const std::filesystem::path root = "/usr/share/zoneinfo";
    std::error_code error;
    for (const auto &file : std::filesystem::recursive_directory_iterator(root, error)) {
        const std::string name = file.path().lexically_relative(root).string();
        if (file.is_regular_file() && (isupper(name[0]) != 0 || name.starts_with("right/"))) {
            names.push_back(":" + name);
        }
    }
    return names;
}

// The first second from here on, within a day, at which the offset from UTC changes; or none.
std::optional<time_t> change_after(time_t seconds)
{
    const auto offset_at = [](time_t at) {
        tm time{};
        localtime_r(&at, &time);
        return time.tm_gmtoff;
    };
    time_t before = seconds;
    time_t after = seconds + 200 * 86400L;
    if (offset_at(before) == offset_at(after)) {
        return std::nullopt;
    }
    while (after - before > 1) {
        const time_t middle = before + (after - before) / 2;
        (offset_at(middle) == offset_at(before) ? before : after) = middle;
    }
    return after;
}

struct entry_line_ : testing::Test {
    ~entry_line_() override { set_zone("UTC"); }
};

using local_time_ = entry_line_;

} // namespace

TEST_F(entry_line_, is_what_the_format_says_at_every_edge)
{
    const uint64_t numbers[] = {0,
                                1,
                                9,
                                10,
                                99,
                                100,
                                999,
                                1000,
                                9999,
                                10'000,
                                65'535,
                                99'999,
                                999'999,
                                1'000'000,
                                9'999'999,
                                10'000'000,
                                99'999'999,
                                100'000'000,
                                999'999'999,
                                INT32_MAX,
                                INT32_MAX + 1UL,
                                UINT32_MAX,
                                UINT32_MAX + 1UL,
                                9'999'999'999'999'999'999UL,
                                10'000'000'000'000'000'000UL,
                                UINT64_MAX};
    LogEntry entry{};
    entry.level = 1;
    entry.message[0] = '\n';
    for (const uint64_t number : numbers) {
        const auto narrow = static_cast<uint32_t>(number);
        const auto half = static_cast<uint16_t>(number);
        const std::function<void(LogEntry &)> sets[] = {
            [=](LogEntry &row) { row.seconds = narrow; },
            [=](LogEntry &row) { row.microseconds = narrow; },
            [=](LogEntry &row) { row.entry = number; },
            [=](LogEntry &row) { row.module = narrow; },
            [=](LogEntry &row) { row.level = half; },
            [=](LogEntry &row) { row.cpu = half; },
        };
        for (const auto &set : sets) {
            LogEntry row = entry;
            set(row);
            expect_line_of_the_format(row);
        }
    }
    for (size_t length = 0; length <= sizeof entry.message; ++length) {
        memset(entry.message, 'm', sizeof entry.message);
        if (length < sizeof entry.message) {
            entry.message[length] = '\0';
        }
        expect_line_of_the_format(entry);
    }
}

TEST_F(entry_line_, is_what_the_format_says_for_whatever_comes)
{
    std::mt19937_64 random = seeded();
    for (int i = 0; i < 100'000 && !HasFailure(); ++i) {
        expect_line_of_the_format(any_entry(random));
    }
}

TEST_F(local_time_, is_what_ctime_r_tells_in_every_zone)
{
    std::mt19937_64 random = seeded();
    size_t changes = 0;
    for (const std::string &zone : zones()) {
        SCOPED_TRACE(zone);
        set_zone(zone);
        for (int i = 0; i < 40 && !HasFailure(); ++i) {
            // From 1901 to 2106, and a walk from there by steps within some minutes.
            time_t at = static_cast<time_t>(random() % 6'460'000'000UL) - 2'170'000'000L;
            for (int step = 0; step < 12; ++step) {
                ASSERT_EQ(time_of(at), plain_time(at)) << at;
                at += static_cast<time_t>(random() % 45) - 3;
            }
            const std::optional<time_t> change = change_after(at);
            for (time_t near = -90; change && near < 90;
                 near += 1 + static_cast<time_t>(random() % 3)) {
                ++changes;
                ASSERT_EQ(time_of(*change + near), plain_time(*change + near)) << *change;
            }
        }
    }
    EXPECT_GT(changes, 0U);
}

// A leap second is the 61st of its minute.
TEST_F(local_time_, counts_leap_seconds_where_the_zone_does)
{
    set_zone(":right/UTC");
    const time_t k_last_of_2016 = 1'483'228'826; // 23:59:60
    if (plain_time(k_last_of_2016) != "Dec 31 23:59:60") {
        GTEST_SKIP() << "SKIPPED: no zones with leap seconds here";
    }
    EXPECT_EQ(time_of(k_last_of_2016 - 60), "Dec 31 23:59:00");
    EXPECT_EQ(time_of(k_last_of_2016 - 1), "Dec 31 23:59:59");
    EXPECT_EQ(time_of(k_last_of_2016), "Dec 31 23:59:60");
    EXPECT_EQ(time_of(k_last_of_2016 + 1), "Jan  1 00:00:00");
    EXPECT_EQ(time_of(k_last_of_2016), "Dec 31 23:59:60");
}

TEST_F(local_time_, follows_a_new_zone_within_the_minute)
{
    constexpr time_t k_at = 1'700'000'000; // Nov 14 22:13:20 in UTC
    const std::pair<const char *, const char *> rows[] = {
        {"UTC0", "Nov 14 22:13:20"},    {"IST-5:30", "Nov 15 03:43:20"},
        {"CST6CDT", "Nov 14 16:13:20"}, {"CST5CDT", "Nov 14 17:13:20"},
        {"CST-8", "Nov 15 06:13:20"},   {"<-0930>9:30", "Nov 14 12:43:20"},
        {"UTC0", "Nov 14 22:13:20"},
    };
    for (const auto &[zone, text] : rows) {
        set_zone(zone);
        EXPECT_EQ(time_of(k_at), text);
        EXPECT_EQ(time_of(k_at + 1).back(), '1');
        EXPECT_EQ(time_of(k_at), text);
    }
}

TEST_F(local_time_, of_one_thread_is_not_disturbed_by_another)
{
    set_zone("UTC0");
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (time_t thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&wrong, thread] {
            for (time_t i = 0; i < 20'000; ++i) {
                const time_t at = 1'700'000'000 + thread * 1'000'003 + i * 7;
                wrong += time_of(at) == plain_time(at) ? 0 : 1;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

// A year beyond what the date's form has room for.
TEST_F(local_time_, refuses_what_ctime_r_refuses)
{
    EXPECT_EQ(time_of(std::numeric_limits<time_t>::max()), "");
    EXPECT_EQ(time_of(0), "Jan  1 00:00:00");
}
