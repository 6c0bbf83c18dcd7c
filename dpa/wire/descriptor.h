// A client's connection: the number in its global.  Threads read it before they take the lock
// under which another thread may be replacing it, so every access is atomic.
#pragma once

#include <cstdint>
#include <unistd.h>

namespace wire
{

class Descriptor
{
public:
    constexpr explicit Descriptor(int32_t &word) : word_(&word) {}

    int32_t get() const { return __atomic_load_n(word_, __ATOMIC_RELAXED); }
    void set(int32_t fd) const { __atomic_store_n(word_, fd, __ATOMIC_RELAXED); }

    // Closes whatever number the global holds and leaves -1 in it.
    void close_and_reset() const
    {
        close(get());
        set(-1);
    }

    void close_if_open() const
    {
        if (get() != -1) {
            close_and_reset();
        }
    }

private:
    int32_t *word_;
};

} // namespace wire
