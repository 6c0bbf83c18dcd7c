// Readers of satellite (fabric extender) ports, and the numbering of satellites as slots.
#include "ruk/if_index_read.h"

#include "ifindex/access.h"

using namespace ifindex;

namespace
{

constexpr type_set k_sat_phy_eth = accepts(IF_INDEX_TYPE_SAT_PHY_ETH);
constexpr uint32_t k_first_sat_slot = 32; // the slots below are the chassis' own

} // namespace

uint32_t if_index_sat_get_sat_num(IfIndex value, uint8_t *sat)
{
    return read(value, k_sat_phy_eth, to<k_sat>(sat));
}

uint32_t if_index_sat_get_fields(IfIndex value, uint8_t *sat, uint8_t *module, uint8_t *port,
                                 uint16_t *sub)
{
    const uint32_t error =
        read(value, k_sat_phy_eth, to<k_sat>(sat), to<k_sat_module>(module), to<k_sat_port>(port));
    if (error == IF_INDEX_OK && sub != nullptr) {
        to<k_sat_sub>(sub).store(value);
    }
    return error;
}

uint32_t if_index_sat_phy_eth_get_sub_intf(IfIndex value, uint16_t *sub)
{
    return read(value, k_sat_phy_eth, to<k_sat_sub>(sub));
}

// These two, unlike the other readers, answer every failure with the same code; callers rely on it.
uint32_t if_index_sat_get_slot(IfIndex value, uint16_t *slot)
{
    uint8_t sat = 0;
    uint8_t module = 0;
    uint8_t port = 0;
    if (if_index_sat_get_fields(value, &sat, &module, &port, nullptr) != IF_INDEX_OK) {
        return IF_INDEX_BAD_ARGUMENT;
    }
    return if_index_sat_get_slot_from_sat_mod(sat, module, slot);
}

uint32_t if_index_sat_get_port(IfIndex value, uint8_t *port)
{
    const uint32_t error = read(value, k_sat_phy_eth, to<k_sat_port>(port));
    return error == IF_INDEX_OK ? IF_INDEX_OK : IF_INDEX_BAD_ARGUMENT;
}

uint32_t if_index_sat_get_fif_fields(IfIndex value, uint8_t *module, uint8_t *port, uint8_t *index)
{
    return read(value, accepts(IF_INDEX_TYPE_SAT_PHY_ETH_FIF), to<k_sat_module>(module),
                to<k_sat_port>(port), to<k_fif_index>(index));
}

uint32_t if_index_sat_get_sat_from_slot(uint16_t slot, uint8_t *sat)
{
    *sat = slot < k_first_sat_slot ? uint8_t{0} : static_cast<uint8_t>(slot + k_sat_slot_offset);
    return IF_INDEX_OK;
}

uint32_t if_index_sat_get_sat_mod_from_slot(uint16_t slot, uint8_t *module)
{
    *module = slot < k_first_sat_slot ? static_cast<uint8_t>(slot) : uint8_t{0};
    return IF_INDEX_OK;
}

uint32_t if_index_sat_get_slot_from_sat_mod(uint8_t sat, uint8_t module, uint16_t *slot)
{
    *slot = static_cast<uint16_t>(uint32_t{sat} + module - k_sat_slot_offset);
    return IF_INDEX_OK;
}
