// Captures what the code under test writes to standard output, byte for byte.
#pragma once

#include <functional>
#include <string>

namespace ruk_test
{

// Runs action and returns everything that this process wrote to descriptor 1 meanwhile.
std::string captured_stdout(const std::function<void()> &action);

} // namespace ruk_test
