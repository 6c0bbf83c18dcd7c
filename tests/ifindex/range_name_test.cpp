// Names of ranges: the name of the first interface and a number of the last.
#include "ruk/if_index_name.h"

#include <string>

#include "tests/ifindex/guarded_buffer.h"

namespace
{

// Stands for "as in the long form".
constexpr const char *k_same = "same";

struct range_row {
    IfIndex first;
    IfIndex last;
    const char *long_name;
    const char *long_suffix;          // nullptr: none, and the length counts twice
    const char *short_name = nullptr; // nullptr: as the long one
    const char *short_suffix = k_same;
};

// clang-format off
constexpr range_row k_rows[] = {
    // phy_fc, phy_eth, phy_ethernet: the sub-interface, or the port counted from 1
    {0x01000000, 0x01000000 | 2 << 19 | 4 << 12, "fc1/1", "-5"},
    {0x01000000, 0x01000000 | 2 << 19 | 4 << 12 | 7, "fc1/1", "-7"},
    {0x01000001, 0x01ffffff, "fc1/1.1", "-4095"},
    {0x01000001, 0x01fff000, "fc1/1.1", "-128"},
    {0x02000000, 0x02000000 | 2 << 19 | 4 << 12, "GigabitEthernet1/1", "-5", "GigE1/1"},
    {0x02000000, 0x02000000 | 2 << 19 | 4 << 12 | 7, "GigabitEthernet1/1", "-7", "GigE1/1"},
    {0x02000000, 0x02fff000, "GigabitEthernet1/1", "-128", "GigE1/1"},
    {0x1a000000, 0x1a000000 | 2 << 19 | 4 << 12, "Ethernet1/1", "-5", "Eth1/1"},
    {0x1a000000, 0x1a000000 | 2 << 19 | 4 << 12 | 7, "Ethernet1/1", "-7", "Eth1/1"},
    {0x1a000000, 0x1affffff, "Ethernet1/1", "-4095", "Eth1/1"},
    // port_channel: by the subtype of the last
    {0x04000000, 0x04000004, "san-port-channel 1", "-5", "San-po1"},
    {0x04000000, 0x040000ff, "san-port-channel 1", "-256", "San-po1"},
    {0x04000000, 0x04000000 | 10 << 8 | 4, "san-port-channel 1", "-10", "San-po1"},
    {0x04000000, 0x040fff04, "san-port-channel 1", "-4095", "San-po1"},
    {0x04000000, 0x04100000 | 2 << 16 | 3 << 12 | 7, "san-port-channel 1", "-4", "San-po1"},
    {0x04100000, 0x041fffff, "fc1/1", "-16"},
    {0x04100000, 0x04000000 | 10 << 8 | 4, "fc1/1", "-10"},
    {0x04200000, 0x04200000 | 10 << 8 | 4, "internal san-port-channel 1", "-5", "int San-po1"},
    {0x04200000, 0x04ffffff, "internal san-port-channel 1", "-256", "int San-po1"},
    // mgmt_sup, inband: none
    {0x05000000, 0x05001000, "mgmt0", nullptr},
    {0x05080000, 0x05100000, "mgmt0 on slot 2", nullptr, "mgmt0/2"},
    {0x06000000, 0x06080000, "sup-fc0", nullptr},
    // eobc: a suffix in the short form only
    {0x07000000, 0x07000000 | 3 << 19, "control0", nullptr, nullptr, "-4"},
    {0x07000000, 0x07ffffff, "control0", nullptr, nullptr, "-32"},
    // vsan, vlan
    {0x08000000, 0x08000007, "cpp1/1/0", "-7"},
    {0x08f80001, 0x08ffffff, "vsan1", "-4095"},
    {0x08f80001, 0x08f80000, "vsan1", "-0"},
    {0x0901000a, 0x09010014, "Vlan10", "-20"},
    {0x0901000a, 0x09ffffff, "Vlan10", "-4095"},
    // fcip, fcmpls_tnnl
    {0x0a000000, 0x0a000004, "fcip1", "-5"},
    {0x0a000000, 0x0affffff, "fcip1", "-4096"},
    {0x0f000000, 0x0f000004, "fc-tunnel 1", "-5"},
    {0x0f000000, 0x0fffffff, "fc-tunnel 1", "-4096"},
    // iscsi, umbra, xlport, kiro, pemu
    {0x0b000000, 0x0b000000 | 2 << 19 | 4 << 12 | 9, "iscsi1/1", "-5"},
    {0x0c000000, 0x0c000000 | 2 << 19 | 4 << 12 | 9, "svc1/1", "-5"},
    {0x0d000000, 0x0d000000 | 2 << 19 | 4 << 12 | 9, "xlport 1/1", "-5"},
    {0x12000000, 0x12000000 | 2 << 19 | 4 << 12 | 9, "kiro1/1", "-5"},
    {0x21000000, 0x21000000 | 2 << 19 | 4 << 12 | 9, "pemu1/1", "-5"},
    {0x21000000, 0x21ffffff, "pemu1/1", "-128"},
    // tk
    {0x0e000000, 0x0e000000 | 300, "tk1/1/1", "-301"},
    {0x0e000000, 0x0effffff, "tk1/1/1", "-16384"},
    // nalp_vxe, xgfc_ifc, zeff_vxe
    {0x10000000, 0x10000305, "nalp 0:0", "-5"},
    {0x10000001, 0x10ffff00, "nalp 0:1", "-0"},
    {0x11000000, 0x110000f4, "ifc 1:1:1", "-5"},
    {0x11000000, 0x11ffffff, "ifc 1:1:1", "-16"},
    {0x13000000, 0x13000305, "zeba 0:0", "-5", "zeff 0:0"},
    {0x13000000, 0x13ffffff, "zeba 0:0", "-255", "zeff 0:0"},
    // dorsa, eth_inband: none
    {0x14000000, 0x14000001, "dorsa1/1/1", nullptr},
    {0x15010000, 0x15020000, "sup-eth1", nullptr},
    // eth_port_channel
    {0x16000000, 0x16000004, "port-channel1", "-5", "Po1"},
    {0x16000000, 0x16000fff, "port-channel1", "-4096", "Po1"},
    {0x16000000, 0x16000000 | 10 << 12 | 4, "port-channel1", "-10", "Po1"},
    {0x16000000, 0x16ffffff, "port-channel1", "-4095", "Po1"},
    // null_interface: none
    {0x17000000, 0x17000001, "Null0", nullptr},
    // tunnel
    {0x18000005, 0x18010009, "Tunnel5", "-9"},
    {0x18000005, 0x18ffffff, "Tunnel5", "-65535"},
    // eth_inband_diag: none
    {0x19200000, 0x19200001, "sup-diag0", nullptr},
    // lveth, veth: a suffix in the long form only
    {0x1b000000, 0x1b000000 | 1 << 16 | 4 << 4 | 3, "lveth1/1", "-5", nullptr, nullptr},
    {0x1b000000, 0x1b000000 | 4 << 4 | 8, "lveth1/1", "-8", nullptr, nullptr},
    {0x1b000000, 0x1b00fff3, "lveth1/1", "-4096", nullptr, nullptr},
    {0x1b000000, 0x1bffffff, "lveth1/1", "-12", nullptr, nullptr},
    {0x1c000000, 0x1c000040, "Vethernet1", "-5", "Veth1", nullptr},
    {0x1c000000, 0x1c000047, "Vethernet1", "-7", "Veth1", nullptr},
    {0x1c000000, 0x1cfffff0, "Vethernet1", "-1048576", "Veth1", nullptr},
    {0x1c000000, 0x1cffffff, "Vethernet1", "-15", "Veth1", nullptr},
    // vif: one more than its name shows
    {0x1d000000, 0x1d000004, "vif0", "-5"},
    {0x1d000000, 0x1dffffff, "vif0", "-1048576"},
    // vfc: by the subtype of the last, but in the short form always the low 16 bits
    {0x1e000000, 0x1e000004, "vfc1", "-5"},
    {0x1e000000, 0x1e00ffff, "vfc1", "-65536"},
    {0x1e000000, 0x1e10f004, "vfc1", "-5", nullptr, "-61445"},
    {0x1e100000, 0x1e100fff, "vfc-po1", "-4096", "tunnel-te0"},
    {0x1e280000, 0x1e280000 | 1 << 15 | 4 << 8, "vfc17/1", "-5", nullptr, "-33793"},
    {0x1e300000, 0x1e300004, "vfc-veth1", "-0", nullptr, "-5"},
    {0x1e400000, 0x1e40f204, "vfc1/1/1", "-0", nullptr, "-61957"},
    {0x1e500000, 0x1e500004, "", "-0", nullptr, "-5"},
    {0x1e500000, 0x1e000004, "", "-5"},
    // sat_phy_eth
    {0x1f000000, 0x1f000000 | 4 << 6, "Ethernet1/1/1", "-5", "Eth1/1/1"},
    {0x1f000000, 0x1f000000 | 4 << 6 | 7, "Ethernet1/1/1", "-7", "Eth1/1/1"},
    {0x1f000000, 0x1fffffc0, "Ethernet1/1/1", "-64", "Eth1/1/1"},
    {0x1f000000, 0x1fffffff, "Ethernet1/1/1", "-63", "Eth1/1/1"},
    // sat_phy_eth_fif: none
    {0x20000000, 0x20000040, "fif1/1", nullptr},
    // overlay: by the kind of the last; in the short form for the kinds 1 and 4 only
    {0x22080005, 0x22080009, "Overlay5", "-9"},
    {0x22100005, 0x22100009, "tunnel-te5", "-9", nullptr, nullptr},
    {0x22180005, 0x22180009, "mti5", "-9", nullptr, nullptr},
    {0x22200005, 0x2220ffff, "peer-id5", "-65535"},
    {0x22080005, 0x22280009, "Overlay5", nullptr},
    {0x22080005, 0x22000009, "Overlay5", nullptr},
    {0x22000005, 0x22080009, "", "-9"},
    {0x22000005, 0x22000009, "", nullptr},
    // vl3, marn: none
    {0x23000000, 0x23000001, "Virtual Layer-3", nullptr, "vl3"},
    {0x23400000, 0x23400001, "Replicator1/0/1", nullptr, "repl1/0/1"},
    {0x24000000, 0x24000001, "Gateway Port-Channel0:0", nullptr, "marn0:0"},
    // ruk_eth
    {0x25000000, 0x25000000 | 4 << 6, "Ethernet1/1", "-5", "Eth1/1"},
    {0x25000000, 0x25000000 | 4 << 6 | 7, "Ethernet1/1", "-7", "Eth1/1"},
    {0x25000000, 0x25ffffc0, "Ethernet1/1", "-256", "Eth1/1"},
    {0x25000000, 0x25ffffff, "Ethernet1/1", "-63", "Eth1/1"},
    // Types without a name of their own: none
    {0x26000001, 0x26000002, "0x26000001", nullptr},
    {0x27000000, 0x27000002, "0x27000000", nullptr},
    {0x4a000000, 0x4a000002, "0x4a000000", nullptr},
    // The flag of the wildcard values makes no other type, but another value.
    {0x0901000a, 0x8901000a, "Vlan10", "-10"},
};
// clang-format on

using range_formatter = int32_t (*)(char *, int32_t, const IfIndex *);

// What the result and the buffer are at one size, told in the contract's own order.
void expect_range(range_formatter format, const range_row &row, const std::string &name,
                  const char *suffix, int32_t size)
{
    SCOPED_TRACE(testing::Message()
                 << std::hex << row.first << "-" << row.last << std::dec << " size " << size);
    const IfIndex pair[2] = {row.first, row.last};
    const auto length = static_cast<int32_t>(name.size());
    guarded_buffer buffer;
    const int32_t result = format(buffer.at(), size, pair);
    if (length >= size) {
        EXPECT_EQ(result, 0);
        buffer.expect("", size);
        return;
    }
    if (suffix == nullptr) {
        EXPECT_EQ(result, length * 2);
        buffer.expect(name, size);
        return;
    }
    const auto suffix_length = static_cast<int32_t>(strlen(suffix));
    if (suffix_length >= size) {
        EXPECT_EQ(result, 0);
        buffer.expect(name, size);
        return;
    }
    EXPECT_EQ(result, length + suffix_length);
    buffer.expect((name + suffix).substr(0, static_cast<size_t>(size - 1)), size);
}

} // namespace

TEST(snprintf_if_index_range, appends_the_number_of_the_last_by_type_within_every_size)
{
    for (const range_row &row : k_rows) {
        for (int32_t size = -1; size <= 40; ++size) {
            expect_range(snprintf_if_index_range, row, row.long_name, row.long_suffix, size);
        }
    }
}

TEST(snprintf_if_index_range_short, appends_the_number_of_the_last_by_type_within_every_size)
{
    for (const range_row &row : k_rows) {
        const char *name = row.short_name ? row.short_name : row.long_name;
        const char *suffix = row.short_suffix == k_same ? row.long_suffix : row.short_suffix;
        for (int32_t size = -1; size <= 40; ++size) {
            expect_range(snprintf_if_index_range_short, row, name, suffix, size);
        }
    }
}

TEST(snprintf_if_index_range, has_a_row_for_every_type_with_a_name)
{
    bool seen[256] = {};
    for (const range_row &row : k_rows) {
        seen[row.first >> 24] = true;
    }
    for (size_t type = 1; type < 40; ++type) {
        EXPECT_EQ(seen[type], type != 3) << type;
    }
}

TEST(snprintf_if_index_range, gives_the_single_name_when_both_ends_are_equal)
{
    struct {
        IfIndex value;
        const char *long_name;
        const char *short_name;
    } const rows[] = {
        {0x17000000, "Null0", "Null0"},
        {0x0901000a, "Vlan10", "Vlan10"},
        {0x1a000000, "Ethernet1/1", "Eth1/1"},
        {0x05080000, "mgmt0 on slot 2", "mgmt0/2"},
        {0x22000000, "", ""},
        {0x1e080005, "vfc6", "Overlay5"},
        {0x26000001, "0x26000001", "0x26000001"},
    };
    for (const auto &row : rows) {
        const IfIndex pair[2] = {row.value, row.value};
        guarded_buffer buffer;
        EXPECT_EQ(snprintf_if_index_range(buffer.at(), 32, pair),
                  static_cast<int32_t>(strlen(row.long_name)));
        buffer.expect(row.long_name, 32);
        EXPECT_EQ(snprintf_if_index_range_short(buffer.at(), 32, pair),
                  static_cast<int32_t>(strlen(row.short_name)));
        buffer.expect(row.short_name, 32);
    }
}

TEST(snprintf_if_index_range, counts_a_name_without_a_suffix_twice)
{
    const IfIndex pair[2] = {0x17000000, 0x17000001};
    char buffer[32];
    EXPECT_EQ(snprintf_if_index_range(buffer, 32, pair), 10);
    EXPECT_STREQ(buffer, "Null0");
}

TEST(snprintf_if_index_range, leaves_the_buffer_alone_when_the_ends_differ_in_type)
{
    const IfIndex pairs[][2] = {
        {0x01000000, 0x02000000}, {0x04000000, 0x16000000}, {0x00000000, 0x00000000},
        {0x03000000, 0x03000001}, {0x01000000, 0x00000000}, {0x00000000, 0x01000000},
        {0xfe000000, 0xfe000001}, {0x4b000000, 0x4b000001}, {0xff000000, 0xff000000},
    };
    for (const auto &pair : pairs) {
        guarded_buffer buffer;
        EXPECT_EQ(snprintf_if_index_range(buffer.at(), 32, pair), 0);
        EXPECT_EQ(snprintf_if_index_range_short(buffer.at(), 32, pair), 0);
        buffer.expect_untouched();
    }
}

TEST(snprintf_if_index_range, writes_nothing_without_a_buffer)
{
    const IfIndex pair[] = {0x09010064, 0x09010065};
    EXPECT_EQ(snprintf_if_index_range(nullptr, 32, pair), 0);
    EXPECT_EQ(snprintf_if_index_range_short(nullptr, 32, pair), 0);
    for (const int32_t size : {0, -1, INT32_MIN}) {
        guarded_buffer buffer;
        EXPECT_EQ(snprintf_if_index_range(buffer.at(), size, pair), 0);
        buffer.expect_untouched();
    }
}

TEST(snprintf_if_index_range, empties_a_buffer_that_is_too_small_for_the_first_name)
{
    const IfIndex pair[2] = {0x1a000000, 0x1a001000};
    guarded_buffer buffer;
    EXPECT_EQ(snprintf_if_index_range(buffer.at(), 8, pair), 0);
    buffer.expect("", 8);
}

// The bound of the suffix is the whole size although it starts behind the name: a suffix that is
// cut still counts in full, and only one that is as long as the size is taken back.
TEST(snprintf_if_index_range, measures_the_suffix_against_the_whole_size)
{
    const IfIndex vlans[2] = {0x0901000a, 0x09010014};
    guarded_buffer cut;
    EXPECT_EQ(snprintf_if_index_range(cut.at(), 8, vlans), 9);
    cut.expect("Vlan10-", 8);

    guarded_buffer full;
    EXPECT_EQ(snprintf_if_index_range(full.at(), 7, vlans), 9);
    full.expect("Vlan10", 7);

    const IfIndex channels[2] = {0x16000000, 0x16ffffff};
    guarded_buffer taken_back;
    EXPECT_EQ(snprintf_if_index_range_short(taken_back.at(), 5, channels), 0);
    taken_back.expect("Po1", 5);
}
