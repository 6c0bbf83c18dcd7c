// What ruklog prints as its help.
#pragma once

#include <string>

namespace ruk_test
{

inline const std::string k_help =
    "ruklog help:\n"
    "\n"
    "show                             \n"
    "show info                        Show log info\n"
    "show all cookie <number>         Show all entries in the log\n"
    "show last <number> cookie <number> \n"
    "                                 Show last <n> entries in the log\n"
    "                                 (minimum 1, default 25, maximum 10000)\n"
    "show tail                        Show continuous tail (like unix 'tail -f')\n"
    "start <entries>                  Start logging\n"
    "                                 if <entries> is specified, stop after next <n>\n"
    "stop <entries>                   Stop logging after next <n> entries\n"
    "                                 or immediately if <entries> is unspecified.\n"
    "resume                           Resume logging\n"
    "                                 Any <entries> value from previous start or stop\n"
    "                                 is preserved.\n"
    "clear                            Clear the log\n"
    "debug <module|all> [-][all|none|default|e|w|n|i|d|p|t] \n"
    "                                 Enable and disable debug levels\n"
    "show debug cookie <number>       Display debug settings\n";

} // namespace ruk_test
