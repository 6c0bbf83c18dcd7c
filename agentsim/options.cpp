// The command line of the stand-in Agent: a table of its options.
#include "agentsim/options.h"

#include <arpa/inet.h>
#include <string_view>

#include "agentsim/text.h"

namespace agentsim
{

namespace
{

constexpr uint32_t k_last_capacity = 1'048'576; // 152 MiB of entries
constexpr uint32_t k_last_module_count = 65'536;
constexpr uint32_t k_last_rate = 1'000'000;
constexpr uint32_t k_last_preload = 10'000'000;

// Stores a number from first to last.
template <typename Field>
bool set_number(Field &field, std::string_view value, uint64_t first, uint64_t last)
{
    const auto number = number_of<uint64_t>(value);
    if (!number || *number < first || *number > last) {
        return false;
    }
    field = static_cast<uint32_t>(*number);
    return true;
}

bool set_text(std::string &field, std::string_view value)
{
    field = value;
    return !value.empty();
}

bool set_flag(bool &field)
{
    field = true;
    return true;
}

bool set_address(std::array<uint8_t, 4> &octets, std::string_view value)
{
    return inet_pton(AF_INET, std::string(value).c_str(), octets.data()) == 1;
}

// One option: its name, what its value must be (null: it takes none), and how it is stored.
struct Row {
    std::string_view name;
    const char *value;
    bool (*store)(Options &options, std::string_view value);
};

constexpr Row k_rows[] = {
    {"--help", nullptr, [](Options &o, std::string_view) { return set_flag(o.help); }},
    {"--foreground", nullptr, [](Options &, std::string_view) { return true; }},
    {"--kmsg", nullptr, [](Options &o, std::string_view) { return set_flag(o.kmsg); }},
    {"--no-line-feed", nullptr,
     [](Options &o, std::string_view) { return set_flag(o.no_line_feed); }},
    {"--version-mismatch", nullptr,
     [](Options &o, std::string_view) { return set_flag(o.identity.version_mismatch); }},
    {"--socket", "a path", [](Options &o, std::string_view v) { return set_text(o.socket, v); }},
    {"--pidfile", "a path", [](Options &o, std::string_view v) { return set_text(o.pidfile, v); }},
    {"--feed", "a file or -",
     [](Options &o, std::string_view v) { return set_text(o.feed.emplace(), v); }},
    {"--capacity", "a number from 1 to 1048576",
     [](Options &o, std::string_view v) { return set_number(o.capacity, v, 1, k_last_capacity); }},
    {"--modules", "a number from 0 to 65536",
     [](Options &o, std::string_view v) {
         return set_number(o.modules, v, 0, k_last_module_count);
     }},
    {"--rate", "a number from 0 to 1000000",
     [](Options &o, std::string_view v) { return set_number(o.rate, v, 0, k_last_rate); }},
    {"--preload", "a number from 0 to 10000000",
     [](Options &o, std::string_view v) { return set_number(o.preload, v, 0, k_last_preload); }},
    {"--first-entry", "a number of at most 64 bits",
     [](Options &o, std::string_view v) {
         const auto number = number_of<uint64_t>(v);
         o.first_entry = number.value_or(0);
         return number.has_value();
     }},
    {"--management-ip", "an address like 192.0.2.1",
     [](Options &o, std::string_view v) { return set_address(o.identity.management_ip, v); }},
};

const Row *row_of(std::string_view name)
{
    for (const Row &row : k_rows) {
        if (row.name == name) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

std::string parse_options(std::span<const char *const> arguments, Options &options)
{
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const size_t equals = argument.find('=');
        const std::string name(argument.substr(0, equals));
        const Row *row = row_of(name);
        if (row == nullptr) {
            return "unknown option " + name + "; --help lists the options";
        }
        std::string_view value;
        if (row->value == nullptr) {
            if (equals != argument.npos) {
                return name + " takes no value";
            }
        } else if (equals != argument.npos) {
            value = argument.substr(equals + 1);
        } else if (++i < arguments.size()) {
            value = arguments[i];
        } else {
            return name + " needs a value: " + row->value;
        }
        if (!row->store(options, value)) {
            return name + " takes " + row->value + ", not \"" + std::string(value) + "\"";
        }
    }
    return {};
}

const char k_help[] =
    "Usage: ruklog-agentsim [options]\n"
    "Serves the event log to ruklog in place of the data-path Agent, from memory.\n"
    "Prints one line when it is ready and runs until SIGINT or SIGTERM.\n"
    "\n"
    "Events (none by default; several sources may be given):\n"
    "  --preload N        make N events at the start\n"
    "  --rate N           make N events a second\n"
    "  --feed FILE        log each line of FILE, - for standard input.  A line may begin\n"
    "                     with <N>, a syslog priority, or with a level and a colon\n"
    "                     (\"Warning: text\"); otherwise its level is Info\n"
    "  --no-line-feed     log fed lines without the line feed that ends a message\n"
    "  --kmsg             log the kernel's messages from /dev/kmsg\n"
    "The lines of a regular FILE and the messages that the kernel holds are logged before\n"
    "the ready line.\n"
    "\n"
    "Log:\n"
    "  --capacity N       entries that the log holds (default 16384)\n"
    "  --first-entry N    number of the first entry (default 0)\n"
    "  --modules N        N modules named module0, module1, ... instead of the usual ones\n"
    "\n"
    "Agent:\n"
    "  --socket PATH      serve PATH (default " KT_AGENT_SOCKET_PATH ")\n"
    "  --pidfile PATH     keep the process id in PATH while serving\n"
    "  --management-ip A  management address (default 127.0.0.1)\n"
    "  --version-mismatch answer version probes with a mismatch\n"
    "  --foreground       stay in the foreground (always so)\n"
    "  --help             print this text\n";

} // namespace agentsim
