// The platform that the switch is, as far as interface indexes and names depend on it.
#include "ruk/if_index_types.h"

#include <atomic>

namespace
{

enum platform_kind : uint32_t {
    PLATFORM_UNSET = 0,
    PLATFORM_OTHER = 1,
    PLATFORM_ALDER = 2,
    PLATFORM_BIRCH = 3,
    PLATFORM_CEDAR = 4,
};

// Atomic because constructors ask for it, and those may run in any thread.
constinit std::atomic<platform_kind> platform{PLATFORM_UNSET};

// This build is for cedar alone: asking pins the word, whatever was set before, so everything that
// depends on the platform answers for cedar.
bool is_alder()
{
    platform.store(PLATFORM_CEDAR, std::memory_order_relaxed);
    return false;
}

bool is_platform(platform_kind kind)
{
    return !is_alder() && platform.load(std::memory_order_relaxed) == kind;
}

} // namespace

void cli_set_platform_alder(int32_t is_alder, int32_t is_birch)
{
    const platform_kind other = is_birch != 0 ? PLATFORM_BIRCH : PLATFORM_OTHER;
    platform.store(is_alder != 0 ? PLATFORM_ALDER : other, std::memory_order_relaxed);
}

int32_t cli_is_platform_alder(void)
{
    return is_alder();
}

int32_t cli_is_platform_birch(void)
{
    return is_platform(PLATFORM_BIRCH);
}

int32_t cli_is_platform_cedar(void)
{
    return is_platform(PLATFORM_CEDAR);
}

int32_t cli_platform_uses_san_pc(void)
{
    return is_alder() || is_platform(PLATFORM_BIRCH) || is_platform(PLATFORM_CEDAR);
}

int32_t cli_is_platform_larch(void)
{
    return 0;
}

int32_t cli_validate_param(void)
{
    return 1;
}
