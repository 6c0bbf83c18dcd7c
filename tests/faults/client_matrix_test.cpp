// The fault matrix for the two socket clients, in each of their three call forms: status, buffers,
// every line of the trace, descriptors, blocks, and the exchanges that follow.
#include "ruk/agent.h"
#include "ruk/command_service.h"

#include <cstdlib>

#include "tests/dpa/peer.h"
#include "tests/faults/matrix.h"
#include "tests/faults/sabotage.h"
#include "tests/support/capture.h"
#include "tests/support/scripted_agent.h"

namespace
{

using namespace ruk_test;

constexpr uint16_t k_opcode = 300;

// The request's bytes, from the start of which each form makes what it takes.
struct Buffer {
    std::string bytes;
    uint32_t half() const { return static_cast<uint32_t>(bytes.size() / 2); }
    uint32_t quarter() const { return static_cast<uint32_t>(bytes.size() / 4); }
};

struct Client;

// A call form: what it calls and what it prints.
struct Form {
    const char *name;
    const Client *client;
    int32_t (*call)(Buffer &buffer, int32_t ident);
    const char *announcement;
    const char *failure;
};

struct Client {
    const char *path;
    const char *function;        // in front of its messages
    bool announces_total;        // before it sends
    const char *connecting;      // line before connecting
    const char *connect_failure; // beginning of the line after a failed one
    const char *socket_failure;
};

constexpr Client k_agent{
    k_agent_path,
    "kt_dpa_socket_api",
    false,
    "kt_platform_open: Connecting to path (/var/tmp/brelovs_api_socket)\n",
    "kt_platform_open: Failed binding local socket err: ",
    "kt_platform_open: Error opening local socket\n",
};
constexpr Client k_service{
    k_command_path,
    "kt_rukcmd_socket_api",
    true,
    "",
    "dpa_platform_open: Failed connect local socket err: ",
    "dpa_platform_open: Error opening local socket\n",
};

// Both clients' forms are called alike.
template <auto Call> int32_t simple(Buffer &buffer, int32_t ident)
{
    return Call(k_opcode, ident, 0x01, buffer.bytes.data(),
                static_cast<uint32_t>(buffer.bytes.size()));
}
template <auto Call> int32_t one_buffer(Buffer &buffer, int32_t ident)
{
    const uint32_t count = static_cast<uint32_t>(buffer.bytes.size()) - buffer.half();
    return Call(k_opcode, ident, 0x05, buffer.bytes.data(), buffer.half(), &count);
}
template <auto Call> int32_t two_buffers(Buffer &buffer, int32_t ident)
{
    const uint32_t count1 = buffer.half() - buffer.quarter();
    const uint32_t count2 =
        static_cast<uint32_t>(buffer.bytes.size()) - buffer.half() - buffer.quarter();
    return Call(k_opcode, ident, 0x0d, buffer.bytes.data(), buffer.quarter(), &count1,
                buffer.bytes.data() + buffer.half(), buffer.quarter(), &count2);
}

const Form k_forms[] = {
    {"Agent, simple form", &k_agent, simple<kt_dpa_call_indirect_simple>,
     "kt_dpa_call_indirect_simple: Generating ioctl() for opcode 300\n",
     "dpa/userspace/ktdpa_indirect/105: Failed\n"},
    {"Agent, one buffer", &k_agent, one_buffer<kt_dpa_call_indirect1>,
     "kt_dpa_call_indirect1: Generating ioctl() for opcode 300\n",
     "dpa/userspace/ktdpa_indirect/152: Failed: -1, opcode 300\ndi status 1\n"},
    {"Agent, two buffers", &k_agent, two_buffers<kt_dpa_call_indirect2>,
     "kt_dpa_call_indirect2: Generating ioctl() for opcode 300\n",
     "dpa/userspace/ktdpa_indirect/217: Failed, opcode 300\ndi status 1\n"},
    {"command service, simple form", &k_service, simple<kt_rukcmd_call_indirect_simple>, "",
     "dpa/command/ktrukcmd_indirect/294: Failed\n"},
    {"command service, one buffer", &k_service, one_buffer<kt_rukcmd_call_indirect1>, "",
     "dpa/command/ktrukcmd_indirect/339: Failed: -1, opcode 300\ndi status 1\n"},
    {"command service, two buffers", &k_service, two_buffers<kt_rukcmd_call_indirect2>, "",
     "dpa/command/ktrukcmd_indirect/395: Failed, opcode 300\ndi status 1\n"},
};

struct Size {
    const char *name;
    size_t payload;
    Caller caller;
};
const Size k_sizes[] = {
    {"60 bytes", 4, {}},
    {"5056 bytes", 5000, {.reply_fits_stack = false}},
    {"a megabyte", 1 << 20, {.reply_fits_stack = false, .request_fits_socket = false}},
};

// One combination.
class Case
{
public:
    Case(const Form &form, const Size &size, Step step, Fault_kind kind, Fate fate)
        : form_(form), client_(*form.client), size_(size), step_(step), kind_(kind), fate_(fate),
          descriptors_(open_descriptors()),
          agent_(client_.path, {kind == Fault_kind::no_memory ? -1 : 1, step, kind})
    {
    }

    void run()
    {
        open();
        expect_exchange(0);
        if (step_ == Step::connect) {
            expect_exchange(1); // by which the connection is lost
        }
        faulty_exchange();
        following_exchanges();
        close();
        EXPECT_EQ(open_descriptors(), descriptors_);
        EXPECT_EQ(blocks_.held(), 0);
    }

private:
    bool is_agent() const { return &client_ == &k_agent; }

    // A program opens the Agent's connection first; the command service has nothing for that.
    void open() const { ASSERT_EQ(is_agent() ? kt_dpa_api_init() : 0, 0); }

    void close() const
    {
        if (is_agent()) {
            EXPECT_EQ(captured_stdout([] { EXPECT_EQ(kt_dpa_api_exit(), 0); }), "");
        } else {
            EXPECT_EQ(dpa_platform_close(), 0);
        }
    }

    Buffer request() const { return {std::string(size_.payload, 'a')}; }

    // With the trace words as they are; a failure that is not the observed one says nothing but
    // what the simple form of the command service always says.
    void expect_exchange(int32_t status, const std::string &printed = "", int32_t ident = 7) const
    {
        Buffer buffer = request();
        int32_t got = -1;
        const std::string text = captured_stdout([&] { got = form_.call(buffer, ident); });
        EXPECT_EQ(got, status);
        EXPECT_EQ(text, printed + (status == 1 && &form_ == &k_forms[3] ? form_.failure : ""));
        EXPECT_EQ(buffer.bytes == std::string(size_.payload, 'b'), status == 0);
    }

    void faulty_exchange() const
    {
        // What a huge request's transfer says depends on how much the socket takes at a time.
        const bool traced = size_.caller.request_fits_socket;
        const uint32_t trace = traced ? 0x97 : 0x87;
        const WordSetting words[] = {{kt_debug_print_brel_dpa_api, trace},
                                     {kt_debug_print_ktdpa_indirect, trace},
                                     {kt_debug_print_ktrukcmd_indirect, trace}};
        Buffer buffer = request();
        int32_t status = -1;
        std::string printed;
        {
            const int blocks = fate_ == Fate::no_send_block && !size_.caller.reply_fits_stack;
            printed = captured_stdout([&] {
                const Sabotage sabotage(agent_, step_, kind_, {.blocks = blocks});
                status = form_.call(buffer, 7);
                if (is_broken(fate_) && kind_ == Fault_kind::descriptor_limit) {
                    expect_no_descriptor();
                }
            });
        }
        EXPECT_EQ(status, expected_status());
        EXPECT_TRUE(buffer.bytes == expected_bytes());
        if (traced) {
            EXPECT_EQ(printed, expected_output());
        } else {
            EXPECT_EQ(printed, expected_untraced_output());
        }
        if (is_agent()) {
            const bool lost = is_broken(fate_) || step_ == Step::connect;
            EXPECT_EQ(kt_dpa_call_fd == -1, lost);
        }
    }

    // Within the observed output: the connection that was lost can't be replaced.
    void expect_no_descriptor() const
    {
        Buffer buffer = request();
        EXPECT_EQ(form_.call(buffer, 7), 1);
        EXPECT_TRUE(buffer.bytes == request().bytes);
    }

    int32_t expected_status() const
    {
        switch (fate_) {
        case Fate::whole:
        case Fate::whole_then_end:
        case Fate::whole_shifted:
        case Fate::wrong_payload:
            return 0;
        case Fate::wrong_status:
            return 0x5a5a5a5a;
        default:
            return 1;
        }
    }

    std::string expected_bytes() const
    {
        std::string answer(size_.payload, 'b');
        switch (fate_) {
        case Fate::whole:
        case Fate::whole_then_end:
        case Fate::whole_shifted:
            return answer;
        case Fate::wrong_status:
            return std::string(size_.payload, 'Z');
        case Fate::wrong_payload: {
            const size_t right = step_ == Step::header_only  ? 0
                                 : step_ == Step::in_payload ? size_.payload / 2
                                                             : size_.payload - 1;
            return answer.substr(0, right) + std::string(size_.payload - right, 'Z');
        }
        default:
            return request().bytes;
        }
    }

    // The lines before the first byte goes out.
    std::string sending_lines() const
    {
        const size_t total = size_.payload + 56;
        const auto number = [](size_t n) { return "(" + std::to_string(n) + ")"; };
        std::string lines =
            client_.announces_total ? own_line("Sending " + number(total) + " bytes across") : "";
        const size_t last = step_ == Step::send && kind_ == Fault_kind::dribbled ? total - 1 : 0;
        for (size_t sent = 0; sent <= last; ++sent) {
            lines += own_line("Sent " + number(sent) + " bytes, not " + number(total) +
                              ", sending " + number(total - sent) + " more");
        }
        return lines;
    }

    std::string connect_line() const
    {
        switch (kind_) {
        case Fault_kind::descriptor_limit:
            return client_.socket_failure;
        case Fault_kind::descriptor_closed:
            return std::string(client_.connecting) + client_.connect_failure +
                   "9 - Bad file descriptor\n";
        case Fault_kind::descriptor_reused:
            return std::string(client_.connecting) + client_.connect_failure +
                   "88 - Socket operation on non-socket\n";
        default:
            return std::string(client_.connecting) + client_.connect_failure +
                   "111 - Connection refused\n";
        }
    }

    std::string own_line(const std::string &text) const
    {
        return std::string(client_.function) + ": " + text + "\n";
    }

    std::string expected_output() const
    {
        std::string lines = form_.announcement;
        switch (fate_) {
        case Fate::no_connection:
            return lines + connect_line() + form_.failure;
        case Fate::taken_and_lost:
            return lines + client_.connecting + sending_lines() +
                   own_line("EOF writing more data -1") + form_.failure;
        case Fate::not_sent:
            lines += sending_lines() + own_line("EOF writing more data -1") + form_.failure;
            break;
        case Fate::ended:
            lines += sending_lines() + own_line("EOF reading bytes back 0") + form_.failure;
            break;
        case Fate::failed:
            return lines + sending_lines() + own_line("EOF reading bytes back -1") + form_.failure;
        case Fate::no_send_block:
            return lines + own_line("Failed allocating data") + form_.failure;
        case Fate::no_reply_block:
            return lines + own_line("Failed allocating return buffer") + form_.failure;
        default:
            return lines + sending_lines();
        }
        if (kind_ == Fault_kind::descriptor_limit) {
            lines += form_.announcement + std::string(client_.socket_failure) + form_.failure;
        }
        return lines;
    }

    // By default the simple form of the command service reports its failure.
    std::string expected_untraced_output() const
    {
        return &form_ == &k_forms[3] ? form_.failure : "";
    }

    void following_exchanges() const
    {
        agent_.come_back();
        if (fate_ == Fate::whole_then_end) {
            expect_exchange(1);
        }
        if (fate_ == Fate::whole_shifted) {
            expect_shifted_exchange();
            close();
            open();
        }
        expect_exchange(0);
        expect_exchange(0);
        expect_connections();
    }

    // Five letters and the first 51 bytes of the header come first, so that the status is what
    // stands at byte 7 of the reply: the last byte of the reserved ones, which is 0, and three of
    // the ident, which are 4, 3 and 2.
    void expect_shifted_exchange() const
    {
        Buffer buffer = request();
        EXPECT_EQ(form_.call(buffer, 0x01020304), 0x02030400);
    }

    // One from the start on, and one for each time that it was lost.
    void expect_connections() const
    {
        switch (fate_) {
        case Fate::taken_and_lost: // which nobody accepted
        case Fate::no_connection:
        case Fate::not_sent:
        case Fate::ended:
        case Fate::failed:
        case Fate::whole_then_end:
        case Fate::whole_shifted:
            EXPECT_EQ(agent_.connections(), 2);
            break;
        default:
            EXPECT_EQ(agent_.connections(), 1);
        }
    }

    const Form &form_;
    const Client &client_;
    const Size &size_;
    Step step_;
    Fault_kind kind_;
    Fate fate_;
    Blocks blocks_;
    int descriptors_;
    FaultyAgent agent_;
};

TEST(fault_matrix, both_socket_clients_in_every_call_form)
{
    if (!is_free(k_agent_path) || !is_free(k_command_path)) {
        GTEST_SKIP() << "somebody listens on the sockets";
    }
    Matrix matrix("socket clients");
    for (const Form &form : k_forms) {
        for (const Size &size : k_sizes) {
            matrix.run(std::string(form.name) + ", " + size.name, size.caller,
                       [&](Step step, Fault_kind kind, Fate fate) {
                           Case(form, size, step, kind, fate).run();
                       });
        }
    }
    EXPECT_EQ(matrix.combinations(), 1002);
}

} // namespace
