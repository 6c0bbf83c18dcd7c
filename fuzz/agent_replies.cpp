// An Agent that answers whatever it likes, to every command: the tool comes to an end, asks only
// what makes sense, leaves no descriptor open, and lets the log run again that it stopped.
//
// The peer is one end of a pair of sockets into which all answers are written beforehand, so there
// are no threads; whoever connects anew gets the next connection of the input.
//
// Input: a byte of modes, a byte for the command, then connections.  A connection is a byte of its
// kind, a byte with the number of its answers, and the answers: a byte of the kind, then raw bytes
// or the bytes of a record.
#include <csetjmp>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "ruk/agent.h"
#include "ruk/front_end.h"

using fuzz::require;

namespace
{

constexpr uint8_t k_paged = 0x01;
constexpr uint8_t k_traced = 0x02;
constexpr uint8_t k_buffered = 0x04;

// Kinds of connections.
constexpr uint8_t k_refused = 0x01;
constexpr uint8_t k_gone = 0x02; // the peer has closed; else it has only said its last word

// So many that neither side's bytes ever fill a socket.
constexpr size_t k_most_answers = 100;
constexpr size_t k_most_connections = 16;

constexpr const char *k_lines[] = {
    "show info",       "show all",        "show last",     "show last 3",  "show tail",
    "show debug",      "start",           "start 5",       "stop",         "stop 5",
    "resume",          "clear",           "debug all e w", "debug a none", "debug all -p default",
    "show last 10000", "show all cookie", "show",
};

fuzz::Input input(nullptr, 0);

// The far end of a connection.
struct Peer {
    int fd;
    std::vector<uint8_t> answers;
};
std::vector<Peer> peers; // in order
bool all_is_seen = true; // no connection was refused, and no peer had gone
bool is_held = false;    // the log, by a read-out
jmp_buf tail_ended;
thread_local bool runs_commands = false; // libFuzzer has threads that sleep

void put_record(std::vector<uint8_t> &bytes, uint8_t kind)
{
    constexpr size_t k_sizes[] = {sizeof(LogInfo), sizeof(LogEntry), 8, sizeof(LogModule), 4};
    AgentRequest header{};
    header.status = (kind & 0x80) != 0 ? input.byte() : 0;
    const auto *from = reinterpret_cast<const uint8_t *>(&header);
    bytes.insert(bytes.end(), from, from + sizeof header);
    const size_t size = k_sizes[kind % std::size(k_sizes)];
    bytes.resize(bytes.size() + size);
    if ((kind & 0x40) != 0) { // else zeros, which cost no input
        input.bytes(std::span(bytes).last(size));
    }
}

// All answers of one connection.
std::vector<uint8_t> some_answers()
{
    std::vector<uint8_t> bytes;
    for (size_t count = input.byte() % k_most_answers; count > 0 && !input.empty(); --count) {
        const uint8_t kind = input.byte();
        if ((kind & 0x20) == 0) {
            put_record(bytes, kind);
        } else {
            bytes.resize(bytes.size() + kind % 32);
            input.bytes(std::span(bytes).last(kind % 32));
        }
    }
    return bytes;
}

// Stores the near end of the input's next connection, or refuses.
bool next_connection(int &near)
{
    int pair[2];
    const uint8_t kind = input.byte();
    const bool is_refused =
        input.empty() || (kind & k_refused) != 0 || peers.size() == k_most_connections;
    all_is_seen = all_is_seen && !is_refused && (kind & k_gone) == 0;
    if (is_refused) {
        return false;
    }
    require(socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0);
    const std::vector<uint8_t> answers = some_answers();
    require(write(pair[1], answers.data(), answers.size()) == static_cast<ssize_t>(answers.size()));
    if ((kind & k_gone) != 0) {
        close(pair[1]);
    } else {
        shutdown(pair[1], SHUT_WR);
        peers.push_back({pair[1], answers});
    }
    near = pair[0];
    return true;
}

size_t payload_of(const AgentRequest &request)
{
    switch (request.opcode) {
    case KT_OPC_VERSION:
    case KT_OPC_SET_LOG_MODULE:
        return 4;
    case KT_OPC_SET_LOG:
        return 8;
    case KT_OPC_LOG_INFO:
    case KT_OPC_LOG_MODULE:
    case KT_OPC_FIND_LOG_MODULE:
        return 48;
    case KT_OPC_LOG_ENTRY:
        return 152;
    default:
        abort();
    }
}

// What a request and its answer do to the log.
void note_hold(const AgentRequest &request, std::span<const uint8_t> answer)
{
    require(request.ident >= LOG_SET_START && request.ident <= LOG_SET_RELEASE);
    if (request.ident == LOG_SET_RESUME || request.ident == LOG_SET_RELEASE) {
        is_held = false;
    } else if ((request.ident == LOG_SET_STOP || request.ident == LOG_SET_HOLD) &&
               answer.size() == sizeof request + 8) {
        uint32_t was_on = 0;
        memcpy(&was_on, &answer[sizeof request], sizeof was_on);
        is_held = was_on != 0;
    }
}

// Every request is whole, one that there is, and says its own length.
void check_requests(const Peer &peer)
{
    static uint8_t room[1 << 18];
    const ssize_t count = recv(peer.fd, room, sizeof room, MSG_DONTWAIT);
    const std::span got(room, count > 0 ? static_cast<size_t>(count) : 0);
    for (size_t at = 0; at < got.size();) {
        AgentRequest request;
        require(got.size() - at >= sizeof request);
        memcpy(&request, &got[at], sizeof request);
        const size_t payload = payload_of(request);
        require(request.version == KT_AGENT_VERSION && request.bsize1 == payload);
        require(request.esize1 * request.elements1 == 0 && request.status == 0);
        require((request.flags1 & (AGENT_FLAG_COUNTED | AGENT_FLAG_BUF2)) == 0);
        const size_t length = sizeof request + payload;
        require(length <= got.size() - at);
        if (request.opcode == KT_OPC_SET_LOG) {
            // The answers stand in the order of the requests, each as long as its own.
            const std::span answers(peer.answers);
            const auto rest = answers.subspan(std::min(at, answers.size()));
            note_hold(request, rest.first(std::min(length, rest.size())));
        }
        at += length;
    }
}

int lowest_free_descriptor()
{
    const int fd = dup(0);
    close(fd);
    return fd;
}

bool is_read_out(const std::string &line)
{
    return line.starts_with("show");
}

void run_command(std::string line)
{
    if (setjmp(tail_ended) == 0) {
        ruk_log_run(line.data(), static_cast<int32_t>(line.size()));
    }
}

// As a host in paged mode runs it: again with the cookie, for a few pages.
void run_pages(const std::string &line)
{
    run_command(line);
    for (int page = 0; page < 4 && ruk_rcli_more_output != 0; ++page) {
        ruk_rcli_buffer_ptr = ruk_rcli_buffer;
        run_command(line + " cookie " + std::to_string(ruk_rcli_more_output));
    }
}

} // namespace

extern "C" int __wrap_connect(int fd, const sockaddr *, socklen_t)
{
    int near = -1;
    if (!next_connection(near)) {
        errno = ECONNREFUSED;
        return -1;
    }
    require(dup2(near, fd) == fd);
    close(near);
    return 0;
}

// The pause of show tail, which looks again for ever: here until the input has run out.
extern "C" unsigned __real_sleep(unsigned seconds);

extern "C" unsigned __wrap_sleep(unsigned seconds)
{
    if (!runs_commands) {
        return __real_sleep(seconds);
    }
    if (input.empty()) {
        longjmp(tail_ended, 1);
    }
    // Else a connection that is still good would be asked in vain for ever.
    input.byte();
    return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::silence_stdout();
    runs_commands = true;
    const int first_free = lowest_free_descriptor();
    input = fuzz::Input(data, size);
    const uint8_t modes = input.byte();
    const std::string line = k_lines[input.byte() % std::size(k_lines)];
    all_is_seen = true;
    is_held = false;
    ruk_rcli_dpa_loga_log = 0;
    ruk_rcli_more_output = 0;
    ruk_rcli_fromdpa = (modes & k_paged) != 0 ? 1 : 0;
    ruk_rcli_buffer_ptr = (modes & k_buffered) != 0 ? ruk_rcli_buffer : nullptr;
    kt_debug_print_brel_dpa_api = kt_debug_print_ktdpa_indirect =
        (modes & k_traced) != 0 ? 0xff : 0x87;

    if (kt_dpa_api_init() == 0) {
        run_pages(line);
    }
    if (apimutex != nullptr) {
        kt_dpa_api_exit();
    }
    for (const Peer &peer : peers) {
        check_requests(peer);
        close(peer.fd);
    }
    peers.clear();
    // A read-out lets the log run again that it stopped, over a new connection if it must.  (Not so
    // a paged one of an empty log.)
    require(!is_held || !all_is_seen || !is_read_out(line) || ruk_rcli_fromdpa != 0);
    require(lowest_free_descriptor() == first_free);
    return 0;
}
