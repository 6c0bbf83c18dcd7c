// Exchanges of both socket clients, and the calls built on them, with requests of any lengths,
// wrapping ones too, and answers that are whole, cut or too long: on the wire and in the caller's
// buffers is what a plain reading of the record says, and nothing outside them is touched.
//
// Input: a byte of modes, then exchanges: the record's fields, the answer's kind and its bytes.
#include <cstring>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "ruk/agent.h"
#include "ruk/command_service.h"

using fuzz::require;
using Bytes = std::vector<uint8_t>;

namespace
{

// So long that a socket takes it without a reader.
constexpr uint32_t k_most_total = 60000;

int peer = -1;   // the far end
Bytes in_flight; // what it has sent and the client has not read
bool has_ended = false;

// A length, with those at the edges more often than others.
uint32_t some_length(fuzz::Input &input)
{
    constexpr uint32_t k_edges[] = {0,          1,          4,          56,
                                    57,         4039,       4040,       4041,
                                    0xffffffc7, 0xffffffc8, 0xffffffc9, 0xffffffd8,
                                    0xffffffff, 0x80000000, 0xffffffd5, 0xffffffd7};
    const uint8_t kind = input.byte();
    return kind < std::size(k_edges) ? k_edges[kind] : input.word() % 5000;
}

// The lengths of a record as its comment gives them.
struct Lengths {
    uint32_t header;
    uint32_t buffer1;
    uint32_t buffer2;
    uint32_t total;
};

Lengths lengths_of(const AgentRequest &request, uint32_t header)
{
    const uint32_t length1 = request.esize1 * request.elements1 + request.bsize1;
    const uint32_t length2 = (request.flags1 & AGENT_FLAG_BUF2) != 0
                                 ? request.esize2 * request.elements2 + request.bsize2
                                 : 0;
    return {header, length1, length2, header + length1 + length2};
}

// A caller's buffer, no larger than an exchange of so many bytes can reach.
struct Buffer {
    Buffer(fuzz::Input &input, uint32_t length, uint32_t total)
        : size(std::min(length, total)), bytes(input.byte() == 0 ? nullptr : new uint8_t[size])
    {
        for (uint32_t i = 0; bytes != nullptr && i < size; ++i) {
            bytes[i] = static_cast<uint8_t>(i * 7 + 1);
        }
    }

    Bytes contents() const
    {
        return bytes == nullptr ? Bytes() : Bytes(bytes.get(), bytes.get() + size);
    }

    uint32_t size;
    std::unique_ptr<uint8_t[]> bytes;
};

void append(Bytes &wire, const void *from, size_t available, uint32_t length)
{
    const size_t start = wire.size();
    const size_t room = std::min<size_t>(length, k_most_total); // more can't be in the total
    wire.resize(start + room);
    if (std::min(available, room) > 0) {
        memcpy(wire.data() + start, from, std::min(available, room));
    }
}

// What the client must send.
Bytes request_on_wire(const AgentRequest &request, const Lengths &lengths, const Buffer &buffer1,
                      const Buffer &buffer2)
{
    Bytes wire;
    append(wire, &request, sizeof request, lengths.header);
    const Bytes contents1 = buffer1.contents();
    append(wire, contents1.data(), contents1.size(), lengths.buffer1);
    const Bytes contents2 = buffer2.contents();
    append(wire, contents2.data(), contents2.size(), lengths.buffer2);
    wire.resize(lengths.total);
    return wire;
}

// What must stand in a buffer after its part of the payload was copied into it.
Bytes after_copy(const Buffer &buffer, const Bytes &payload, size_t from, uint32_t length)
{
    Bytes contents = buffer.contents();
    for (size_t i = 0; i < contents.size() && i < length && from + i < payload.size(); ++i) {
        contents[i] = payload[from + i];
    }
    return contents;
}

void answer(fuzz::Input &input, uint32_t total)
{
    if (has_ended) {
        return;
    }
    const uint8_t kind = input.byte();
    size_t length = total;
    if ((kind & 3) == 1) {
        length = std::min<size_t>(length, input.word()); // cut, and that was all
        has_ended = true;
    } else if ((kind & 3) == 2) {
        length += input.byte(); // the rest answers the next request
    }
    Bytes bytes(length);
    input.bytes(bytes);
    require(write(peer, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    if (has_ended) {
        shutdown(peer, SHUT_WR);
    }
    in_flight.insert(in_flight.end(), bytes.begin(), bytes.end());
}

struct Client {
    uint16_t version;
    int32_t (*open)();
    int32_t (*exchange)(int32_t fd, AgentRequest *request, uint32_t header_length);
    int32_t (*simple)(uint16_t, int32_t, uint8_t, void *, uint32_t);
    int32_t (*indirect1)(uint16_t, int32_t, uint8_t, void *, uint32_t, const uint32_t *);
    int32_t (*indirect2)(uint16_t, int32_t, uint8_t, void *, uint32_t, const uint32_t *, void *,
                         uint32_t, const uint32_t *);
};
constexpr Client k_clients[] = {
    {348, kt_platform_open, kt_dpa_socket_api, kt_dpa_call_indirect_simple, kt_dpa_call_indirect1,
     kt_dpa_call_indirect2},
    {2, dpa_platform_open, kt_rukcmd_socket_api, kt_rukcmd_call_indirect_simple,
     kt_rukcmd_call_indirect1, kt_rukcmd_call_indirect2},
};

enum class Form { record, simple, indirect1, indirect2 };

// Leaves of a record what the form puts into one.
AgentRequest as_filled_by(Form form, const Client &client, AgentRequest request)
{
    if (form == Form::record) {
        return request;
    }
    const bool is_counted = form != Form::simple && (request.flags1 & AGENT_FLAG_COUNTED) != 0;
    const bool has_second = form == Form::indirect2;
    request.version = client.version;
    request.esize1 = is_counted ? 1 : 0;
    request.elements1 = is_counted ? request.elements1 : 0;
    request.bsize2 = has_second ? request.bsize2 : 0;
    request.esize2 = is_counted && has_second ? 1 : 0;
    request.elements2 = is_counted && has_second ? request.elements2 : 0;
    return request;
}

// Makes the call.  A form gives back the status alone.
int32_t call(Form form, const Client &client, int32_t fd, AgentRequest &request, uint32_t header)
{
    const AgentRequest &r = request;
    switch (form) {
    case Form::record:
        return client.exchange(fd, &request, header);
    case Form::simple:
        request.status = client.simple(r.opcode, r.ident, r.flags1, r.ptr1, r.bsize1);
        break;
    case Form::indirect1:
        request.status =
            client.indirect1(r.opcode, r.ident, r.flags1, r.ptr1, r.bsize1, &r.elements1);
        break;
    case Form::indirect2:
        request.status = client.indirect2(r.opcode, r.ident, r.flags1, r.ptr1, r.bsize1,
                                          &r.elements1, r.ptr2, r.bsize2, &r.elements2);
        break;
    }
    return 0;
}

AgentRequest some_request(fuzz::Input &input)
{
    AgentRequest request{};
    request.opcode = input.word();
    request.flags1 = input.byte();
    request.bsize1 = some_length(input);
    request.bsize2 = some_length(input);
    request.elements1 = some_length(input);
    request.elements2 = some_length(input);
    request.esize1 = input.byte() % 4;
    request.esize2 = input.byte() % 4;
    return request;
}

void exchange(fuzz::Input &input, Form form, const Client &client, int32_t &fd)
{
    AgentRequest request = as_filled_by(form, client, some_request(input));
    const uint8_t odd_header = input.byte();
    const bool is_odd = form == Form::record && odd_header > 250;
    const uint32_t header = is_odd ? input.byte() : uint32_t{sizeof request};
    const Lengths lengths = lengths_of(request, header);
    if (lengths.total > k_most_total) {
        return;
    }
    const Buffer buffer1(input, lengths.buffer1, lengths.total);
    const Buffer buffer2(input, lengths.buffer2, lengths.total);
    request.ptr1 = buffer1.bytes.get();
    request.ptr2 = form == Form::record || form == Form::indirect2 ? buffer2.bytes.get() : nullptr;

    if (fd < 0) {
        fd = client.open();
        require(fd >= 0);
    }
    answer(input, lengths.total);
    const Bytes sent = request_on_wire(request, lengths, buffer1, buffer2);
    const bool succeeds =
        in_flight.size() >= lengths.total && lengths.total >= offsetof(AgentRequest, bsize1);
    AgentRequest expected = request;
    expected.status = AGENT_STATUS_TRANSPORT_FAILED;
    Bytes expected1 = buffer1.contents();
    Bytes expected2 = buffer2.contents();
    if (succeeds) {
        const Bytes reply(in_flight.begin(), in_flight.begin() + lengths.total);
        memcpy(&expected.status, &reply[offsetof(AgentRequest, status)], sizeof expected.status);
        expected1 = after_copy(buffer1, reply, sizeof request, lengths.buffer1);
        expected2 =
            after_copy(buffer2, reply, sizeof request + size_t{lengths.buffer1}, lengths.buffer2);
    }

    const int32_t result = call(form, client, fd, request, header);
    require(form != Form::record || result == (succeeds ? 0 : -1));
    require(memcmp(&request, &expected, sizeof request) == 0);
    require(buffer1.contents() == expected1 && buffer2.contents() == expected2);
    Bytes got(lengths.total + 1);
    const ssize_t count = recv(peer, got.data(), got.size(), MSG_DONTWAIT);
    got.resize(count > 0 ? static_cast<size_t>(count) : 0);
    require(got == sent);
    if (succeeds) {
        in_flight.erase(in_flight.begin(), in_flight.begin() + lengths.total);
    } else {
        close(peer);
        peer = -1;
        fd = -1;
    }
}

} // namespace

extern "C" int __wrap_connect(int fd, const sockaddr *, socklen_t)
{
    int pair[2];
    require(socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0 && dup2(pair[0], fd) == fd);
    close(pair[0]);
    peer = pair[1];
    in_flight.clear();
    has_ended = false;
    return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::silence_stdout();
    fuzz::Input input(data, size);
    const uint8_t modes = input.byte();
    kt_debug_print_brel_dpa_api = kt_debug_print_ktrukcmd_indirect = (modes & 2) != 0 ? 0xff : 0x87;
    const int first_free = dup(0);
    close(first_free);

    int32_t fd = -1;
    for (int i = 0; i < 8 && !input.empty(); ++i) {
        exchange(input, Form{modes >> 2 & 3}, k_clients[modes & 1], fd);
    }

    dpa_platform_close();
    if (apimutex != nullptr) {
        kt_dpa_api_exit();
    }
    if (peer >= 0) {
        close(peer);
        peer = -1;
    }
    const int free_again = dup(0);
    close(free_again);
    require(free_again == first_free);
    return 0;
}
