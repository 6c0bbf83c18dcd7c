// The print operation for text that is ready.
#pragma once

#include <string_view>

namespace output
{

// What ruk_rcli_printf("%s", text) does.
void put(std::string_view text);

// Whether it goes to standard output rather than to the buffer.
bool goes_to_stdout();

} // namespace output
