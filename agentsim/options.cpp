// The command line of the stand-in Agent: a table of its options.
#include "agentsim/options.h"

#include <arpa/inet.h>
#include <string_view>

#include "agentsim/text.h"

namespace agentsim
{

namespace
{

struct FlagRow {
    std::string_view name;
    bool Options::*field;
};

struct TextRow {
    std::string_view name;
    const char *wanted;
    std::string Options::*field;
};

struct NumberRow {
    std::string_view name;
    uint64_t Options::*field;
    uint64_t first;
    uint64_t last;
};

constexpr FlagRow k_flags[] = {
    {"--console", &Options::console},
    {"--help", &Options::help},
    {"--kmsg", &Options::kmsg},
    {"--no-line-feed", &Options::no_line_feed},
};

constexpr TextRow k_texts[] = {
    {"--feed", "a file or -", &Options::feed},
    {"--pidfile", "a path", &Options::pidfile},
    {"--socket", "a path", &Options::socket},
};

constexpr NumberRow k_numbers[] = {
    {"--capacity", &Options::capacity, 1, 1048576},
    {"--first-entry", &Options::first_entry, 0, UINT64_MAX},
    {"--modules", &Options::modules, 0, 65536},
    {"--preload", &Options::preload, 0, 10000000},
    {"--rate", &Options::rate, 0, 1000000},
};

constexpr std::string_view k_version_mismatch = "--version-mismatch";
constexpr std::string_view k_management_ip = "--management-ip";

// The row of that name, or null.
template <typename Row, size_t Count>
const Row *row_of(const Row (&rows)[Count], std::string_view name)
{
    for (const Row &row : rows) {
        if (row.name == name) {
            return &row;
        }
    }
    return nullptr;
}

// The flag of that name, or null.
bool *flag_of(std::string_view name, Options &options)
{
    if (const FlagRow *row = row_of(k_flags, name)) {
        return &(options.*row->field);
    }
    return name == k_version_mismatch ? &options.identity.version_mismatch : nullptr;
}

// What the value of the option of that name must be, or nothing for an unknown option.
std::string wanted_value(std::string_view name)
{
    if (const TextRow *row = row_of(k_texts, name)) {
        return row->wanted;
    }
    if (const NumberRow *row = row_of(k_numbers, name)) {
        return "a number from " + std::to_string(row->first) + " to " + std::to_string(row->last);
    }
    return name == k_management_ip ? "an address like 192.0.2.1" : "";
}

// Stores the value of an option that takes one.  False: it is not what is wanted.
bool store_value(std::string_view name, const std::string &value, Options &options)
{
    if (const TextRow *row = row_of(k_texts, name)) {
        options.*row->field = value;
        return !value.empty();
    }
    if (const NumberRow *row = row_of(k_numbers, name)) {
        const auto number = number_of<uint64_t>(value);
        options.*row->field = number.value_or(row->first);
        return number && *number >= row->first && *number <= row->last;
    }
    return inet_pton(AF_INET, value.c_str(), options.identity.management_ip.data()) == 1;
}

// Takes the option at arguments[at], and moves at to its value when that is the next argument.
// Returns what is wrong, or nothing.
std::string take_option(std::span<const char *const> arguments, size_t &at, Options &options)
{
    const std::string argument = arguments[at];
    const size_t equals = argument.find('=');
    const bool has_value = equals != argument.npos;
    const std::string name = argument.substr(0, equals);
    if (bool *flag = flag_of(name, options)) {
        *flag = true;
        return has_value ? name + " takes no value" : "";
    }
    const std::string wanted = wanted_value(name);
    if (wanted.empty()) {
        return "unknown option " + name + "; --help lists the options";
    }
    if (!has_value && at + 1 == arguments.size()) {
        return name + " needs a value: " + wanted;
    }
    const std::string value = has_value ? argument.substr(equals + 1) : arguments[++at];
    const bool fits = store_value(name, value, options);
    return fits ? "" : name + " takes " + wanted + ", not \"" + value + "\"";
}

} // namespace

std::string parse_options(std::span<const char *const> arguments, Options &options)
{
    std::string error;
    for (size_t at = 0; at < arguments.size() && error.empty(); ++at) {
        error = take_option(arguments, at, options);
    }
    if (error.empty() && options.console && options.feed == "-") {
        return "--console and --feed - both read standard input; feed a file instead";
    }
    return error;
}

const char k_help[] =
    "Usage: ruklog-agentsim [options]\n"
    "Serves the event log to ruklog in place of the data-path Agent, from memory.\n"
    "Prints one line when it is ready and runs until SIGINT, SIGTERM or SIGHUP.\n"
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
    "  --console          run ruklog's commands from standard input inside this process\n"
    "  --socket PATH      serve PATH (default " KT_AGENT_SOCKET_PATH ")\n"
    "  --pidfile PATH     keep the process id in PATH while serving\n"
    "  --management-ip A  management address (default 127.0.0.1)\n"
    "  --version-mismatch answer version probes with a mismatch\n"
    "  --help             print this text\n";

} // namespace agentsim
