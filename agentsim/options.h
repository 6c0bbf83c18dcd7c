// The command line of the stand-in Agent.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "agentsim/log_service.h"

namespace agentsim
{

struct Options {
    // As modules: the standard table instead of a generated one.
    static constexpr uint64_t k_standard_modules = UINT64_MAX;

    std::string socket = KT_AGENT_SOCKET_PATH;
    uint64_t capacity = 16384;
    uint64_t first_entry = 0;
    uint64_t modules = k_standard_modules;
    uint64_t rate = 0;
    uint64_t preload = 0;
    std::string feed; // a path, "-", or nothing
    bool no_line_feed = false;
    bool kmsg = false;
    bool console = false;
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
