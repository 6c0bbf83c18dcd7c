// Long names read back: for which values the parser gives the value that was named, and what it
// gives for the others.
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "ruk/if_index_name.h"

namespace
{

constexpr IfIndex k_untouched = 0xdeadbeef;

// One field of a family of values: its place and the numbers that it takes.
struct field_numbers {
    int shift;
    std::vector<uint32_t> numbers;
};

void expect_round_trip(IfIndex value)
{
    char name[32];
    snprintf_if_index(name, sizeof name, value);
    IfIndex out = k_untouched;
    EXPECT_EQ(ulx_interface_name_to_ifindex(name, &out), 1) << name;
    EXPECT_EQ(out, value) << name << std::hex << " " << value << " " << out;
}

// Every combination of the fields' numbers.
void expect_round_trips(IfIndex base, std::span<const field_numbers> fields)
{
    if (fields.empty()) {
        expect_round_trip(base);
        return;
    }
    for (const uint32_t number : fields.front().numbers) {
        expect_round_trips(base | number << fields.front().shift, fields.subspan(1));
    }
}

const std::vector<uint32_t> k_slots = {0, 1, 15, 30, 31};
const std::vector<uint32_t> k_ports = {0, 1, 63, 126, 127};
const std::vector<uint32_t> k_subs = {0, 1, 2047, 4094, 4095};

struct family {
    const char *what;
    IfIndex base;
    std::vector<field_numbers> fields;
};

class round_trip : public testing::Test
{
protected:
    // VLANs and tunnels come back in the device context 1 unless told otherwise.
    void SetUp() override { unsetenv("SYSMGR_VDC_ID"); }
};

} // namespace

TEST_F(round_trip, holds_for_these_families)
{
    const family families[] = {
        {"phy_fc", 0x01000000, {{19, k_slots}, {12, k_ports}}},
        {"phy_eth", 0x02000000, {{19, k_slots}, {12, k_ports}}},
        {"port_channel", 0x04000000, {{0, {0, 1, 128, 254, 255}}, {8, k_subs}}},
        {"mgmt_sup", 0x05000000, {}},
        {"eobc", 0x07000000, {{19, k_slots}}},
        {"vsan, cpp", 0x08000000, {{19, {0, 1, 29}}, {12, k_ports}, {0, k_subs}}},
        {"vsan", 0x08f80000, {{0, k_subs}}},
        {"vlan", 0x09010000, {{0, {1, 2, 2047, 4093, 4094}}}},
        {"iscsi", 0x0b000000, {{19, k_slots}, {12, k_ports}}},
        {"umbra", 0x0c000000, {{19, k_slots}, {12, k_ports}}},
        {"xlport", 0x0d000000, {{19, k_slots}, {12, k_ports}}},
        {"tk", 0x0e000000, {{19, k_slots}, {14, k_slots}, {0, {0, 1, 16381, 16382}}}},
        {"kiro", 0x12000000, {{19, k_slots}, {12, k_ports}}},
        {"null", 0x17000000, {}},
        {"tunnel", 0x18010000, {{0, {0, 1, 32767, 32768, 65534, 65535}}}},
        {"lveth", 0x1b000000, {{16, k_slots}, {4, k_subs}, {2, {0, 1, 2, 3}}}},
        {"veth", 0x1c000000, {{4, {0, 1, 524288, 1048574, 1048575}}, {0, {0, 1, 14, 15}}}},
        {"vfc", 0x1e000000, {{0, {0, 1, 61439, 61440}}}},
        {"vfc slot/port", 0x1e200000, {{15, k_slots}, {8, k_ports}}},
        {"pemu", 0x21000000, {{19, k_slots}, {12, k_ports}}},
        {"overlay", 0x22080000, {{0, {0, 1, 65502, 65503}}}},
        {"overlay, mti", 0x22180000, {{0, {0, 1, 65502, 65503}}}},
        {"ruk_eth",
         0x25000000,
         {{14, {0, 1, 127, 513, 514}}, {6, {0, 1, 254, 255}}, {0, {0, 1, 62, 63}}}},
    };
    for (const family &family : families) {
        SCOPED_TRACE(family.what);
        expect_round_trips(family.base, family.fields);
    }
}

TEST_F(round_trip, follows_the_device_context)
{
    for (const uint32_t context : {0u, 1u, 2u, 254u, 255u}) {
        setenv("SYSMGR_VDC_ID", std::to_string(context).c_str(), 1);
        expect_round_trip(0x09000064 | context << 16);
        expect_round_trip(0x18000005 | context << 16);
    }
    unsetenv("SYSMGR_VDC_ID");
}

// Names that the parser takes for something else, or for nothing.
TEST_F(round_trip, fails_for_these_values)
{
    struct {
        IfIndex value;
        const char *name;
        int32_t result;
        IfIndex parsed;
    } const rows[] = {
        // A sub-interface is a third number, which the kind refuses or takes for something else.
        {0x01000007, "fc1/1.7", 0, k_untouched},
        {0x02000007, "GigabitEthernet1/1.7", 1, 0x1f0001c7},
        // The members of a port-channel look like ports, the internal forms like nothing.
        {0x04100000, "fc1/1", 1, 0x01000000},
        {0x04200004, "internal san-port-channel 5", 0, k_untouched},
        {0x04400004, "san-port-channel 5", 1, 0x04000004},
        // The number is read as the slot.
        {0x05003000, "mgmt3", 1, 0x05180000},
        {0x05080000, "mgmt0 on slot 2", 1, 0x05002000},
        {0x06081000, "sup-fc0", 0, k_untouched},
        {0x06200000, "lc-eth0/1", 0, k_untouched},
        {0x07001000, "control0", 1, 0x07000000},
        // Slot 31 is the one that is taken with its port as given.
        {0x08f04007, "cpp31/5/7", 1, 0x08f85007},
        {0x08f84007, "vsan7", 1, 0x08f80007},
        {0x09020064, "Vlan100", 1, 0x09010064},
        {0x09010000, "Vlan0", 1, k_untouched},
        {0x09010fff, "Vlan4095", 1, k_untouched},
        // "fc" hides the keywords that it begins.
        {0x0a000004, "fcip5", 0, k_untouched},
        {0x0f000004, "fc-tunnel 5", 0, k_untouched},
        {0x0e003fff, "tk1/1/16384", 1, k_untouched},
        {0x10000102, "nalp 1:2", 0, k_untouched},
        {0x11000000, "ifc 1:1:1", 0, k_untouched},
        {0x13000102, "zeba 1:2", 0, k_untouched},
        {0x14000000, "dorsa1/1/1", 0, k_untouched},
        {0x15010000, "sup-eth1", 0, k_untouched},
        // The word of an Ethernet port-channel is that of the other type when it is read.
        {0x16000004, "port-channel5", 1, 0x04000004},
        {0x16000fff, "port-channel4096", 1, k_untouched},
        {0x16001004, "port-channel5.1", 1, 0x04000104},
        {0x17000001, "Null0", 1, 0x17000000},
        {0x18020005, "Tunnel5", 1, 0x18010005},
        {0x19200000, "sup-diag0", 0, k_untouched},
        // All Ethernet ports are read as those of the data-path modules.
        {0x1a000000, "Ethernet1/1", 1, 0x25000000},
        {0x1a000007, "Ethernet1/1.7", 1, 0x25000007},
        {0x1f000000, "Ethernet1/1/1", 1, 0x25000001},
        {0x1f630000, "Ethernet100/1/1", 1, 0x25000000 | 99 << 14 | 1},
        {0x2580c000, "Ethernet516/1", 0, k_untouched},
        // Slots above 31 have a name, but cannot be typed.
        {0x1b200000, "lveth33/1", 1, k_untouched},
        {0x1b000001, "lveth257/1", 1, k_untouched},
        {0x1d000004, "vif4", 0, k_untouched},
        // "vfc" hides the keywords that it begins; numbers above 61440 cannot be typed.
        {0x1e010005, "vfc6", 1, 0x1e000005},
        {0x1e00f001, "vfc61442", 1, k_untouched},
        {0x1e100007, "vfc-po8", 1, 0x1e000007},
        {0x1e300009, "vfc-veth10", 1, 0x1e000009},
        {0x1e200001, "vfc1/1", 1, 0x1e200000},
        // A vfc on a satellite is built at other places than it is read from.
        {0x1e402301, "vfc2/4/3", 1, 0x1e400000 | 1 << 10 | 3 << 8 | 2 << 2},
        {0x1e500000, "", 0, k_untouched},
        {0x20001080, "fif2/3", 0, k_untouched},
        // "tunnel" hides "tunnel-te", and "peer-id" is no keyword.
        {0x22100005, "tunnel-te5", 1, 0x18010005},
        {0x22200005, "peer-id5", 0, k_untouched},
        {0x2208ffe0, "Overlay65504", 1, k_untouched},
        {0x22000005, "", 0, k_untouched},
        {0x23000000, "Virtual Layer-3", 0, k_untouched},
        {0x23420c03, "Replicator2/3/4", 0, k_untouched},
        {0x24005007, "Gateway Port-Channel5:7", 0, k_untouched},
        {0x26000001, "0x26000001", 0, k_untouched},
        {0xfe000007, "", 0, k_untouched},
        // The flag of the wildcard values is lost.
        {0x81000000, "fc1/1", 1, 0x01000000},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << std::hex << row.value);
        char name[32];
        snprintf_if_index(name, sizeof name, row.value);
        EXPECT_STREQ(name, row.name);
        IfIndex out = k_untouched;
        EXPECT_EQ(ulx_interface_name_to_ifindex(name, &out), row.result);
        EXPECT_EQ(out, row.parsed) << std::hex << out;
    }
}
