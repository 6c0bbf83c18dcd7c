// Waiting by polling, with a deadline.
#pragma once

#include <chrono>
#include <thread>

namespace ruk_test
{

// Calls condition until it holds.  False at the deadline.
template <typename Condition>
bool eventually(const Condition &condition,
                std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace ruk_test
