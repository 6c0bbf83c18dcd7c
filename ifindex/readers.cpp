// Readers of the types that have a slot: a line each.
#include "ruk/if_index_read.h"

#include "ifindex/access.h"

using namespace ifindex;

namespace
{

constexpr type_set k_phy_fc = accepts(IF_INDEX_TYPE_PHY_FC);
constexpr type_set k_phy_eth = accepts(IF_INDEX_TYPE_PHY_ETH, IF_INDEX_TYPE_PHY_ETHERNET);
constexpr type_set k_mgmt_sup = accepts(IF_INDEX_TYPE_MGMT_SUP);
constexpr type_set k_eobc = accepts(IF_INDEX_TYPE_EOBC);
constexpr type_set k_inband = accepts(IF_INDEX_TYPE_INBAND);
constexpr type_set k_vsan_type = accepts(IF_INDEX_TYPE_VSAN);
constexpr type_set k_iscsi = accepts(IF_INDEX_TYPE_ISCSI);
constexpr type_set k_umbra = accepts(IF_INDEX_TYPE_UMBRA);
constexpr type_set k_xlport = accepts(IF_INDEX_TYPE_XLPORT);
constexpr type_set k_tk = accepts(IF_INDEX_TYPE_TK);
constexpr type_set k_kiro = accepts(IF_INDEX_TYPE_KIRO);
constexpr type_set k_dorsa = accepts(IF_INDEX_TYPE_DORSA);
constexpr type_set k_lveth = accepts(IF_INDEX_TYPE_LVETH);
constexpr type_set k_pemu = accepts(IF_INDEX_TYPE_PEMU);
constexpr type_set k_vl3 = accepts(IF_INDEX_TYPE_VL3);
constexpr type_set k_ruk_eth = accepts(IF_INDEX_TYPE_RUK_ETH);

// The type check of an inband port that must be a linecard's.
uint32_t check_linecard(IfIndex value)
{
    const uint32_t error = check_type(value, k_inband);
    if (error == IF_INDEX_OK && if_index_is_linecard_inband(value) == 0) {
        return IF_INDEX_WRONG_TYPE;
    }
    return error;
}

} // namespace

uint32_t if_index_phy_fc_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_phy_fc, to<k_phy_slot>(slot));
}

uint32_t if_index_phy_fc_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_phy_fc, to<k_phy_port>(port));
}

uint32_t if_index_phy_fc_get_sub_intf(IfIndex value, uint16_t *sub)
{
    return read(value, k_phy_fc, to<k_phy_sub>(sub));
}

uint32_t if_index_phy_fc_get_fields(IfIndex value, uint16_t *slot, uint8_t *port, uint16_t *sub)
{
    return read(value, k_phy_fc, to<k_phy_slot>(slot), to<k_phy_port>(port), to<k_phy_sub>(sub));
}

uint32_t if_index_phy_eth_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_phy_eth, to<k_phy_slot>(slot));
}

uint32_t if_index_phy_eth_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_phy_eth, to<k_phy_port>(port));
}

uint32_t if_index_phy_eth_get_sub_intf(IfIndex value, uint16_t *sub)
{
    return read(value, k_phy_eth, to<k_phy_sub>(sub));
}

uint32_t if_index_phy_eth_get_fields(IfIndex value, uint16_t *slot, uint8_t *port, uint16_t *sub)
{
    return read(value, k_phy_eth, to<k_phy_slot>(slot), to<k_phy_port>(port), to<k_phy_sub>(sub));
}

uint32_t if_index_mgmt_sup_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_mgmt_sup, to<k_phy_slot>(slot));
}

uint32_t if_index_mgmt_sup_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_mgmt_sup, to<k_phy_port>(port));
}

uint32_t if_index_mgmt_sup_get_fields(IfIndex value, uint16_t *slot, uint8_t *port)
{
    return read(value, k_mgmt_sup, to<k_phy_slot>(slot), to<k_phy_port>(port));
}

uint32_t if_index_eobc_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_eobc, to<k_phy_slot>(slot));
}

uint32_t if_index_eobc_get_fields(IfIndex value, uint16_t *slot, uint8_t *port)
{
    return read(value, k_eobc, to<k_phy_slot>(slot), to<k_phy_port>(port));
}

uint32_t if_index_inband_get_sup(IfIndex value, uint8_t *sup)
{
    return read(value, k_inband, to<k_inband_sup>(sup));
}

uint32_t if_index_inband_get_queue(IfIndex value, uint8_t *queue)
{
    return read(value, k_inband, to<k_inband_queue>(queue));
}

uint32_t if_index_inband_get_fields(IfIndex value, uint8_t *sup, uint8_t *queue)
{
    return read(value, k_inband, to<k_inband_sup>(sup), to<k_inband_queue>(queue));
}

uint32_t if_index_inband_linecard_get_slot(IfIndex value, uint16_t *slot)
{
    return store_unless(check_linecard(value), value, to<k_inband_linecard_slot>(slot));
}

uint32_t if_index_inband_linecard_get_fields(IfIndex value, uint8_t *queue, uint16_t *slot)
{
    return store_unless(check_linecard(value), value, to<k_inband_queue>(queue),
                        to<k_inband_linecard_slot>(slot));
}

uint32_t if_index_vsan_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_vsan_type, to<k_phy_slot>(slot));
}

uint32_t if_index_vsan_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_vsan_type, to<k_phy_port>(port));
}

uint32_t if_index_vsan_get_vsan(IfIndex value, uint32_t *vsan)
{
    return read(value, k_vsan_type, to<k_vsan>(vsan));
}

uint32_t if_index_vsan_get_fields(IfIndex value, uint16_t *slot, uint8_t *port, uint32_t *vsan)
{
    return read(value, k_vsan_type, to<k_phy_slot>(slot), to<k_phy_port>(port), to<k_vsan>(vsan));
}

uint32_t if_index_iscsi_get_fields(IfIndex value, uint16_t *slot, uint8_t *port)
{
    return read(value, k_iscsi, to<k_phy_slot>(slot), to<k_phy_port>(port));
}

uint32_t if_index_umbra_get_fields(IfIndex value, uint16_t *slot, uint8_t *port)
{
    return read(value, k_umbra, to<k_phy_slot>(slot), to<k_phy_port>(port));
}

uint32_t if_index_umbra_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_umbra, to<k_phy_slot>(slot));
}

uint32_t if_index_umbra_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_umbra, to<k_phy_port>(port));
}

uint32_t if_index_xlport_get_fields(IfIndex value, uint16_t *slot, uint8_t *port)
{
    return read(value, k_xlport, to<k_phy_slot>(slot), to<k_phy_port>(port));
}

uint32_t if_index_xlport_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_xlport, to<k_phy_slot>(slot));
}

uint32_t if_index_xlport_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_xlport, to<k_phy_port>(port));
}

uint32_t if_index_tk_get_dpp_num(IfIndex value, uint8_t *dpp)
{
    return read(value, k_tk, to<k_tk_dpp>(dpp));
}

uint32_t if_index_tk_get_port(IfIndex value, uint16_t *port)
{
    return read(value, k_tk, to<k_tk_port>(port));
}

uint32_t if_index_kiro_get_fields(IfIndex value, uint16_t *slot, uint8_t *port)
{
    return read(value, k_kiro, to<k_phy_slot>(slot), to<k_phy_port>(port));
}

uint32_t if_index_kiro_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_kiro, to<k_phy_slot>(slot));
}

uint32_t if_index_kiro_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_kiro, to<k_phy_port>(port));
}

uint32_t if_index_dorsa_get_fields(IfIndex value, uint16_t *slot, uint8_t *node, uint8_t *port)
{
    return read(value, k_dorsa, to<k_phy_slot>(slot), to<k_dorsa_node>(node),
                to<k_dorsa_port>(port));
}

uint32_t if_index_dorsa_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_dorsa, to<k_phy_slot>(slot));
}

uint32_t if_index_dorsa_get_node(IfIndex value, uint8_t *node)
{
    return read(value, k_dorsa, to<k_dorsa_node>(node));
}

uint32_t if_index_dorsa_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_dorsa, to<k_dorsa_port>(port));
}

uint32_t if_index_lveth_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_lveth, to<k_lveth_slot>(slot));
}

uint32_t if_index_lveth_get_port(IfIndex value, uint16_t *port)
{
    return read(value, k_lveth, to<k_lveth_port>(port));
}

uint32_t if_index_lveth_get_sub_intf(IfIndex value, uint16_t *sub)
{
    return read(value, k_lveth, to<k_lveth_sub>(sub));
}

uint32_t if_index_lveth_get_fields(IfIndex value, uint16_t *slot, uint16_t *port, uint16_t *sub)
{
    return read(value, k_lveth, to<k_lveth_slot>(slot), to<k_lveth_port>(port),
                to<k_lveth_sub>(sub));
}

uint32_t if_index_pemu_get_fields(IfIndex value, uint16_t *slot, uint8_t *port)
{
    return read(value, k_pemu, to<k_phy_slot>(slot), to<k_phy_port>(port));
}

uint32_t if_index_pemu_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_pemu, to<k_phy_slot>(slot));
}

uint32_t if_index_pemu_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_pemu, to<k_phy_port>(port));
}

uint32_t if_index_vl3_get_fields(IfIndex value, uint8_t *subtype, uint16_t *slot, uint8_t *port,
                                 uint16_t *number)
{
    return read(value, k_vl3, to<k_vl3_subtype>(subtype), to<k_vl3_slot>(slot),
                to<k_vl3_port>(port), to<k_vl3_interface>(number));
}

uint32_t if_index_vl3_get_subtype(IfIndex value, uint8_t *subtype)
{
    return read(value, k_vl3, to<k_vl3_subtype>(subtype));
}

uint32_t if_index_vl3_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_vl3, to<k_vl3_slot>(slot));
}

uint32_t if_index_vl3_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_vl3, to<k_vl3_port>(port));
}

uint32_t if_index_vl3_get_intf_num(IfIndex value, uint16_t *number)
{
    return read(value, k_vl3, to<k_vl3_interface>(number));
}

uint32_t if_index_ruk_eth_get_slot(IfIndex value, uint16_t *slot)
{
    return read(value, k_ruk_eth, to<k_ruk_eth_slot>(slot));
}

uint32_t if_index_ruk_eth_get_port(IfIndex value, uint8_t *port)
{
    return read(value, k_ruk_eth, to<k_ruk_eth_port>(port));
}

uint32_t if_index_ruk_eth_get_sub_intf(IfIndex value, uint16_t *sub)
{
    return read(value, k_ruk_eth, to<k_ruk_eth_sub>(sub));
}

uint32_t if_index_ruk_eth_get_fields(IfIndex value, uint16_t *slot, uint8_t *port, uint16_t *sub)
{
    return read(value, k_ruk_eth, to<k_ruk_eth_slot>(slot), to<k_ruk_eth_port>(port),
                to<k_ruk_eth_sub>(sub));
}
