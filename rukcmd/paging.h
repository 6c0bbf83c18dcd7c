// Paged mode: what its commands share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "infra/utils/ktprint.h"
#include "ruk/front_end.h"

namespace paging
{

// Room for the arguments of a paged command; longer ones are cut.
constexpr size_t k_field_size = 240;

inline bool is_paged()
{
    return ruk_rcli_fromdpa != 0;
}

inline void copy_arguments(char (&field)[k_field_size], const char *arguments)
{
    kt_print_to(field, sizeof field, "%s", arguments);
}

// The cookie at the start of the arguments, "0x" and leading-0 forms included; 0 without one.
inline uint32_t cookie_of(const char *arguments)
{
    char field[k_field_size];
    copy_arguments(field, arguments == nullptr ? "0" : arguments);
    return static_cast<uint32_t>(strtoull(field, nullptr, 0));
}

} // namespace paging
