// Random requests in random pieces into two connections of the stand-in Agent: whatever arrives,
// each answer is its request with another status and a payload of the same length.
#include "fuzz/target.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "agentsim/connection.h"
#include "fuzz/input.h"

using agentsim::Connection;
using agentsim::EventLog;
using agentsim::LogService;
using agentsim::ModuleTable;
using fuzz::Input;
using fuzz::require;

namespace
{

// A client of one connection, which remembers what it sent and checks what it gets back.
class FuzzClient
{
public:
    explicit FuzzClient(LogService &service) : connection_(std::in_place, service) {}

    // Sends bytes in pieces of at most piece, reading each answer in such pieces too.
    void send(std::span<const uint8_t> bytes, size_t piece)
    {
        while (connection_ && !bytes.empty()) {
            const auto room = connection_->room();
            require(!room.empty());
            const size_t count = std::min({piece, room.size(), bytes.size()});
            memcpy(room.data(), bytes.data(), count);
            sent_.insert(sent_.end(), bytes.begin(), bytes.begin() + static_cast<long>(count));
            bytes = bytes.subspan(count);
            go_on(connection_->received(count));
            read_answers(piece);
        }
    }

private:
    void read_answers(size_t piece)
    {
        while (connection_ && !connection_->answer().empty()) {
            require(connection_->room().empty());
            const auto answer = connection_->answer();
            const size_t count = std::min(piece, answer.size());
            const auto *from = reinterpret_cast<const uint8_t *>(answer.data());
            got_.insert(got_.end(), from, from + count);
            if (count == answer.size()) {
                check_answer();
            }
            go_on(connection_->sent(count));
        }
    }

    // The whole answer must be the start of what was sent, status and payload aside.
    void check_answer()
    {
        AgentRequest request;
        AgentRequest answer;
        require(got_.size() >= sizeof answer && sent_.size() >= got_.size());
        memcpy(&request, sent_.data(), sizeof request);
        memcpy(&answer, got_.data(), sizeof answer);
        request.status = answer.status;
        require(memcmp(&request, &answer, sizeof answer) == 0);
        const uint32_t length1 = request.esize1 * request.elements1 + request.bsize1;
        const uint32_t length2 = (request.flags1 & AGENT_FLAG_BUF2) != 0
                                     ? request.esize2 * request.elements2 + request.bsize2
                                     : 0;
        require(got_.size() == sizeof answer + length1 + length2);
        if (answer.status != 0) {
            require(memcmp(sent_.data() + sizeof answer, got_.data() + sizeof answer,
                           got_.size() - sizeof answer) == 0);
        }
        sent_.erase(sent_.begin(), sent_.begin() + static_cast<long>(got_.size()));
        got_.clear();
    }

    void go_on(bool open)
    {
        if (!open) {
            connection_.reset();
        }
    }

    std::optional<Connection> connection_;
    std::vector<uint8_t> sent_; // and not answered yet
    std::vector<uint8_t> got_;  // of the present answer
};

// Raw bytes of the input.
std::vector<uint8_t> raw_bytes(Input &input)
{
    std::vector<uint8_t> bytes(input.byte() * size_t{4});
    input.bytes(bytes);
    return bytes;
}

// A request that makes sense, with a payload from the input.
std::vector<uint8_t> whole_request(Input &input)
{
    struct Kind {
        uint16_t opcode;
        uint32_t size;
    };
    constexpr Kind k_kinds[] = {
        {56, 4}, {63, 4}, {233, 48}, {234, 152}, {236, 8}, {311, 48}, {312, 48}, {313, 4},
    };
    const Kind &kind = k_kinds[input.byte() % std::size(k_kinds)];
    AgentRequest request{};
    request.opcode = kind.opcode;
    request.ident = input.byte();
    request.bsize1 = kind.size;
    std::vector<uint8_t> bytes(sizeof request + kind.size);
    memcpy(bytes.data(), &request, sizeof request);
    input.bytes(std::span(bytes).subspan(sizeof request));
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Input input(data, size);
    LogService service(EventLog(8, 0), ModuleTable::standard(), {});
    FuzzClient clients[] = {FuzzClient(service), FuzzClient(service)};
    while (!input.empty()) {
        const uint8_t action = input.byte();
        FuzzClient &client = clients[action & 1];
        const size_t piece = size_t{input.byte()} * 17 + 1;
        if ((action & 2) != 0) {
            client.send(raw_bytes(input), piece);
        } else {
            client.send(whole_request(input), piece);
        }
        LogEntry event{};
        event.module = action / 4 % 16;
        event.level = 0x01;
        service.log(event);
    }
    return 0;
}
