// The requests of the log service, one by one.
#include "agentsim/log_service.h"

#include "tests/agentsim/records.h"

using agentsim::Client;
using agentsim::EventLog;
using agentsim::Identity;
using agentsim::LogService;
using agentsim::ModuleTable;
using namespace ruk_test;

namespace
{

LogService service_of(uint32_t capacity = 16, uint64_t first = 0, Identity identity = {})
{
    return {EventLog(capacity, first), ModuleTable::standard(), identity};
}

// Sends payload and takes the answer's payload back into it.
template <typename Record>
int32_t call(LogService &service, Client &client, uint16_t opcode, int32_t ident, Record &payload)
{
    const AgentRequest request = request_of(opcode, ident, sizeof payload);
    return service.answer(client, request, std::as_writable_bytes(std::span(&payload, 1)));
}

LogInfo info_of(LogService &service)
{
    Client client;
    LogInfo info{};
    EXPECT_EQ(call(service, client, 233, 0, info), 0);
    return info;
}

// A set-log request; returns the value as it came back.
uint64_t set_log(LogService &service, Client &client, int32_t operation, uint64_t value)
{
    EXPECT_EQ(call(service, client, 236, operation, value), 0);
    return value;
}

void log(LogService &service, int count)
{
    for (int i = 0; i < count; ++i) {
        service.log(event_of(7, 0x08, "event\n"));
    }
}

} // namespace

TEST(LogService, tells_the_version_by_status_alone)
{
    for (const bool mismatch : {false, true}) {
        LogService service = service_of(4, 0, {.version_mismatch = mismatch});
        Client client;
        uint32_t word = 0x12345678;
        EXPECT_EQ(call(service, client, 63, 0, word), mismatch ? 6 : 0);
        EXPECT_EQ(word, 0x12345678U);
    }
}

TEST(LogService, tells_the_management_address_in_text_order)
{
    LogService service = service_of(4, 0, {.management_ip = {192, 0, 2, 7}});
    Client client;
    std::array<uint8_t, 4> address{};
    EXPECT_EQ(call(service, client, 56, 0, address), 0);
    EXPECT_EQ(address, (std::array<uint8_t, 4>{192, 0, 2, 7}));
}

TEST(LogService, refuses_unknown_opcodes_and_leaves_the_payload)
{
    LogService service = service_of();
    Client client;
    for (const uint16_t opcode :
         std::initializer_list<uint16_t>{0, 1, 62, 64, 232, 235, 237, 310, 314, 65535}) {
        SCOPED_TRACE(opcode);
        uint64_t payload = 0xABABABABABABABAB;
        EXPECT_EQ(call(service, client, opcode, 0, payload), 4);
        EXPECT_EQ(payload, 0xABABABABABABABABU);
    }
}

TEST(LogService, refuses_payloads_of_another_size)
{
    const std::pair<uint16_t, size_t> rows[] = {
        {56, 4}, {63, 4}, {233, 48}, {234, 152}, {236, 8}, {311, 48}, {312, 48}, {313, 4},
    };
    LogService service = service_of();
    log(service, 1);
    Client client;
    for (const auto &[opcode, size] : rows) {
        for (const size_t wrong : {size_t{0}, size - 1, size + 1, size_t{1000}}) {
            SCOPED_TRACE(opcode);
            SCOPED_TRACE(wrong);
            std::vector<std::byte> payload(wrong, std::byte{0xAB});
            const AgentRequest request = request_of(opcode, 1, 0);
            EXPECT_EQ(service.answer(client, request, payload), 5);
            EXPECT_EQ(payload, std::vector<std::byte>(wrong, std::byte{0xAB}));
        }
    }
}

TEST(LogService, reads_entries_by_the_cursor_in_the_record)
{
    LogService service = service_of(2, 40);
    log(service, 3); // held: 41, 42
    Client client;
    LogEntry entry{};
    entry.entry = k_none;
    EXPECT_EQ(call(service, client, 234, 0, entry), 0);
    EXPECT_EQ(entry.entry, 41U);
    EXPECT_STREQ(entry.message, "event\n");
    EXPECT_EQ(call(service, client, 234, 0, entry), 0);
    EXPECT_EQ(entry.entry, 42U);
    const std::string last = bytes_of(entry);
    EXPECT_EQ(call(service, client, 234, 0, entry), 3);
    EXPECT_EQ(bytes_of(entry), last);
}

TEST(LogService, reads_modules_by_the_cursor_in_the_record)
{
    LogService service = service_of();
    Client client;
    LogModule module{};
    module.index = 0xFFFFFFFF;
    EXPECT_EQ(call(service, client, 311, 0, module), 0);
    EXPECT_EQ(module.index, 0U);
    EXPECT_STREQ(module.name, "kern");
    module.index = 11;
    EXPECT_EQ(call(service, client, 311, 0, module), 0);
    EXPECT_EQ(module.index, 12U);
    EXPECT_STREQ(module.name, "timer");
    EXPECT_EQ(module.available, 0x87U);
    const std::string last = bytes_of(module);
    EXPECT_EQ(call(service, client, 311, 0, module), 3);
    EXPECT_EQ(bytes_of(module), last);
}

TEST(LogService, finds_modules_by_exact_name_and_all_in_any_case)
{
    struct {
        const char *name;
        int32_t status;
        uint32_t index;
        uint32_t available;
        uint32_t printing;
        const char *name_back;
    } const rows[] = {
        {"kern", 0, 0, 0xFF, 0x9F, "kern"},
        {"mirror", 0, 11, 0x5F, 0x1F, "mirror"},
        {"all", 0, 0xFFFFFFFF, 0xFF, 0x9F, "all"},
        {"ALL", 0, 0xFFFFFFFF, 0xFF, 0x9F, "all"},
        {"Kern", 3, 77, 77, 77, "Kern"},
        {"alls", 3, 77, 77, 77, "alls"},
        {"", 3, 77, 77, 77, ""},
    };
    LogService service = service_of();
    Client client;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        LogModule module{77, 77, 77, 77, {}};
        strcpy(module.name, row.name);
        EXPECT_EQ(call(service, client, 312, 0, module), row.status);
        EXPECT_EQ(module.index, row.index);
        EXPECT_EQ(module.available, row.available);
        EXPECT_EQ(module.printing, row.printing);
        EXPECT_STREQ(module.name, row.name_back);
    }
}

TEST(LogService, a_name_without_a_terminator_is_unknown)
{
    LogService service = service_of();
    Client client;
    LogModule module;
    memset(&module, 'k', sizeof module);
    const std::string sent = bytes_of(module);
    EXPECT_EQ(call(service, client, 312, 0, module), 3);
    EXPECT_EQ(bytes_of(module), sent);
}

TEST(LogService, sets_what_a_module_prints)
{
    LogService service = service_of();
    Client client;
    uint32_t mask = 0xFFFFFFFF;
    EXPECT_EQ(call(service, client, 313, 11, mask), 0);
    EXPECT_EQ(mask, 0xFFFFFFFF);
    LogModule module{};
    module.index = 10;
    EXPECT_EQ(call(service, client, 311, 0, module), 0);
    EXPECT_EQ(module.printing, 0x5FU);
    EXPECT_EQ(module.default_printing, 0x1FU);

    EXPECT_EQ(call(service, client, 313, 13, mask), 3);
    EXPECT_EQ(call(service, client, 313, -1, mask), 3);
}

TEST(LogService, skips_what_a_module_does_not_print)
{
    LogService service = service_of();
    Client client;
    service.log(event_of(7, 0x40, "not printed\n"));
    service.log(event_of(500, 0x01, "no such module\n"));
    service.log(event_of(7, 0x01, "printed\n"));
    service.lose(3);
    expect_info(info_of(service), {1, 1, 1, 0, 3, 2, k_none});
    uint32_t mask = 0x40;
    EXPECT_EQ(call(service, client, 313, 7, mask), 0);
    service.log(event_of(7, 0x40, "printed\n"));
    service.log(event_of(7, 0x01, "not printed\n"));
    expect_info(info_of(service), {2, 1, 2, 0, 3, 3, k_none});
}

TEST(LogService, start_resume_clear_and_release_give_the_value_back)
{
    LogService service = service_of();
    Client client;
    EXPECT_EQ(set_log(service, client, 1, 5), 5U);
    expect_info(info_of(service), {0, 1, 0, 0, 0, 0, 4});
    log(service, 2);
    EXPECT_EQ(set_log(service, client, 4, 9), 9U);
    expect_info(info_of(service), {0, 1, 2, 0, 0, 0, 4});
    EXPECT_EQ(set_log(service, client, 6, 9), 9U);
    EXPECT_EQ(set_log(service, client, 3, 9), 9U);
    expect_info(info_of(service), {0, 1, 2, 0, 0, 0, 4});
}

TEST(LogService, stop_tells_whether_logging_was_on)
{
    LogService service = service_of();
    Client client;
    EXPECT_EQ(set_log(service, client, 2, 10), 1U);
    expect_info(info_of(service), {0, 1, 0, 0, 0, 0, 9});
    EXPECT_EQ(set_log(service, client, 2, 0), 1U);
    expect_info(info_of(service), {0, 0, 0, 0, 0, 0, 9});
    EXPECT_EQ(set_log(service, client, 2, 0), 0U);
    EXPECT_EQ(set_log(service, client, 2, 0x100000000), 0U);
    expect_info(info_of(service), {0, 0, 0, 0, 0, 0, 0xFFFFFFFF});
    EXPECT_EQ(set_log(service, client, 3, 0), 0U);
    expect_info(info_of(service), {0, 1, 0, 0, 0, 0, 0xFFFFFFFF});
}

TEST(LogService, refuses_unknown_operations)
{
    LogService service = service_of();
    Client client;
    for (const int32_t operation : {0, 7, -1, 256}) {
        SCOPED_TRACE(operation);
        uint64_t value = 0;
        EXPECT_EQ(call(service, client, 236, operation, value), 7);
        EXPECT_EQ(value, 0U);
    }
    expect_info(info_of(service), {0, 1, 0, 0, 0, 0, k_none});
}

TEST(LogService, a_hold_skips_until_released)
{
    LogService service = service_of();
    Client client;
    EXPECT_EQ(set_log(service, client, 5, 0), 1U);
    log(service, 1);
    expect_info(info_of(service), {0, 1, 0, 0, 0, 1, k_none});
    EXPECT_EQ(set_log(service, client, 5, 0), 1U);
    set_log(service, client, 6, 0);
    log(service, 1);
    expect_info(info_of(service), {0, 1, 0, 0, 0, 2, k_none});
    set_log(service, client, 6, 0);
    log(service, 1);
    expect_info(info_of(service), {1, 1, 1, 0, 0, 2, k_none});
}

TEST(LogService, a_hold_while_off_is_none)
{
    LogService service = service_of();
    Client client;
    set_log(service, client, 2, 0);
    EXPECT_EQ(set_log(service, client, 5, 0), 0U);
    set_log(service, client, 3, 0);
    log(service, 1);
    expect_info(info_of(service), {1, 1, 1, 0, 0, 0, k_none});
}

TEST(LogService, nobody_releases_the_hold_of_another)
{
    LogService service = service_of();
    Client holder;
    Client other;
    set_log(service, holder, 5, 0);
    set_log(service, other, 6, 0);
    log(service, 1);
    expect_info(info_of(service), {0, 1, 0, 0, 0, 1, k_none});
    set_log(service, holder, 6, 0);
    set_log(service, holder, 6, 0);
    log(service, 1);
    expect_info(info_of(service), {1, 1, 1, 0, 0, 1, k_none});
}

TEST(LogService, a_forgotten_client_holds_nothing)
{
    LogService service = service_of();
    Client holder;
    Client other;
    set_log(service, holder, 5, 0);
    set_log(service, holder, 5, 0);
    set_log(service, other, 5, 0);
    service.forget(holder);
    log(service, 1);
    expect_info(info_of(service), {0, 1, 0, 0, 0, 1, k_none});
    service.forget(other);
    log(service, 1);
    expect_info(info_of(service), {1, 1, 1, 0, 0, 1, k_none});
}
