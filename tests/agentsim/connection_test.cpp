// Framing: requests in any pieces, lengths that wrap or are absurd.
#include "agentsim/connection.h"

#include <algorithm>

#include "tests/agentsim/records.h"

using agentsim::Connection;
using agentsim::EventLog;
using agentsim::LogService;
using agentsim::ModuleTable;
using namespace ruk_test;

namespace
{

class ConnectionTest : public testing::Test
{
protected:
    LogService service_{EventLog(16, 0), ModuleTable::standard(), {}};
    Connection connection_{service_};

    // Hands over bytes in pieces of at most size, reads every answer in pieces of at most size,
    // and returns all that was answered.  Stops, with open_ false, where the connection ends.
    std::string exchange(std::string_view bytes, size_t size)
    {
        std::string answers;
        while (open_ && !bytes.empty()) {
            const auto room = connection_.room();
            const size_t count = std::min({size, room.size(), bytes.size()});
            EXPECT_GT(count, 0U);
            memcpy(room.data(), bytes.data(), count);
            bytes.remove_prefix(count);
            open_ = connection_.received(count);
            while (open_ && !connection_.answer().empty()) {
                EXPECT_TRUE(connection_.room().empty());
                const auto answer =
                    connection_.answer().first(std::min(size, connection_.answer().size()));
                answers.append(reinterpret_cast<const char *>(answer.data()), answer.size());
                open_ = connection_.sent(answer.size());
            }
        }
        return answers;
    }

    bool open_ = true;
};

std::string with_status(AgentRequest request, int32_t status)
{
    request.status = status;
    return bytes_of(request);
}

} // namespace

TEST_F(ConnectionTest, answers_with_the_header_and_the_same_length_in_any_pieces)
{
    const AgentRequest request = request_of(56, 0, 4);
    for (const size_t size : {1U, 2U, 55U, 56U, 57U, 60U, 4096U}) {
        SCOPED_TRACE(size);
        EXPECT_EQ(exchange(bytes_of(request) + "####", size),
                  with_status(request, 0) + "\x7F" + std::string("\0\0\x01", 3));
    }
}

TEST_F(ConnectionTest, answers_requests_that_come_together)
{
    const AgentRequest known = request_of(63, 0, 4);
    const AgentRequest unknown = request_of(9999, 0, 1);
    std::string sent;
    std::string expected;
    for (int i = 0; i < 200; ++i) {
        sent += bytes_of(known) + "abcd" + bytes_of(unknown) + "x";
        expected += with_status(known, 0) + "abcd" + with_status(unknown, 4) + "x";
    }
    for (const size_t size : {1U, 7U, 117U, 4096U}) {
        SCOPED_TRACE(size);
        EXPECT_EQ(exchange(sent, size), expected);
    }
}

TEST_F(ConnectionTest, counts_lengths_from_the_header)
{
    struct {
        uint8_t flags;
        uint32_t bsize1, elements1, esize1;
        uint32_t bsize2, elements2, esize2;
        size_t length; // of both buffers
        int32_t status;
    } const rows[] = {
        {0x01, 0, 1, 4, 0, 0, 0, 4, 0}, // one element
        {0x03, 2, 2, 1, 0, 0, 0, 4, 0},
        {0x04, 8, 10, 1, 0, 0, 0, 18, 5},
        {0x03, 4, 0, 0, 100, 0, 0, 4, 0}, // buffer 2 takes no part
        {0x0B, 4, 0, 0, 100, 0, 0, 104, 0},
        {0x0C, 4, 0, 0, 5, 10, 10, 109, 0},
        {0x01, 0, 0, 0, 0, 0, 0, 0, 5},
        {0x08, 0, 0, 0, 0, 0, 0, 0, 5},
        {0x08, 0, 0, 0, 7, 0, 0, 7, 5},
        {0x01, 4, 0x10000, 0x10000, 0, 0, 0, 4, 0}, // wraps to 0
        {0x01, 8, 0x3FFFFFFF, 4, 0, 0, 0, 4, 0},    // wraps to -4
        {0x01, 4040, 0, 0, 0, 0, 0, 4040, 5},
        {0x01, 4041, 0, 0, 0, 0, 0, 4041, 5}, // a longer buffer
        {0x01, 1048520, 0, 0, 0, 0, 0, 1048520, 5},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        AgentRequest request = request_of(63, 0, row.bsize1);
        request.flags1 = row.flags;
        request.elements1 = row.elements1;
        request.esize1 = row.esize1;
        request.bsize2 = row.bsize2;
        request.elements2 = row.elements2;
        request.esize2 = row.esize2;
        std::string payload(row.length, '#');
        for (size_t i = 0; i < payload.size(); ++i) {
            payload[i] = static_cast<char>(i * 31);
        }
        for (const size_t size : {100U, 4096U, 2000000U}) {
            EXPECT_TRUE(exchange(bytes_of(request) + payload, size) ==
                        with_status(request, row.status) + payload);
            ASSERT_TRUE(open_);
        }
    }
}

TEST_F(ConnectionTest, a_long_request_leaves_nothing_behind)
{
    const AgentRequest request = request_of(1, 0, 100'000);
    const std::string payload(100'000, 'p');
    EXPECT_EQ(connection_.room().size(), 4096U);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(exchange(bytes_of(request) + payload, 1000) ==
                    with_status(request, 4) + payload);
        EXPECT_EQ(connection_.room().size(), 4096U);
    }
}

TEST_F(ConnectionTest, ends_at_absurd_lengths_with_the_header)
{
    struct {
        uint8_t flags;
        uint32_t bsize1, elements1, esize1;
        uint32_t bsize2;
    } const rows[] = {
        {0x01, 1048521, 0, 0, 0},      {0x01, 0xFFFFFFFF, 0, 0, 0},
        {0x01, 0xFFFFFFC8, 0, 0, 0}, // with the header 0 in 32 bits
        {0x01, 0, 0x10000, 0xFFFF, 0}, {0x09, 0, 0, 0, 1048521},
        {0x09, 0xFFFFFFFF, 0, 0, 5}, // together 4 in 32 bits
        {0x09, 4, 0, 0, 0xFFFFFFFF},   {0x09, 524260, 0, 0, 524261},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        Connection connection(service_);
        AgentRequest request = request_of(63, 0, row.bsize1);
        request.flags1 = row.flags;
        request.elements1 = row.elements1;
        request.esize1 = row.esize1;
        request.bsize2 = row.bsize2;
        request.elements2 = 0;
        memcpy(connection.room().data(), &request, sizeof request);
        EXPECT_TRUE(connection.received(55));
        EXPECT_FALSE(connection.received(1));
        EXPECT_TRUE(connection.answer().empty());
    }
}

TEST_F(ConnectionTest, ends_at_an_absurd_length_behind_an_answer)
{
    AgentRequest absurd = request_of(63, 0, 0xFFFFFFFF);
    const AgentRequest request = request_of(63, 0, 4);
    EXPECT_EQ(exchange(bytes_of(request) + "abcd" + bytes_of(absurd), 4096),
              with_status(request, 0) + "abcd");
    EXPECT_FALSE(open_);
}

TEST_F(ConnectionTest, releases_its_holds_at_the_end)
{
    const uint64_t zero = 0;
    {
        Connection holder(service_);
        const AgentRequest hold = request_of(236, 5, 8);
        memcpy(holder.room().data(), &hold, sizeof hold);
        memcpy(holder.room().data() + sizeof hold, &zero, sizeof zero);
        ASSERT_TRUE(holder.received(sizeof hold + sizeof zero));
        service_.log(event_of(0, 8, "held\n"));
    }
    service_.log(event_of(0, 8, "free\n"));
    const std::string answer =
        exchange(bytes_of(request_of(233, 0, 48)) + std::string(48, 0), 4096);
    expect_info(record_of<LogInfo>(answer, 56), {1, 1, 1, 0, 0, 1, k_none});
}
