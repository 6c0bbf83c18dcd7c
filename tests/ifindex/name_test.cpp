// Names of single interfaces: every type in its long, short and diagnostic form.
#include "ruk/if_index_name.h"

#include <cstdio>
#include <span>
#include <string>

#include "ifindex/name_writer.h"
#include "tests/ifindex/guarded_buffer.h"

namespace
{

constexpr IfIndex k_top_bit = 0x80000000;

struct name_row {
    IfIndex value;
    const char *long_name;
    const char *short_name = nullptr;    // nullptr: as the long one
    const char *internal_name = nullptr; // nullptr: as the long one
};

// Fields are written at their positions: slot << 19 | port << 12 | sub-interface and so on.
// The last row of most types has all 24 bits set.
// clang-format off
constexpr name_row k_rows[] = {
    // phy_fc
    {0x01000000, "fc1/1"},
    {0x01000000 | 1 << 19 | 4 << 12, "fc2/5"},
    {0x01000000 | 1 << 19 | 4 << 12 | 7, "fc2/5.7"},
    {0x01fff000, "fc32/128"},
    {0x01ffffff, "fc32/128.4095"},
    // phy_eth
    {0x02000000, "GigabitEthernet1/1", "GigE1/1"},
    {0x02000000 | 1 << 19 | 4 << 12 | 7, "GigabitEthernet2/5.7", "GigE2/5.7"},
    {0x02ffffff, "GigabitEthernet32/128.4095", "GigE32/128.4095"},
    // port_channel, plain
    {0x04000000, "san-port-channel 1", "San-po1"},
    {0x04000000 | 4, "san-port-channel 5", "San-po5"},
    {0x04000000 | 10 << 8 | 4, "san-port-channel 5.10", "San-po5.10"},
    {0x040fffff, "san-port-channel 256.4095", "San-po256.4095"},
    {0x04c00004, "san-port-channel 5", "San-po5"},
    // port_channel, 10G member: slot << 16 | port << 12 | channel
    {0x04100000, "fc1/1", nullptr, "xgfc 1/1/1"},
    {0x04100000 | 2 << 16 | 3 << 12 | 7, "fc3/4", nullptr, "xgfc 8/3/4"},
    {0x041fffff, "fc16/16", nullptr, "xgfc 256/16/16"},
    // port_channel, internal: argument << 8 | channel
    {0x04200000, "internal san-port-channel 1", "int San-po1", "ipc 1/2/0"},
    {0x04200000 | 10 << 8 | 7, "internal san-port-channel 8", "int San-po8", "ipc 8/2/10"},
    {0x04300000 | 10 << 8 | 7, "internal san-port-channel 8", "int San-po8", "ipc 8/3/10"},
    {0x04ffffff, "internal san-port-channel 256", "int San-po256", "ipc 256/3/4095"},
    // mgmt_sup
    {0x05000000, "mgmt0"},
    {0x05000000 | 3 << 12, "mgmt3"},
    {0x0507ffff, "mgmt127"},
    {0x05000000 | 1 << 19 | 3 << 12, "mgmt0 on slot 2", "mgmt0/2"},
    {0x05ffffff, "mgmt0 on slot 32", "mgmt0/32"},
    // inband: supervisor << 19 | queue << 12
    {0x06000000, "sup-fc0", nullptr, "sup-fc "},
    {0x06000000 | 1 << 19 | 1 << 12, "sup-fc0", nullptr, "sup-fc (high)"},
    {0x06000000 | 1 << 19 | 2 << 12, "sup-fc0", nullptr, "sup-fc (low)"},
    {0x06000000 | 1 << 19 | 3 << 12, "sup-fc0", nullptr, "sup-fc (drop)"},
    {0x06000000 | 1 << 19 | 4 << 12, "sup-fc0", nullptr, "sup-fc "},
    {0x06000000 | 2 << 19, "sup-fc0", nullptr, "sup-fc(L) "},
    {0x06000000 | 2 << 19 | 1 << 12, "sup-fc0", nullptr, "sup-fc(L) (high)"},
    {0x06000000 | 3 << 19 | 2 << 12, "sup-fc0", nullptr, "sup-fc(R) (low)"},
    {0x06000000 | 5 << 19 | 3 << 12, "sup-fc0", nullptr, "sup-fc (drop)"},
    {0x06ffffff, "sup-fc0", nullptr, "sup-fc "},
    // inband of a linecard: supervisor 4 << 19 | queue << 12 | slot << 4
    {0x06000000 | 4 << 19, "lc-eth0/1", nullptr, "lc-eth(1) "},
    {0x06000000 | 4 << 19 | 1 << 12 | 8 << 4, "lc-eth0/9", nullptr, "lc-eth(9) (high)"},
    {0x06000000 | 4 << 19 | 2 << 12 | 8 << 4, "lc-eth0/9", nullptr, "lc-eth(9) (low)"},
    {0x06000000 | 4 << 19 | 3 << 12 | 8 << 4, "lc-eth0/9", nullptr, "lc-eth(9) (drop)"},
    {0x0627ffff, "lc-eth0/256", nullptr, "lc-eth(256) "},
    // eobc
    {0x07000000, "control0"},
    {0x07000000 | 3 << 19 | 5 << 12, "control3"},
    {0x07ffffff, "control31"},
    // vsan: below slot 31 a cpp port
    {0x08000000, "cpp1/1/0"},
    {0x08000000 | 1 << 19 | 4 << 12 | 7, "cpp2/5/7"},
    {0x08f7ffff, "cpp31/128/4095"},
    {0x08f80000, "vsan0"},
    {0x08f80000 | 4 << 12 | 7, "vsan7"},
    {0x08ffffff, "vsan4095"},
    // vlan
    {0x09000000, "Vlan0"},
    {0x09000000 | 1 << 16 | 100, "Vlan100"},
    {0x09ffffff, "Vlan4095"},
    // fcip
    {0x0a000000, "fcip1"},
    {0x0affffff, "fcip4096"},
    // iscsi, umbra, xlport
    {0x0b000000, "iscsi1/1"},
    {0x0b000000 | 1 << 19 | 4 << 12, "iscsi2/5"},
    {0x0bffffff, "iscsi32/128"},
    {0x0c000000, "svc1/1"},
    {0x0c000000 | 1 << 19 | 4 << 12, "svc2/5"},
    {0x0cffffff, "svc32/128"},
    {0x0d000000, "xlport 1/1"},
    {0x0d000000 | 1 << 19 | 4 << 12, "xlport 2/5"},
    {0x0dffffff, "xlport 32/128"},
    // tk: slot << 19 | dpp << 14 | port
    {0x0e000000, "tk1/1/1"},
    {0x0e000000 | 1 << 19 | 2 << 14 | 300, "tk2/3/301"},
    {0x0effffff, "tk32/32/16384"},
    // fcmpls_tnnl
    {0x0f000000, "fc-tunnel 1"},
    {0x0fffffff, "fc-tunnel 4096"},
    // nalp_vxe
    {0x10000000, "nalp 0:0"},
    {0x10000000 | 1 << 8 | 2, "nalp 1:2"},
    {0x10ffffff, "nalp 255:255"},
    // xgfc_ifc: slot << 11 | port << 4 | index
    {0x11000000, "ifc 1:1:1"},
    {0x11000000 | 1 << 11 | 2 << 4 | 3, "ifc 2:3:4"},
    {0x11ffffff, "ifc 32:128:16"},
    // kiro
    {0x12000000, "kiro1/1"},
    {0x12000000 | 1 << 19 | 4 << 12, "kiro2/5"},
    {0x12ffffff, "kiro32/128"},
    // zeff_vxe
    {0x13000000, "zeba 0:0", "zeff 0:0"},
    {0x13000000 | 1 << 8 | 2, "zeba 1:2", "zeff 1:2"},
    {0x13ffffff, "zeba 255:255", "zeff 255:255"},
    // dorsa: slot << 19 | node << 13 | port
    {0x14000000, "dorsa1/1/1"},
    {0x14000000 | 1 << 19 | 2 << 13 | 3, "dorsa2/3/4"},
    {0x14ffffff, "dorsa32/64/64"},
    // eth_inband
    {0x15000000, "sup-eth0"},
    {0x15000000 | 12 << 16, "sup-eth12"},
    {0x15ffffff, "sup-eth255"},
    // eth_port_channel: sub << 12 | channel
    {0x16000000, "port-channel1", "Po1"},
    {0x16000000 | 299, "port-channel300", "Po300"},
    {0x16000000 | 10 << 12 | 4, "port-channel5.10", "Po5.10"},
    {0x16ffffff, "port-channel4096.4095", "Po4096.4095"},
    // null_interface
    {0x17000000, "Null0"},
    {0x17ffffff, "Null0"},
    // tunnel
    {0x18000000, "Tunnel0"},
    {0x18000000 | 3 << 16 | 40000, "Tunnel40000"},
    {0x18ffffff, "Tunnel65535"},
    // eth_inband_diag
    {0x19200000, "sup-diag0"},
    {0x19ffffff, "sup-diag0"},
    // phy_ethernet
    {0x1a000000, "Ethernet1/1", "Eth1/1"},
    {0x1a000000 | 1 << 19 | 4 << 12, "Ethernet2/5", "Eth2/5"},
    {0x1a000000 | 1 << 19 | 4 << 12 | 7, "Ethernet2/5.7", "Eth2/5.7"},
    {0x1affffff, "Ethernet32/128.4095", "Eth32/128.4095"},
    // lveth: low slot << 16 | port << 4 | sub in place | high slot
    {0x1b000000, "lveth1/1"},
    {0x1b000000 | 0x12 << 16 | 5 << 4 | 2, "lveth531/6"},
    {0x1b000000 | 0x12 << 16 | 5 << 4 | 4 | 2, "lveth531/6.4"},
    {0x1b000000 | 0x12 << 16 | 5 << 4 | 8 | 1, "lveth275/6.8"},
    {0x1bffffff, "lveth1024/4096.12"},
    // veth: port << 4 | sub
    {0x1c000000, "Vethernet1", "Veth1"},
    {0x1c000000 | 4 << 4 | 7, "Vethernet5.7", "Veth5.7"},
    {0x1cfffff0, "Vethernet1048576", "Veth1048576"},
    {0x1cffffff, "Vethernet1048576.15", "Veth1048576.15"},
    // vif
    {0x1d000000, "vif0"},
    {0x1dffffff, "vif1048575"},
    // vfc: the short form shows bits 19-23 of 1 to 4 as an overlay
    {0x1e000000, "vfc1"},
    {0x1e000000 | 0xffff, "vfc65536"},
    {0x1e070005, "vfc6"},
    {0x1e080005, "vfc6", "Overlay5"},
    {0x1e0fffff, "vfc65536", "Overlay65535"},
    {0x1e100007, "vfc-po8", "tunnel-te7"},
    {0x1e17ffff, "vfc-po4096", "tunnel-te65535"},
    {0x1e180007, "vfc-po8", "mti7"},
    {0x1e200000 | 1 << 15 | 2 << 8, "vfc2/3", "peer-id33280"},
    {0x1e200000 | 16 << 15 | 2 << 8, "vfc17/3"},
    {0x1e2fffff, "vfc32/128"},
    {0x1e300009, "vfc-veth10"},
    {0x1e3fffff, "vfc-veth65536"},
    {0x1e400000, "vfc1/1/1"},
    {0x1e400000 | 2 << 12 | 3 << 8 | 99, "vfc100/4/3"},
    {0x1e400000 | 254, "vfc255/1/1"},
    {0x1e400000 | 255, "vfc0/1/1"},
    {0x1e4fffff, "vfc0/16/64"},
    {0x1e500000, ""},
    {0x1ef80000, ""},
    {0x1effffff, ""},
    // sat_phy_eth: satellite << 16 | module << 12 | port << 6 | sub, the last of which isn't shown
    {0x1f000000, "Ethernet1/1/1", "Eth1/1/1"},
    {0x1f000000 | 99 << 16 | 1 << 12 | 2 << 6 | 5, "Ethernet100/2/3", "Eth100/2/3"},
    {0x1fffffff, "Ethernet256/16/64", "Eth256/16/64"},
    // sat_phy_eth_fif: index << 21 | module << 12 | port << 6
    {0x20000000, "fif1/1"},
    {0x20000000 | 1 << 12 | 2 << 6, "fif2/3"},
    {0x20000000 | 1 << 21 | 1 << 12 | 2 << 6, "fif_int2/3"},
    {0x20ffffff, "fif_int16/64"},
    // pemu
    {0x21000000, "pemu1/1"},
    {0x21ffffff, "pemu32/128"},
    // overlay: kind << 19 | number
    {0x22000000, ""},
    {0x22000005, ""},
    {0x22000000 | 1 << 19 | 5, "Overlay5"},
    {0x22000000 | 2 << 19 | 5, "tunnel-te5"},
    {0x22000000 | 3 << 19 | 5, "mti5"},
    {0x22000000 | 4 << 19 | 5, "peer-id5"},
    {0x2227ffff, "peer-id65535"},
    {0x22000000 | 5 << 19 | 5, ""},
    {0x22ffffff, ""},
    // vl3: subtype << 22 | slot << 17 | port << 10 | number; the number stands in the middle
    {0x23000000, "Virtual Layer-3", "vl3"},
    {0x233fffff, "Virtual Layer-3", "vl3"},
    {0x23000000 | 1 << 22 | 1 << 17 | 6 << 10 | 3, "Replicator2/3/7", "repl2/3/7"},
    {0x23ffffff, "Replicator32/1023/128", "repl32/1023/128"},
    // marn: ftag << 12 | switch
    {0x24000000, "Gateway Port-Channel0:0", "marn0:0"},
    {0x24000000 | 5 << 12 | 7, "Gateway Port-Channel5:7", "marn5:7"},
    {0x24ffffff, "Gateway Port-Channel4095:4095", "marn4095:4095"},
    // ruk_eth: module << 14 | port << 6 | sub
    {0x25000000, "Ethernet1/1", "Eth1/1"},
    {0x25000000 | 2 << 14 | 4 << 6, "Ethernet3/5", "Eth3/5"},
    {0x25000000 | 2 << 14 | 4 << 6 | 7, "Ethernet3/5.7", "Eth3/5.7"},
    {0x25ffffff, "Ethernet1024/256.63", "Eth1024/256.63"},
};
// clang-format on

using formatter = int32_t (*)(char *, int32_t, IfIndex);

struct form {
    const char *name;
    formatter format;
};

constexpr form k_long_forms[] = {
    {"snprintf_if_index", snprintf_if_index},
    {"snprintf_if_index_native", snprintf_if_index_native},
};
constexpr form k_short_forms[] = {
    {"snprintf_if_index_short", snprintf_if_index_short},
    {"snprintf_if_index_short_native", snprintf_if_index_short_native},
};
constexpr form k_internal_forms[] = {
    {"snprintf_if_index_internal", snprintf_if_index_internal},
};

void expect_name(std::span<const form> forms, IfIndex value, const std::string &name)
{
    for (const form &form : forms) {
        SCOPED_TRACE(testing::Message() << form.name << " of 0x" << std::hex << value);
        expect_text_at_every_size(
            name, [&](char *buffer, int32_t size) { return form.format(buffer, size, value); });
    }
}

void expect_names(IfIndex value, const name_row &row)
{
    expect_name(k_long_forms, value, row.long_name);
    expect_name(k_short_forms, value, row.short_name ? row.short_name : row.long_name);
    expect_name(k_internal_forms, value, row.internal_name ? row.internal_name : row.long_name);
}

void expect_one_name(IfIndex value, const char *name)
{
    expect_names(value, {value, name});
}

} // namespace

TEST(snprintf_if_index, names_every_type_in_three_forms_within_every_size)
{
    for (const name_row &row : k_rows) {
        expect_names(row.value, row);
        // The flag of the wildcard values doesn't show.
        expect_names(row.value | k_top_bit, row);
    }
}

TEST(snprintf_if_index, shows_types_without_a_name_as_the_whole_number)
{
    expect_one_name(0x26000000, "0x26000000");
    expect_one_name(0x26abcdef, "0x26abcdef");
    expect_one_name(0xa6ffffff, "0xa6ffffff");
    expect_one_name(0x27000001, "0x27000001");
    expect_one_name(0x4affffff, "0x4affffff");
    expect_one_name(0xca000000, "0xca000000");
    for (IfIndex type = 38; type <= 74; ++type) {
        for (const IfIndex top : {IfIndex{0}, k_top_bit}) {
            const IfIndex value = top | type << 24 | 0x00c0ffee;
            char name[16];
            snprintf(name, sizeof name, "0x%08x", value);
            expect_one_name(value, name);
        }
    }
}

TEST(snprintf_if_index, gives_no_name_to_what_the_type_check_refuses)
{
    for (IfIndex type = 0; type <= 127; ++type) {
        if (type != 0 && type != 3 && type < 75) {
            continue;
        }
        for (const IfIndex fields : {0x000000u, 0x000001u, 0x09a5c3u, 0xffffffu}) {
            expect_one_name(type << 24 | fields, "");
            expect_one_name(k_top_bit | type << 24 | fields, "");
        }
    }
}

TEST(snprintf_if_index, gives_no_name_to_a_loopback)
{
    expect_one_name(0xfe000007, "");
}

TEST(snprintf_if_index, has_a_row_for_every_type_with_a_name)
{
    bool seen[128] = {};
    for (const name_row &row : k_rows) {
        seen[row.value >> 24] = true;
    }
    for (size_t type = 0; type < 128; ++type) {
        EXPECT_EQ(seen[type], type != 0 && type != 3 && type < 38) << type;
    }
}

TEST(snprintf_if_index, cuts_an_ethernet_name_at_seven_characters_for_a_size_of_eight)
{
    char buffer[8];
    EXPECT_EQ(snprintf_if_index(buffer, 8, 0x1a000000), 11);
    EXPECT_STREQ(buffer, "Etherne");
}

TEST(snprintf_if_index, counts_without_a_buffer)
{
    EXPECT_EQ(snprintf_if_index(nullptr, 0, 0x1a000000), 11);
    EXPECT_EQ(snprintf_if_index_short(nullptr, 100, 0x1a000000), 6);
    EXPECT_EQ(snprintf_if_index_internal(nullptr, -1, 0x04100000), 10);
    EXPECT_EQ(snprintf_if_index_from_if_db(nullptr, 10, 0x01000000), 0);
}

TEST(snprintf_if_index, takes_any_size_below_one_for_no_room)
{
    for (const int32_t size : {0, -1, INT32_MIN}) {
        char untouched = '#';
        EXPECT_EQ(snprintf_if_index(&untouched, size, 0x1a000000), 11);
        EXPECT_EQ(snprintf_if_index_short(&untouched, size, 0x1a000000), 6);
        EXPECT_EQ(snprintf_if_index_internal(&untouched, size, 0x04100000), 10);
        EXPECT_EQ(untouched, '#');
    }
}

TEST(sprintf_if_index, cuts_at_thirty_two_bytes)
{
    // No name is that long; the bound shows only in that the bytes behind stay.
    char buffer[40];
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(sprintf_if_index(buffer, 0x04ffffff), 29);
    EXPECT_STREQ(buffer, "internal san-port-channel 256");
    EXPECT_EQ(sprintf_if_index_short(buffer, 0x04ffffff), 13);
    EXPECT_STREQ(buffer, "int San-po256");
    EXPECT_EQ(sprintf_if_index_internal(buffer, 0x04ffffff), 14);
    EXPECT_STREQ(buffer, "ipc 256/3/4095");
    for (size_t i = 32; i < sizeof buffer; ++i) {
        EXPECT_EQ(buffer[i], '#') << i;
    }
}

TEST(if_db_wrappers, fail_and_leave_their_outputs_alone)
{
    char buffer[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(if_db_ifindex2str_wrapper(buffer, 4, 0x01000000), 7);
    EXPECT_EQ(buffer[0], '#');
    IfIndex value = 0xdeadbeef;
    EXPECT_EQ(if_db_str2ifindex_wrapper("bay3", &value), 7);
    EXPECT_EQ(value, 0xdeadbeef);
}

TEST(snprintf_if_index_from_if_db, empties_the_buffer_and_finds_nothing)
{
    for (const IfIndex value : {0x00000000u, 0x01000000u, 0x02000000u, 0x1a000000u}) {
        expect_text_at_every_size("", [&](char *buffer, int32_t size) {
            return snprintf_if_index_from_if_db(buffer, size, value);
        });
    }
}

TEST(if_index_is_physical_interface, holds_for_physical_ports_that_are_no_sub_interfaces)
{
    const std::pair<IfIndex, int32_t> rows[] = {
        {0x01000000, 1}, {0x01fff000, 1}, {0x01000001, 0}, {0x01000800, 0}, {0x02000000, 1},
        {0x02000001, 0}, {0x05000000, 1}, {0x05ffffff, 1}, {0x1a000000, 1}, {0x1afff000, 1},
        {0x1a000fff, 0}, {0x1f000000, 1}, {0x1fffffc0, 1}, {0x1f000001, 0}, {0x1f00003f, 0},
        {0x81000000, 1}, {0x9f000020, 0}, {0x00000000, 0}, {0x03000000, 0}, {0xfe000000, 0},
    };
    for (const auto &[value, expected] : rows) {
        EXPECT_EQ(if_index_is_physical_interface(value), expected) << std::hex << value;
    }
    for (IfIndex type = 0; type <= 255; ++type) {
        const IfIndex code = type & 0x7f;
        if (code != 1 && code != 2 && code != 5 && code != 26 && code != 31) {
            EXPECT_EQ(if_index_is_physical_interface(type << 24), 0) << type;
        }
    }
}

TEST(put_signed_decimal, writes_as_printf_does)
{
    const std::pair<int32_t, const char *> rows[] = {
        {0, "0"},
        {9, "9"},
        {10, "10"},
        {-1, "-1"},
        {2147483647, "2147483647"},
        {-2147483647, "-2147483647"},
        {INT32_MIN, "-2147483648"},
    };
    for (const auto &[value, text] : rows) {
        expect_text_at_every_size(text, [value = value](char *buffer, int32_t size) {
            return ifindex::put_name(
                buffer, size, [value](char *at) { return ifindex::put_signed_decimal(at, value); });
        });
    }
}

// Every length, and every number that a table or its edge has a part in.
TEST(put_decimal, writes_as_printf_does)
{
    const auto expect_same = [](uint32_t value) {
        char ours[16], theirs[16];
        *ifindex::put_decimal(ours, value) = '\0';
        snprintf(theirs, sizeof theirs, "%u", value);
        ASSERT_STREQ(ours, theirs);
    };
    for (uint32_t value = 0; value < 20000; ++value) {
        expect_same(value);
    }
    for (uint32_t power = 10000; power <= 1000000000; power *= 10) {
        for (uint32_t i = 0; i < 100; ++i) {
            expect_same(power - 50 + i);
            expect_same(power + i * 7919);
        }
        if (power == 1000000000) {
            break;
        }
    }
    expect_same(UINT32_MAX);
}
