// The command line of the stand-in Agent.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "agentsim/log_service.h"

namespace agentsim
{

struct Options {
    std::string socket = KT_AGENT_SOCKET_PATH;
    uint32_t capacity = 16384;
    uint64_t first_entry = 0;
    std::optional<uint32_t> modules; // of a generated table; none: the standard one
    uint32_t rate = 0;
    uint32_t preload = 0;
    std::optional<std::string> feed; // a path, or "-"
    bool no_line_feed = false;
    bool kmsg = false;
    Identity identity;
    std::string pidfile;
    bool help = false;
};

// Reads the arguments after the program's name into options.  Returns what is wrong with them,
// or nothing.  An option's value is the next argument, or stands after "=" in the same one.
std::string parse_options(std::span<const char *const> arguments, Options &options);

// The text of --help.
extern const char k_help[];

} // namespace agentsim
