// The bytes of one exchange in both directions, for both clients: each is handed a connection
// whose far end is the test's.
#include "ruk/agent.h"
#include "ruk/command_service.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/ioctl.h>

#include "tests/dpa/faults.h"
#include "tests/dpa/peer.h"
#include "tests/dpa/wire_bytes.h"
#include "tests/support/capture.h"
#include "tests/support/scripted_agent.h"

namespace
{

using ruk_test::Blocks;
using ruk_test::Call;
using ruk_test::captured_stdout;
using ruk_test::Fault;
using ruk_test::Header;
using ruk_test::hex;
using ruk_test::Pair;
using ruk_test::ShortTransfers;
using ruk_test::WordSetting;

struct Client {
    std::string name;
    int32_t (*exchange)(int32_t fd, AgentRequest *request, uint32_t header_length);
    uint32_t *word;
    uint32_t allocation_bit; // of the word, lets failed allocations be reported
    bool announces_total;
};

const Client k_clients[] = {
    {"kt_dpa_socket_api", kt_dpa_socket_api, &kt_debug_print_brel_dpa_api, 0x10, false},
    {"kt_rukcmd_socket_api", kt_rukcmd_socket_api, &kt_debug_print_ktrukcmd_indirect, 0x01, true},
};

// A caller's buffer of exactly so many bytes: a sanitizer sees the first one outside.
class Buffer
{
public:
    Buffer(size_t size, char first) : size_(size), bytes_(new char[size])
    {
        for (size_t i = 0; i < size; ++i) {
            bytes_[i] = static_cast<char>(first + static_cast<char>(i % 23));
        }
    }
    char *start() const { return bytes_.get(); }
    std::string text() const { return {bytes_.get(), size_}; }

private:
    size_t size_;
    std::unique_ptr<char[]> bytes_;
};

// A pattern that no request of these tests holds.
std::string payload(size_t size, char first = 'A')
{
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(first + static_cast<char>(i % 13));
    }
    return bytes;
}

std::string reply_header(int32_t status)
{
    return Header{.status = status}.bytes();
}

// A request of one buffer: 56 + size bytes in both directions.
AgentRequest request_of(const Buffer &buffer, uint32_t size)
{
    AgentRequest request{};
    request.opcode = 63;
    request.flags1 = 0x01;
    request.bsize1 = size;
    request.ptr1 = buffer.start();
    request.status = 77;
    return request;
}

std::string request_text(const AgentRequest &request)
{
    return Header{.opcode = request.opcode,
                  .version = request.version,
                  .flags1 = request.flags1,
                  .flags2 = request.flags2,
                  .reserved = request.reserved,
                  .ident = request.ident,
                  .status = request.status,
                  .bsize1 = request.bsize1,
                  .bsize2 = request.bsize2,
                  .elements1 = request.elements1,
                  .elements2 = request.elements2,
                  .esize1 = request.esize1,
                  .esize2 = request.esize2,
                  .ptr1 = request.ptr1,
                  .ptr2 = request.ptr2}
        .bytes();
}

// What a client says before and while it sends 60 bytes in one piece, its 0x10 bit set.
std::string sending_60(const Client &client)
{
    return (client.announces_total ? client.name + ": Sending (60) bytes across\n" : "") +
           client.name + ": Sent (0) bytes, not (60), sending (60) more\n";
}

TEST(exchange, sends_every_header_byte_as_the_caller_has_it)
{
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.name);
        Pair pair;
        pair.peer().reply(reply_header(0));
        AgentRequest request{};
        request.opcode = 0x0201;
        request.version = 0x0403;
        request.flags1 = 0xf5; // every bit but buffer 2's and 0x02
        request.flags2 = 0x06;
        request.reserved = 0x0807;
        request.ident = 0x0c0b0a09;
        request.status = 0x100f0e0d;
        request.bsize1 = 0;
        request.bsize2 = 0x18171615;
        request.elements1 = 0x1c1b1a19;
        request.elements2 = 0x201f1e1d;
        request.esize1 = 0;
        request.esize2 = 0x28272625;
        request.ptr1 = reinterpret_cast<void *>(0x302f2e2d2c2b2a29);
        request.ptr2 = reinterpret_cast<void *>(0x3837363534333231);
        EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
        EXPECT_EQ(hex(pair.peer().received()), "01020304"
                                               "f5060708"
                                               "090a0b0c"
                                               "0d0e0f10"
                                               "00000000"
                                               "15161718"
                                               "191a1b1c"
                                               "1d1e1f20"
                                               "00000000"
                                               "25262728"
                                               "292a2b2c2d2e2f30"
                                               "3132333435363738");
        EXPECT_EQ(request.status, 0);
    }
}

TEST(exchange, moves_the_bytes_that_sizes_and_flags_tell)
{
    struct {
        uint8_t flags1;
        uint32_t bsize1, elements1, esize1;
        uint32_t bsize2, elements2, esize2;
        uint32_t length1, length2;
    } const rows[] = {
        {0x01, 0, 0, 0, 0, 0, 0, 0, 0},
        {0x01, 4, 0, 0, 0, 0, 0, 4, 0},
        {0x01, 4, 0, 0, 100, 0, 0, 4, 0},
        {0x01, 4, 0, 0, 100, 7, 3, 4, 0},
        {0x04, 8, 10, 1, 0, 0, 0, 18, 0},
        {0x00, 8, 10, 1, 0, 0, 0, 18, 0},
        {0x03, 8, 10, 3, 0, 0, 0, 38, 0},
        {0x08, 0, 0, 0, 5, 0, 0, 0, 5},
        {0x08, 3, 0, 0, 0, 0, 0, 3, 0},
        {0x08, 3, 0, 0, 2, 4, 5, 3, 22},
        {0x0c, 8, 3, 1, 0, 5, 1, 11, 5},
        {0xff, 1, 1, 1, 1, 1, 1, 2, 2},
        {0xf7, 1, 1, 1, 1, 1, 1, 2, 0},
        {0x08, 40, 100, 40, 8, 50, 40, 4040, 2008},
        {0x08, 4, 0x00010000, 0x00010000, 6, 0x80000000, 2, 4, 6},
        {0x08, 12, 0xffffffff, 4, 9, 3, 0xfffffffe, 8, 3},
    };
    for (const Client &client : k_clients) {
        for (const auto &row : rows) {
            SCOPED_TRACE(client.name + " row " + std::to_string(&row - rows));
            const Buffer buffer1(row.length1, 'a');
            const Buffer buffer2(row.length2 > 0 ? row.length2 : 100, 'b');
            const std::string before2 = buffer2.text();
            AgentRequest request{};
            request.flags1 = row.flags1;
            request.bsize1 = row.bsize1;
            request.elements1 = row.elements1;
            request.esize1 = row.esize1;
            request.bsize2 = row.bsize2;
            request.elements2 = row.elements2;
            request.esize2 = row.esize2;
            request.ptr1 = buffer1.start();
            request.ptr2 = buffer2.start();
            const std::string sent = request_text(request) + buffer1.text() +
                                     (row.length2 > 0 ? buffer2.text() : std::string());
            const std::string answer1 = payload(row.length1, 'A');
            const std::string answer2 = payload(row.length2, 'N');

            Pair pair;
            pair.peer().reply(reply_header(6) + answer1 + answer2);
            const Blocks blocks;
            EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
            EXPECT_EQ(blocks.held(), 0);
            EXPECT_EQ(hex(pair.peer().received()), hex(sent));
            EXPECT_EQ(request.status, 6);
            EXPECT_EQ(buffer1.text(), answer1);
            EXPECT_EQ(buffer2.text(), row.length2 > 0 ? answer2 : before2);
        }
    }
}

TEST(exchange, changes_nothing_of_the_record_but_its_status)
{
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.name);
        Pair pair;
        const Buffer buffer(4, 'a');
        AgentRequest request = request_of(buffer, 4);
        request.flags2 = 0x5a;
        request.reserved = 0xa5a5;
        request.ident = -2;
        request.status = -7;
        const std::string expected = request_text(request);
        pair.peer().reply(std::string(12, '\xee') + ruk_test::u32(0xfffffff9) +
                          std::string(40, '\xee') + "ABCD");
        EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
        EXPECT_EQ(hex(request_text(request)), hex(expected));
        EXPECT_EQ(buffer.text(), "ABCD");
    }
}

TEST(exchange, hands_back_any_status)
{
    for (const Client &client : k_clients) {
        for (const int32_t status : {0, 1, 2, 6, 255, -1, INT32_MAX, INT32_MIN}) {
            SCOPED_TRACE(client.name + " " + std::to_string(status));
            Pair pair;
            pair.peer().reply(reply_header(status));
            AgentRequest request{};
            EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
            EXPECT_EQ(request.status, status);
        }
    }
}

TEST(exchange, sends_something_for_a_buffer_that_is_null_and_drops_its_answer)
{
    const Buffer buffer(6, 'a');
    struct {
        char *ptr1;
        char *ptr2;
        size_t buffer_at; // in the request
        std::string expected;
    } const rows[] = {
        {nullptr, nullptr, 0, "abcdef"},
        {nullptr, buffer.start(), 56 + 6, "NOPQRS"},
        {buffer.start(), nullptr, 56, "ABCDEF"},
    };
    for (const Client &client : k_clients) {
        for (const auto &row : rows) {
            SCOPED_TRACE(client.name + " row " + std::to_string(&row - rows));
            memcpy(buffer.start(), "abcdef", 6);
            AgentRequest request{};
            request.flags1 = 0x08;
            request.bsize1 = 6;
            request.bsize2 = 6;
            request.ptr1 = row.ptr1;
            request.ptr2 = row.ptr2;
            Pair pair;
            pair.peer().reply(reply_header(0) + "ABCDEF" + "NOPQRS");
            EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
            const std::string sent = pair.peer().received();
            ASSERT_EQ(sent.size(), 68U);
            if (row.buffer_at != 0) {
                EXPECT_EQ(sent.substr(row.buffer_at, 6), "abcdef");
            }
            EXPECT_EQ(buffer.text(), row.expected);
        }
    }
}

TEST(exchange, allocates_for_the_reply_only_above_4096_bytes)
{
    struct {
        uint32_t size; // of buffer 1
        int blocks;
    } const rows[] = {
        {0, 1},    {4039, 1}, // 4095 bytes in all
        {4040, 1},            // 4096
        {4041, 2},            // 4097
        {9000, 2},
    };
    for (const Client &client : k_clients) {
        for (const auto &row : rows) {
            SCOPED_TRACE(client.name + " " + std::to_string(row.size));
            const Buffer buffer(row.size, 'a');
            AgentRequest request = request_of(buffer, row.size);
            Pair pair;
            pair.peer().reply(reply_header(0) + payload(row.size));
            const Blocks blocks;
            EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
            EXPECT_EQ(blocks.allocated(), row.blocks);
            EXPECT_EQ(blocks.held(), 0);
            EXPECT_EQ(buffer.text(), payload(row.size));
            EXPECT_EQ(pair.peer().received().size(), 56 + row.size);
        }
    }
}

// The header is always sent first, so what a wrapped total leaves room for is the beginning of
// header, buffer 1 and buffer 2; the same bytes come back.
TEST(exchange, stays_inside_every_block_when_lengths_wrap)
{
    struct {
        uint32_t header_length, bsize1, bsize2;
        size_t size1, size2;        // what the caller really has
        size_t sent_header;         // of the record, then
        size_t sent1, sent2;        // of the buffers
        std::string reply1, reply2; // what ends up in the buffers
    } const rows[] = {
        {56, 0xffffffff, 0, 1, 1, 55, 0, 0, "a", "b"},
        {56, 0xffffffd8, 0, 1, 1, 16, 0, 0, "a", "b"},
        {56, 0xfffffff8, 16, 8, 16, 56, 8, 0, "ABCDEFGH", ""},
        {56, 4, 0xfffffffe, 4, 4, 56, 2, 0, "AB", "bcde"},
        {56, 4, 0xffffffff, 4, 4, 56, 3, 0, "ABC", "bcde"},
        {56, 0x80000000, 0x80000004, 4, 4, 56, 4, 0, "ABCD", "bcde"},
        {0xffffffe0, 48, 0, 8, 1, 16, 0, 0, "abcdefgh", "b"},
        {0xfffffff0, 8, 64, 8, 64, 56, 0, 0, "abcdefgh", ""},
    };
    for (const Client &client : k_clients) {
        for (const auto &row : rows) {
            SCOPED_TRACE(client.name + " row " + std::to_string(&row - rows));
            const Buffer buffer1(row.size1, 'a');
            const Buffer buffer2(row.size2, 'b');
            const std::string before1 = buffer1.text();
            const std::string before2 = buffer2.text();
            AgentRequest request{};
            request.flags1 = 0x08;
            request.bsize1 = row.bsize1;
            request.bsize2 = row.bsize2;
            request.ptr1 = buffer1.start();
            request.ptr2 = buffer2.start();
            const std::string sent = request_text(request).substr(0, row.sent_header) +
                                     before1.substr(0, row.sent1) + before2.substr(0, row.sent2);
            Pair pair;
            pair.peer().reply((reply_header(6) + "ABCDEFGH").substr(0, sent.size()));
            EXPECT_EQ(client.exchange(pair.client(), &request, row.header_length), 0);
            EXPECT_EQ(hex(pair.peer().received()), hex(sent));
            EXPECT_EQ(request.status, 6);
            EXPECT_EQ(buffer1.text(), row.reply1 + before1.substr(row.reply1.size()));
            EXPECT_EQ(buffer2.text(), row.reply2 + before2.substr(row.reply2.size()));
        }
    }
}

TEST(exchange, fails_when_the_wrapped_total_has_no_room_for_a_status)
{
    for (const Client &client : k_clients) {
        for (const uint32_t total : {0U, 1U, 12U, 15U}) {
            SCOPED_TRACE(client.name + " " + std::to_string(total));
            const Buffer buffer(1, 'a');
            AgentRequest request = request_of(buffer, total - 56);
            const std::string sent = request_text(request).substr(0, total);
            Pair pair;
            pair.peer().reply(std::string(total, '\0'));
            const Blocks blocks;
            EXPECT_EQ(client.exchange(pair.client(), &request, 56), -1);
            EXPECT_EQ(blocks.held(), 0);
            EXPECT_EQ(request.status, 1);
            EXPECT_EQ(hex(pair.peer().received()), hex(sent));
            EXPECT_EQ(buffer.text(), "a");
        }
    }
}

// Whatever header length goes out, the answer's buffers stand at 56.
TEST(exchange, takes_buffers_from_offset_56_whatever_header_length_it_sent)
{
    struct {
        uint32_t header_length;
        std::string buffer; // afterwards; it was abcdefgh
    } const rows[] = {
        {56, "ABCDEFGH"}, {64, "ABCDEFGH"}, // eight bytes more than a record has: zeros
        {52, "ABCDefgh"},                   // four bytes less: the reply ends four bytes early
        {48, "abcdefgh"}, {8, "abcdefgh"},
    };
    for (const Client &client : k_clients) {
        for (const auto &row : rows) {
            SCOPED_TRACE(client.name + " " + std::to_string(row.header_length));
            const Buffer buffer(8, 'a');
            AgentRequest request{};
            request.bsize1 = 8;
            request.ptr1 = buffer.start();
            std::string sent = request_text(request);
            sent.resize(row.header_length, '\0');
            sent += "abcdefgh";
            Pair pair;
            pair.peer().reply((reply_header(6) + "ABCDEFGHIJKLMNOP").substr(0, sent.size()));
            EXPECT_EQ(client.exchange(pair.client(), &request, row.header_length), 0);
            EXPECT_EQ(hex(pair.peer().received()), hex(sent));
            EXPECT_EQ(request.status, 6);
            EXPECT_EQ(buffer.text(), row.buffer);
        }
    }
}

TEST(exchange, believes_nothing_of_the_reply_header_but_the_status)
{
    const Header claims[] = {
        {.opcode = 9, .version = 9, .flags1 = 0x0c, .flags2 = 9, .ident = 9, .bsize1 = 0},
        {.flags1 = 0xff, .bsize1 = 0xffffffff, .bsize2 = 0xffffffff, .ptr1 = "x", .ptr2 = "x"},
        {.elements1 = 1000, .elements2 = 1000, .esize1 = 1000, .esize2 = 1000},
    };
    for (const Client &client : k_clients) {
        for (const Header &claim : claims) {
            SCOPED_TRACE(client.name + " row " + std::to_string(&claim - claims));
            const Buffer buffer1(4, 'a');
            const Buffer buffer2(4, 'b');
            AgentRequest request = request_of(buffer1, 4);
            request.ptr2 = buffer2.start();
            request.bsize2 = 4;
            Pair pair;
            pair.peer().reply(claim.bytes() + "ABCD" + "NOPQ");
            EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
            EXPECT_EQ(request.status, 0);
            EXPECT_EQ(request.bsize1, 4U);
            EXPECT_EQ(request.flags1, 0x01);
            EXPECT_EQ(request.ptr1, buffer1.start());
            EXPECT_EQ(buffer1.text(), "ABCD");
            EXPECT_EQ(buffer2.text(), "bcde");
        }
    }
}

TEST(exchange, leaves_surplus_bytes_to_the_next_exchange)
{
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.name);
        Pair pair;
        const Buffer buffer(4, 'a');
        AgentRequest request = request_of(buffer, 4);
        // Five bytes too many: the next reply begins with them, so its status is read five bytes
        // early.
        pair.peer().reply(reply_header(0) + "ABCD" + "XXXXX");
        EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
        EXPECT_EQ(buffer.text(), "ABCD");
        int unread = 0;
        ASSERT_EQ(ioctl(pair.client(), FIONREAD, &unread), 0);
        EXPECT_EQ(unread, 5);

        pair.peer().reply(std::string(7, 's') + "\x2a" + std::string(3, '\0') +
                          std::string(41, 't') + "EFG");
        EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
        EXPECT_EQ(request.status, 42);
        EXPECT_EQ(buffer.text(), "tEFG");
    }
}

TEST(exchange, puts_a_reply_together_from_pieces_of_any_size)
{
    struct {
        uint32_t size; // small where the pieces are, since the socket holds only so many pieces
        size_t most;
    } const rows[] = {
        {64, 1}, {64, 7}, {64, 56}, {64, 119}, {5000, 1000}, {5000, 4096},
    };
    for (const Client &client : k_clients) {
        for (const auto &row : rows) {
            SCOPED_TRACE(client.name + " row " + std::to_string(&row - rows));
            const Buffer buffer(row.size, 'a');
            AgentRequest request = request_of(buffer, row.size);
            const std::string sent = request_text(request) + buffer.text();
            Pair pair;
            pair.peer().reply(reply_header(3) + payload(row.size));
            {
                const ShortTransfers limit(row.most);
                EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
            }
            EXPECT_EQ(request.status, 3);
            EXPECT_EQ(buffer.text(), payload(row.size));
            EXPECT_EQ(pair.peer().received(), sent);
        }
    }
}

// The same torn by the peer itself: each byte comes after the one before was taken.
TEST(exchange, waits_for_every_byte_of_a_slow_reply)
{
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.name);
        const Buffer buffer(4, 'a');
        AgentRequest request = request_of(buffer, 4);
        Pair pair;
        std::thread slow([&] {
            for (const char c : reply_header(5) + "ABCD") {
                pair.peer().reply(std::string(1, c));
                int unread = 1;
                while (ioctl(pair.client(), FIONREAD, &unread) == 0 && unread > 0) {
                    std::this_thread::yield();
                }
            }
        });
        EXPECT_EQ(client.exchange(pair.client(), &request, 56), 0);
        slow.join();
        EXPECT_EQ(request.status, 5);
        EXPECT_EQ(buffer.text(), "ABCD");
    }
}

TEST(exchange, fails_on_a_reply_that_ends_early)
{
    for (const Client &client : k_clients) {
        const WordSetting word(*client.word, 0x10);
        for (const size_t cut : {0U, 1U, 12U, 15U, 16U, 55U, 56U, 57U, 59U}) {
            SCOPED_TRACE(client.name + " " + std::to_string(cut));
            const Buffer buffer(4, 'a');
            AgentRequest request = request_of(buffer, 4);
            Pair pair;
            pair.peer().reply((reply_header(0) + "ABCD").substr(0, cut));
            pair.peer().end_of_replies();
            const Blocks blocks;
            int32_t result = 0;
            EXPECT_EQ(
                captured_stdout([&] { result = client.exchange(pair.client(), &request, 56); }),
                sending_60(client) + client.name + ": EOF reading bytes back 0\n");
            EXPECT_EQ(result, -1);
            EXPECT_EQ(request.status, 1);
            EXPECT_EQ(buffer.text(), "abcd");
            EXPECT_EQ(blocks.held(), 0);
        }
    }
}

TEST(exchange, frees_the_large_reply_that_ends_early)
{
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.name);
        const Buffer buffer(8000, 'a');
        const std::string before = buffer.text();
        AgentRequest request = request_of(buffer, 8000);
        Pair pair;
        pair.peer().reply(reply_header(0) + payload(7999));
        pair.peer().end_of_replies();
        const Blocks blocks;
        EXPECT_EQ(client.exchange(pair.client(), &request, 56), -1);
        EXPECT_EQ(blocks.allocated(), 2);
        EXPECT_EQ(blocks.held(), 0);
        EXPECT_EQ(request.status, 1);
        EXPECT_EQ(buffer.text(), before);
    }
}

TEST(exchange, reports_a_failed_transfer_while_its_trace_is_on)
{
    struct {
        Call call;
        int error;
        int nth;          // of the calls that move 25 bytes each
        std::string sent; // %s stands for the client
        std::string failure;
    } const rows[] = {
        {Call::send_bytes, EPIPE, 1, "", ": EOF writing more data -1\n"},
        {Call::send_bytes, 0, 1, "", ": EOF writing more data 0\n"},
        {Call::send_bytes, ECONNRESET, 2, "25", ": EOF writing more data -1\n"},
        {Call::send_bytes, 0, 2, "25", ": EOF writing more data 0\n"},
        {Call::receive_bytes, ECONNRESET, 1, "50", ": EOF reading bytes back -1\n"},
        {Call::receive_bytes, EINTR, 2, "50", ": EOF reading bytes back -1\n"},
        {Call::receive_bytes, 0, 3, "50", ": EOF reading bytes back 0\n"},
    };
    for (const Client &client : k_clients) {
        for (const auto &row : rows) {
            SCOPED_TRACE(client.name + " row " + std::to_string(&row - rows));
            std::string expected =
                client.announces_total ? client.name + ": Sending (60) bytes across\n" : "";
            expected += client.name + ": Sent (0) bytes, not (60), sending (60) more\n";
            if (row.sent == "25" || row.sent == "50") {
                expected += client.name + ": Sent (25) bytes, not (60), sending (35) more\n";
            }
            if (row.sent == "50") {
                expected += client.name + ": Sent (50) bytes, not (60), sending (10) more\n";
            }
            expected += client.name + row.failure;

            for (const uint32_t bits : {0x10U, 0xefU}) {
                const WordSetting word(*client.word, bits);
                const Buffer buffer(4, 'a');
                AgentRequest request = request_of(buffer, 4);
                Pair pair;
                pair.peer().reply(reply_header(0) + "ABCD");
                int32_t result = 0;
                const std::string printed = captured_stdout([&] {
                    const ShortTransfers limit(25);
                    const Fault fault(row.call, row.error, row.nth);
                    result = client.exchange(pair.client(), &request, 56);
                });
                EXPECT_EQ(printed, bits == 0x10 ? expected : "");
                EXPECT_EQ(result, -1);
                EXPECT_EQ(request.status, 1);
                EXPECT_EQ(buffer.text(), "abcd");
            }
        }
    }
}

TEST(exchange, survives_a_peer_that_has_gone)
{
    struct sigaction action;
    ASSERT_EQ(sigaction(SIGPIPE, nullptr, &action), 0);
    ASSERT_EQ(action.sa_handler, SIG_DFL); // the signal would end this process
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.name);
        const WordSetting word(*client.word, 0x10);
        const Buffer buffer(4, 'a');
        AgentRequest request = request_of(buffer, 4);
        Pair pair;
        pair.peer().hang_up();
        int32_t result = 0;
        EXPECT_EQ(captured_stdout([&] { result = client.exchange(pair.client(), &request, 56); }),
                  sending_60(client) + client.name + ": EOF writing more data -1\n");
        EXPECT_EQ(result, -1);
        EXPECT_EQ(request.status, 1);
    }
}

TEST(exchange, fails_on_a_descriptor_that_is_no_connection)
{
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.name);
        const int file = open("/dev/null", O_RDWR | O_CLOEXEC);
        ASSERT_GE(file, 0);
        AgentRequest request{};
        EXPECT_EQ(client.exchange(file, &request, 56), -1);
        EXPECT_EQ(request.status, 1);
        EXPECT_TRUE(ruk_test::is_open(file)); // the argument is not what a failure closes
        close(file);
    }
}

TEST(exchange, traces_each_write_while_bit_0x10_is_set)
{
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.name);
        const std::string announced =
            client.announces_total ? client.name + ": Sending (60) bytes across\n" : "";
        struct {
            uint32_t word;
            size_t most;
            std::string expected;
        } const rows[] = {
            {0x87, 60, ""},
            {0xef, 60, ""},
            {0x10, 60, announced + client.name + ": Sent (0) bytes, not (60), sending (60) more\n"},
            {0x97, 32,
             announced + client.name + ": Sent (0) bytes, not (60), sending (60) more\n" +
                 client.name + ": Sent (32) bytes, not (60), sending (28) more\n"},
            {0x10, 59,
             announced + client.name + ": Sent (0) bytes, not (60), sending (60) more\n" +
                 client.name + ": Sent (59) bytes, not (60), sending (1) more\n"},
        };
        for (const auto &row : rows) {
            const WordSetting word(*client.word, row.word);
            const Buffer buffer(4, 'a');
            AgentRequest request = request_of(buffer, 4);
            Pair pair;
            pair.peer().reply(reply_header(0) + "ABCD");
            EXPECT_EQ(captured_stdout([&] {
                          const ShortTransfers limit(row.most);
                          client.exchange(pair.client(), &request, 56);
                      }),
                      row.expected);
            EXPECT_EQ(request.status, 0);
        }
    }
}

TEST(exchange, refuses_a_null_request)
{
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.name);
        for (const uint32_t bits : {0x10U, 0xefU}) {
            const WordSetting word(*client.word, bits);
            Pair pair;
            int32_t result = 0;
            EXPECT_EQ(
                captured_stdout([&] { result = client.exchange(pair.client(), nullptr, 56); }),
                bits == 0x10 ? client.name + ": Invalid args passed \n" : "");
            EXPECT_EQ(result, -1);
            EXPECT_EQ(captured_stdout([&] { result = client.exchange(-1, nullptr, 56); }),
                      bits == 0x10 ? client.name + ": Invalid args passed \n" : "");
            EXPECT_EQ(result, -1);
            EXPECT_EQ(pair.peer().received(), "");
        }
    }
}

TEST(exchange, sends_nothing_when_a_block_cannot_be_had)
{
    struct {
        uint32_t size;
        int nth; // of the blocks asked for
        std::string expected;
    } const rows[] = {
        {4, 1, ": Failed allocating data\n"},
        {4040, 1, ": Failed allocating data\n"},
        {4041, 1, ": Failed allocating return buffer\n"},
        {4041, 2, ": Failed allocating data\n"},
    };
    for (const Client &client : k_clients) {
        for (const auto &row : rows) {
            SCOPED_TRACE(client.name + " row " + std::to_string(&row - rows));
            for (const uint32_t bits : {client.allocation_bit, 0xff & ~client.allocation_bit}) {
                const WordSetting word(*client.word, bits);
                const Buffer buffer(row.size, 'a');
                AgentRequest request = request_of(buffer, row.size);
                Pair pair;
                int32_t result = 0;
                const Blocks blocks;
                const std::string printed = captured_stdout([&] {
                    const Fault fault(Call::allocate, ENOMEM, row.nth);
                    result = client.exchange(pair.client(), &request, 56);
                });
                EXPECT_EQ(printed, bits == client.allocation_bit ? client.name + row.expected : "");
                EXPECT_EQ(result, -1);
                EXPECT_EQ(request.status, 1);
                EXPECT_EQ(blocks.held(), 0);
                EXPECT_EQ(pair.peer().received(), "");

                // Nothing was sent, so the connection still is in step.
                pair.peer().reply(reply_header(0) + payload(row.size));
                EXPECT_EQ(captured_stdout([&] {
                              const WordSetting silent(*client.word, 0);
                              result = client.exchange(pair.client(), &request, 56);
                          }),
                          "");
                EXPECT_EQ(result, 0);
                EXPECT_EQ(buffer.text(), payload(row.size));
            }
        }
    }
}

// More than the socket holds, so that writes and reads really go in turns with the peer's.
TEST(exchange, carries_buffers_larger_than_the_socket_holds)
{
    constexpr uint32_t size1 = 3000000;
    constexpr uint32_t size2 = 1000001;
    ruk_test::ScriptedAgent agent(
        [](const ruk_test::Request &request) {
            std::string payload = request.payload();
            for (char &c : payload) {
                c = static_cast<char>(c ^ 0x20);
            }
            return std::optional(ruk_test::reply_to(request, 0, payload));
        },
        ruk_test::k_command_path);
    std::string buffer1 = payload(size1);
    std::string buffer2 = payload(size2, 'N');
    AgentRequest request{};
    request.flags1 = 0x08;
    request.bsize1 = size1;
    request.bsize2 = size2;
    request.ptr1 = buffer1.data();
    request.ptr2 = buffer2.data();
    EXPECT_EQ(kt_rukcmd_socket_api(-1, &request, 56), 0);
    EXPECT_EQ(request.status, 0);
    EXPECT_TRUE(buffer1 == payload(size1, 'a'));
    EXPECT_TRUE(buffer2 == payload(size2, 'n'));
    EXPECT_EQ(dpa_platform_close(), 0);
}

} // namespace
