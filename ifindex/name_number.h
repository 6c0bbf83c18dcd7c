// A number of an interface name: where it stands in the IfIndex and how it is shown.
#ifndef IFINDEX_NAME_NUMBER_H
#define IFINDEX_NAME_NUMBER_H

#include "ifindex/layout.h"

namespace ifindex
{

enum class name_form {
    full, // "Ethernet1/5"
    brief // "Eth1/5"
};

struct name_number {
    bit_field field;
    uint8_t bias; // 1 for what an operator counts from one

    constexpr uint32_t shown(IfIndex value) const { return field.get(value) + bias; }
};

} // namespace ifindex

#endif // IFINDEX_NAME_NUMBER_H
