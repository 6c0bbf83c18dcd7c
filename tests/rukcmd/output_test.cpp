// The print operation: standard output, the buffer's edges, what is cut and what is suppressed.
#include "ruk/front_end.h"
#include "tests/rukcmd/rig.h"

using namespace ruk_test;

namespace
{

// Taken before main, and so before any test touches a global.
struct Globals {
    const char *cursor = ruk_rcli_buffer_ptr;
    const char *marker = ruk_rcli_entry_start_ptr;
    int32_t print_len = ruk_rcli_print_len;
    uint32_t more_output = ruk_rcli_more_output;
    uint32_t fromdpa = ruk_rcli_fromdpa;
    uint32_t in_process = ruk_rcli_dpa_loga_log;
    uint32_t trace = kt_debug_print_ruk_log;
    uint32_t matcher_trace = kt_debug_print_ktcmd;
    uint32_t log_trace = kt_debug_print_ktlog_api;
    bool has_empty_buffer =
        std::string(ruk_rcli_buffer, sizeof ruk_rcli_buffer) == std::string(50000, '\0');
};

const Globals k_at_start;

uintptr_t address(const char *pointer)
{
    return reinterpret_cast<uintptr_t>(pointer);
}

uintptr_t buffer_end()
{
    return address(ruk_rcli_buffer) + 50000;
}

// Points the cursor so that room bytes remain; negative lies beyond the end.
void leave_room(int room)
{
    ruk_rcli_buffer_ptr =
        reinterpret_cast<char *>(buffer_end() - static_cast<uintptr_t>(intptr_t{room}));
}

char marker;

} // namespace

TEST(front_end_globals, start_as_documented)
{
    EXPECT_EQ(k_at_start.cursor, nullptr);
    EXPECT_EQ(k_at_start.marker, nullptr);
    EXPECT_EQ(k_at_start.print_len, 0);
    EXPECT_EQ(k_at_start.more_output, 0U);
    EXPECT_EQ(k_at_start.fromdpa, 0U);
    EXPECT_EQ(k_at_start.in_process, 0U);
    EXPECT_EQ(k_at_start.trace, 0x87U);
    EXPECT_EQ(k_at_start.matcher_trace, 0x87U);
    EXPECT_EQ(k_at_start.log_trace, 0x87U);
    EXPECT_TRUE(k_at_start.has_empty_buffer);
    EXPECT_EQ(sizeof ruk_rcli_buffer, 50000U);
    EXPECT_EQ(sizeof ruk_rcli_buffer_ptr, 8U);
    EXPECT_EQ(sizeof ruk_rcli_print_len, 4U);
    EXPECT_EQ(sizeof ruk_rcli_more_output, 4U);
}

using ruk_rcli_printf_ = FrontEnd;

TEST_F(ruk_rcli_printf_, goes_to_standard_output_without_a_cursor)
{
    const std::string long_text(60000, 'x');
    const std::string out = captured_stdout([&] {
        ruk_rcli_printf("%s %d %llu\n", "text", -5, 18446744073709551615ULL);
        ruk_rcli_printf("%s", long_text.c_str());
        ruk_rcli_printf("plain\n");
    });
    EXPECT_EQ(out, "text -5 18446744073709551615\n" + long_text + "plain\n");
    EXPECT_EQ(ruk_rcli_print_len, 0);
    EXPECT_EQ(ruk_rcli_buffer_ptr, nullptr);
    EXPECT_EQ(ruk_rcli_buffer[0], '\0');
}

TEST_F(ruk_rcli_printf_, writes_to_the_buffer_and_moves_the_cursor)
{
    ruk_rcli_buffer_ptr = ruk_rcli_buffer;
    memset(ruk_rcli_buffer, '#', sizeof ruk_rcli_buffer);
    const std::string out = captured_stdout([] {
        ruk_rcli_printf("one %d\n", 1);
        EXPECT_EQ(ruk_rcli_print_len, 6);
        ruk_rcli_printf("%s", "");
        EXPECT_EQ(ruk_rcli_print_len, 0);
        ruk_rcli_printf("two");
        EXPECT_EQ(ruk_rcli_print_len, 3);
    });
    EXPECT_EQ(out, "");
    EXPECT_EQ(std::string(ruk_rcli_buffer, 11), std::string("one 1\ntwo\0#", 11));
    EXPECT_EQ(ruk_rcli_buffer_ptr - ruk_rcli_buffer, 9);
}

// A text of 5 characters, at every distance from the end that matters.
TEST_F(ruk_rcli_printf_, asks_for_201_bytes_or_with_the_marker_for_one)
{
    struct {
        int room;
        bool has_marker;
        std::string written; // from the cursor, as far as the end; "#" is what was there
        int moved;
    } const rows[] = {
        {202, false, std::string("hello\0", 6) + std::string(196, '#'), 5},
        {201, false, std::string("hello\0", 6) + std::string(195, '#'), 5},
        {200, false, std::string(200, '#'), 3},
        {6, false, std::string(6, '#'), 3},
        {1, false, "#", 3},
        {0, false, "", 3},
        {-1, false, "", 3},
        {-999, false, "", 3},
        {201, true, std::string("hello\0", 6) + std::string(195, '#'), 5},
        {200, true, std::string("hello\0", 6) + std::string(194, '#'), 5},
        {7, true, std::string("hello\0#", 7), 5},
        {6, true, std::string("hello\0", 6), 5},
        {5, true, std::string("hell\0", 5), 5},
        {2, true, std::string("h\0", 2), 5},
        {1, true, std::string("\0", 1), 5},
        {0, true, "", 3},
        {-1, true, "", 3},
        {-999, true, "", 3},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::to_string(row.room) + (row.has_marker ? " with marker" : ""));
        memset(ruk_rcli_buffer, '#', sizeof ruk_rcli_buffer);
        ruk_rcli_entry_start_ptr = row.has_marker ? &marker : nullptr;
        ruk_rcli_print_len = 3;
        leave_room(row.room);
        const uintptr_t before = address(ruk_rcli_buffer_ptr);
        EXPECT_EQ(captured_stdout([] { ruk_rcli_printf("%s", "hello"); }), "");
        EXPECT_EQ(address(ruk_rcli_buffer_ptr) - before, static_cast<uintptr_t>(row.moved));
        EXPECT_EQ(ruk_rcli_print_len, row.moved);
        const size_t tail = row.written.size();
        EXPECT_EQ(std::string(ruk_rcli_buffer + 50000 - tail, tail), row.written);
        EXPECT_EQ(std::string(ruk_rcli_buffer, 50000 - tail), std::string(50000 - tail, '#'));
    }
}

TEST_F(ruk_rcli_printf_, cuts_at_the_end_and_suppresses_what_follows)
{
    for (char *const entry_start : {static_cast<char *>(nullptr), &marker}) {
        memset(ruk_rcli_buffer, '#', sizeof ruk_rcli_buffer);
        ruk_rcli_entry_start_ptr = entry_start;
        ruk_rcli_print_len = 0;
        leave_room(201);
        ruk_rcli_printf("%s", std::string(300, 'x').c_str());
        const std::string tail = std::string(200, 'x') + '\0';
        EXPECT_EQ(std::string(ruk_rcli_buffer + 50000 - 201, 201), tail);
        EXPECT_EQ(ruk_rcli_print_len, 300);
        EXPECT_EQ(address(ruk_rcli_buffer_ptr), buffer_end() + 99);
        // Each further write moves the cursor by the last length, its own does not count.
        ruk_rcli_printf("short");
        EXPECT_EQ(ruk_rcli_print_len, 300);
        EXPECT_EQ(address(ruk_rcli_buffer_ptr), buffer_end() + 399);
        ruk_rcli_printf("%s", "");
        EXPECT_EQ(address(ruk_rcli_buffer_ptr), buffer_end() + 699);
        EXPECT_EQ(std::string(ruk_rcli_buffer + 50000 - 201, 201), tail);
    }
}

TEST_F(ruk_rcli_printf_, refuses_the_next_write_once_less_than_201_bytes_are_left)
{
    memset(ruk_rcli_buffer, '#', sizeof ruk_rcli_buffer);
    leave_room(202);
    ruk_rcli_printf("ab");
    EXPECT_EQ(address(ruk_rcli_buffer_ptr), buffer_end() - 200);
    // Refused although it would fit; the cursor moves on by the 2 of the last write.
    ruk_rcli_printf("c");
    EXPECT_EQ(address(ruk_rcli_buffer_ptr), buffer_end() - 198);
    EXPECT_EQ(std::string(ruk_rcli_buffer + 50000 - 202, 4), std::string("ab\0#", 4));
    // A marker asks for less: now there is room.
    ruk_rcli_entry_start_ptr = &marker;
    ruk_rcli_printf("d");
    EXPECT_EQ(std::string(ruk_rcli_buffer + 50000 - 198, 3), std::string("d\0#", 3));
    EXPECT_EQ(ruk_rcli_print_len, 1);
}

TEST_F(ruk_rcli_printf_, leaves_the_cursor_in_place_when_refused_without_a_former_length)
{
    leave_room(200);
    ruk_rcli_printf("text");
    EXPECT_EQ(address(ruk_rcli_buffer_ptr), buffer_end() - 200);
    EXPECT_EQ(ruk_rcli_print_len, 0);
}

// The cursor moves on standard output too: a host that takes the buffer away also sets the kept
// length to 0, or its second text is lost.
TEST_F(ruk_rcli_printf_, moves_a_null_cursor_by_a_length_that_was_left)
{
    ruk_rcli_print_len = 7;
    const std::string out = captured_stdout([] {
        ruk_rcli_printf("first\n");
        ruk_rcli_printf("second\n");
    });
    EXPECT_EQ(out, "first\n");
    EXPECT_EQ(address(ruk_rcli_buffer_ptr), 14U);
}

TEST_F(ruk_rcli_printf_, drops_the_end_of_a_command_that_overflows_the_buffer)
{
    ruk_rcli_buffer_ptr = ruk_rcli_buffer;
    const std::string line(100, 'y');
    for (int i = 0; i < 600; ++i) {
        ruk_rcli_printf("%s", line.c_str());
    }
    // 498 lines leave 200 bytes, which is too little for the 499th.
    const std::string whole(49800, 'y');
    EXPECT_STREQ(ruk_rcli_buffer, whole.c_str());
    EXPECT_EQ(address(ruk_rcli_buffer_ptr), address(ruk_rcli_buffer) + 60000);
}
