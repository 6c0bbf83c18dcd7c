// What the commands print of the log that FaultyAgent serves, and when an exchange fails.
#pragma once

#include <string>

#include "tests/support/log_records.h"

namespace ruk_test
{

inline const std::string k_header = k_entry_header;
inline const std::string k_7 = "Sep 13 12:26:40.000042        7  2   3   1   Error seven\n";
inline const std::string k_8 = "Sep 13 12:27:41.999999        8 11  12  16   Debug eight\n";
inline const std::string k_9 = "Sep 13 12:28:42.000001        9  0   3   4 Warning nine\n";
inline const std::string k_garbage_entry =
    "Jan 13 19:13:30.1515870810 6510615555426900570 23130 1515870810 23130         " +
    std::string(127, 'Z') + "\n";

inline const std::string k_info = "          Enabled: Yes\n"
                                  "    Total Entries: 9\n"
                                  "  Wrapped Entries: 3\n"
                                  "     Lost Entries: 0\n"
                                  "  Skipped Entries: 0\n"
                                  "Available Entries: 2\n"
                                  " Stop After Entry: Not Specified\n";
inline const std::string k_garbage_info = "          Enabled: Yes\n"
                                          "    Total Entries: 6510615555426900570\n"
                                          "  Wrapped Entries: 6510615555426900570\n"
                                          "     Lost Entries: 6510615555426900570\n"
                                          "  Skipped Entries: 6510615555426900570\n"
                                          "Available Entries: 1515870810\n"
                                          " Stop After Entry: 6510615555426900570\n";
inline const std::string k_no_info = "Can't get log info\n";

inline const std::string k_flow = "                flow      ENWIDTPL (255)      ENW    L (135)\n";
inline const std::string k_port = "                port      ENWID    ( 31)      E        (  1)\n";
inline const std::string k_garbage_module =
    "ZZZZZZZZZZZZZZZZZZZZZZZZZZZZZZZZ       N ID P  (1515870810)       N ID P  (1515870810)\n";

inline const std::string k_no_suspend = "Could not suspend log\n";
inline const std::string k_no_resume = "Could not resume log\n";
inline const std::string k_will_suspend = "Will suspend log after next 0 entries\n";
inline const std::string k_press = "Press control-C to interrupt this command.\n" + k_header;
inline const std::string k_789 = k_7 + k_8 + k_9;

} // namespace ruk_test
