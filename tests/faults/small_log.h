// What FaultyAgent serves.
//
// Entries 7, 8 and, from request 20 on, 9; modules flow and port; a log that is on.  Opcode 300 is
// answered with each byte of the payload plus one; so are those from 1000 on, but that the payload
// begins with their opcode and ident.  Every other request gets itself back.
#pragma once

#include <string>

namespace ruk_test::small_log
{

// The reply to a request, the number of which is counted from 0.
std::string reply_of(const std::string &request, int number);

} // namespace ruk_test::small_log
