// The OpenFlow dump: every line, every bit, every length.
#include "ruk/openflow.h"

#include <bit>
#include <memory>
#include <string>

#include "tests/ofp/messages.h"
#include "tests/support/capture.h"

using ruk_test::Bytes;
using ruk_test::captured_stdout;
using ruk_test::features_reply;
using ruk_test::phy_port;

namespace
{

// Two numbers are printed as they are stored, so they depend on the host.
constexpr bool k_little = std::endian::native == std::endian::little;
const std::string k_datapath_id = k_little ? "578437695752307201" : "72623859790382856";
const std::string k_port_number = k_little ? "256" : "1";

// Calls dump with a heap copy that ends where bytes do and starts at an address of every
// alignment in turn, and expects the same text each time.
void expect_dump(int32_t (*dump)(const void *), const Bytes &bytes, const std::string &expected)
{
    for (size_t offset = 0; offset < 8; ++offset) {
        SCOPED_TRACE(offset);
        const auto block = std::make_unique<uint8_t[]>(offset + bytes.size());
        std::copy(bytes.begin(), bytes.end(), block.get() + offset);
        int32_t result = -1;
        EXPECT_EQ(captured_stdout([&] { result = dump(block.get() + offset); }), expected);
        EXPECT_EQ(result, 0);
    }
}

std::string feature_line(uint32_t word, const char *label)
{
    int32_t result = -1;
    const std::string text =
        captured_stdout([&] { result = brel_dump_phy_port_features(word, label); });
    EXPECT_EQ(result, 0);
    return text;
}

// A word of the switch and the names that its line shows.
struct WordRow {
    uint32_t word;
    std::string names;
};

void expect_lines(int32_t (*dump)(uint32_t), const std::string &start,
                  std::initializer_list<WordRow> rows)
{
    for (const WordRow &row : rows) {
        SCOPED_TRACE(row.word);
        int32_t result = -1;
        EXPECT_EQ(captured_stdout([&] { result = dump(row.word); }), start + row.names + "\n");
        EXPECT_EQ(result, 0);
    }
}

// What every port of these tests prints before its config word.
const std::string k_port_start = "brel_dump_phy_port: Port number:             " + k_port_number +
                                 "\n"
                                 "brel_dump_phy_port: hw_address:              0:1b:2:3d:e:ff\n";

const std::string k_plain_port_rest = "brel_dump_port_config: Port config 0\n"
                                      "brel_dump_port_state: Port state 0\n"
                                      ": Enabled feature: \n"
                                      ": Advertised feature: \n"
                                      ": Supported feature: \n"
                                      ": Peer feature: \n";

const std::string k_plain_port =
    k_port_start + "brel_dump_phy_port: name:                    eth1/1\n" + k_plain_port_rest;

} // namespace

TEST(brel_ofp_dump_stats, prints_zeros)
{
    const brel_ofp_stats stats = {};
    int32_t result = -1;
    EXPECT_EQ(captured_stdout([&] { result = brel_ofp_dump_stats(&stats); }),
              "brel_ofp_dump_stats: Total messages sent:           0\n"
              "brel_ofp_dump_stats: OFPT_HELLO:                    0\n"
              "brel_ofp_dump_stats: OFPT_ERROR:                    0\n"
              "brel_ofp_dump_stats: OFPT_ECHO_REQUEST:             0\n"
              "brel_ofp_dump_stats: OFPT_ECHO_REPLY:               0\n"
              "brel_ofp_dump_stats: OFPT_VENDOR:                   0\n"
              "brel_ofp_dump_stats: OFPT_FEATURES_REQUEST:         0\n"
              "brel_ofp_dump_stats: OFPT_FEATURES_REPLY:           0\n"
              "brel_ofp_dump_stats: OFPT_GET_CONFIG_REQUEST:       0\n"
              "brel_ofp_dump_stats: OFPT_GET_CONFIG_REPLY:         0\n"
              "brel_ofp_dump_stats: OFPT_SET_CONFIG:               0\n"
              "brel_ofp_dump_stats: OFPT_PACKET_IN:                0\n"
              "brel_ofp_dump_stats: OFPT_FLOW_REMOVED:             0\n"
              "brel_ofp_dump_stats: OFPT_PORT_STATUS:              0\n"
              "brel_ofp_dump_stats: OFPT_PACKET_OUT:               0\n"
              "brel_ofp_dump_stats: OFPT_FLOW_MOD:                 0\n"
              "brel_ofp_dump_stats: OFPT_PORT_MOD:                 0\n"
              "brel_ofp_dump_stats: OFPT_STATS_REQUEST:            0\n"
              "brel_ofp_dump_stats: OFPT_STATS_REPLY:              0\n"
              "brel_ofp_dump_stats: OFPT_BARRIER_REQUEST:          0\n"
              "brel_ofp_dump_stats: OFPT_BARRIER_REPLY:            0\n"
              "brel_ofp_dump_stats: OFPT_QUEUE_GET_CONFIG_REQUEST: 0\n"
              "brel_ofp_dump_stats: OFPT_QUEUE_GET_CONFIG_REPLY:   0\n"
              "brel_ofp_dump_stats: Total messages received:       0\n"
              "brel_ofp_dump_stats: OFPT_HELLO:                    0\n"
              "brel_ofp_dump_stats: OFPT_ERROR:                    0\n"
              "brel_ofp_dump_stats: OFPT_ECHO_REQUEST:             0\n"
              "brel_ofp_dump_stats: OFPT_ECHO_REPLY:               0\n"
              "brel_ofp_dump_stats: OFPT_VENDOR:                   0\n"
              "brel_ofp_dump_stats: OFPT_FEATURES_REQUEST:         0\n"
              "brel_ofp_dump_stats: OFPT_FEATURES_REPLY:           0\n"
              "brel_ofp_dump_stats: OFPT_GET_CONFIG_REQUEST:       0\n"
              "brel_ofp_dump_stats: OFPT_GET_CONFIG_REPLY:         0\n"
              "brel_ofp_dump_stats: OFPT_SET_CONFIG:               0\n"
              "brel_ofp_dump_stats: OFPT_PACKET_IN:                0\n"
              "brel_ofp_dump_stats: OFPT_FLOW_REMOVED:             0\n"
              "brel_ofp_dump_stats: OFPT_PORT_STATUS:              0\n"
              "brel_ofp_dump_stats: OFPT_PACKET_OUT:               0\n"
              "brel_ofp_dump_stats: OFPT_FLOW_MOD:                 0\n"
              "brel_ofp_dump_stats: OFPT_PORT_MOD:                 0\n"
              "brel_ofp_dump_stats: OFPT_STATS_REQUEST:            0\n"
              "brel_ofp_dump_stats: OFPT_STATS_REPLY:              0\n"
              "brel_ofp_dump_stats: OFPT_BARRIER_REQUEST:          0\n"
              "brel_ofp_dump_stats: OFPT_BARRIER_REPLY:            0\n"
              "brel_ofp_dump_stats: OFPT_QUEUE_GET_CONFIG_REQUEST: 0\n"
              "brel_ofp_dump_stats: OFPT_QUEUE_GET_CONFIG_REPLY:   0\n");
    EXPECT_EQ(result, 0);
}

TEST(brel_ofp_dump_stats, prints_each_counter_at_its_type)
{
    brel_ofp_stats stats;
    for (int32_t type = 0; type < 22; ++type) {
        stats.sent[type] = 100 + type;       // 2431 together
        stats.received[type] = -1000 - type; // -22231 together
    }
    EXPECT_EQ(captured_stdout([&] { brel_ofp_dump_stats(&stats); }),
              "brel_ofp_dump_stats: Total messages sent:           2431\n"
              "brel_ofp_dump_stats: OFPT_HELLO:                    100\n"
              "brel_ofp_dump_stats: OFPT_ERROR:                    101\n"
              "brel_ofp_dump_stats: OFPT_ECHO_REQUEST:             102\n"
              "brel_ofp_dump_stats: OFPT_ECHO_REPLY:               103\n"
              "brel_ofp_dump_stats: OFPT_VENDOR:                   104\n"
              "brel_ofp_dump_stats: OFPT_FEATURES_REQUEST:         105\n"
              "brel_ofp_dump_stats: OFPT_FEATURES_REPLY:           106\n"
              "brel_ofp_dump_stats: OFPT_GET_CONFIG_REQUEST:       107\n"
              "brel_ofp_dump_stats: OFPT_GET_CONFIG_REPLY:         108\n"
              "brel_ofp_dump_stats: OFPT_SET_CONFIG:               109\n"
              "brel_ofp_dump_stats: OFPT_PACKET_IN:                110\n"
              "brel_ofp_dump_stats: OFPT_FLOW_REMOVED:             111\n"
              "brel_ofp_dump_stats: OFPT_PORT_STATUS:              112\n"
              "brel_ofp_dump_stats: OFPT_PACKET_OUT:               113\n"
              "brel_ofp_dump_stats: OFPT_FLOW_MOD:                 114\n"
              "brel_ofp_dump_stats: OFPT_PORT_MOD:                 115\n"
              "brel_ofp_dump_stats: OFPT_STATS_REQUEST:            116\n"
              "brel_ofp_dump_stats: OFPT_STATS_REPLY:              117\n"
              "brel_ofp_dump_stats: OFPT_BARRIER_REQUEST:          118\n"
              "brel_ofp_dump_stats: OFPT_BARRIER_REPLY:            119\n"
              "brel_ofp_dump_stats: OFPT_QUEUE_GET_CONFIG_REQUEST: 120\n"
              "brel_ofp_dump_stats: OFPT_QUEUE_GET_CONFIG_REPLY:   121\n"
              "brel_ofp_dump_stats: Total messages received:       -22231\n"
              "brel_ofp_dump_stats: OFPT_HELLO:                    -1000\n"
              "brel_ofp_dump_stats: OFPT_ERROR:                    -1001\n"
              "brel_ofp_dump_stats: OFPT_ECHO_REQUEST:             -1002\n"
              "brel_ofp_dump_stats: OFPT_ECHO_REPLY:               -1003\n"
              "brel_ofp_dump_stats: OFPT_VENDOR:                   -1004\n"
              "brel_ofp_dump_stats: OFPT_FEATURES_REQUEST:         -1005\n"
              "brel_ofp_dump_stats: OFPT_FEATURES_REPLY:           -1006\n"
              "brel_ofp_dump_stats: OFPT_GET_CONFIG_REQUEST:       -1007\n"
              "brel_ofp_dump_stats: OFPT_GET_CONFIG_REPLY:         -1008\n"
              "brel_ofp_dump_stats: OFPT_SET_CONFIG:               -1009\n"
              "brel_ofp_dump_stats: OFPT_PACKET_IN:                -1010\n"
              "brel_ofp_dump_stats: OFPT_FLOW_REMOVED:             -1011\n"
              "brel_ofp_dump_stats: OFPT_PORT_STATUS:              -1012\n"
              "brel_ofp_dump_stats: OFPT_PACKET_OUT:               -1013\n"
              "brel_ofp_dump_stats: OFPT_FLOW_MOD:                 -1014\n"
              "brel_ofp_dump_stats: OFPT_PORT_MOD:                 -1015\n"
              "brel_ofp_dump_stats: OFPT_STATS_REQUEST:            -1016\n"
              "brel_ofp_dump_stats: OFPT_STATS_REPLY:              -1017\n"
              "brel_ofp_dump_stats: OFPT_BARRIER_REQUEST:          -1018\n"
              "brel_ofp_dump_stats: OFPT_BARRIER_REPLY:            -1019\n"
              "brel_ofp_dump_stats: OFPT_QUEUE_GET_CONFIG_REQUEST: -1020\n"
              "brel_ofp_dump_stats: OFPT_QUEUE_GET_CONFIG_REPLY:   -1021\n");
}

TEST(brel_ofp_dump_stats, wraps_its_totals)
{
    brel_ofp_stats stats = {};
    std::fill_n(stats.sent, 22, INT32_MAX); // 22 * 2^31 - 22
    stats.received[0] = INT32_MIN;
    stats.received[21] = -1;
    const std::string text = captured_stdout([&] { brel_ofp_dump_stats(&stats); });
    EXPECT_THAT(text, testing::StartsWith("brel_ofp_dump_stats: Total messages sent:           "
                                          "-22\n"
                                          "brel_ofp_dump_stats: OFPT_HELLO:                    "
                                          "2147483647\n"));
    EXPECT_THAT(text, testing::HasSubstr("\n"
                                         "brel_ofp_dump_stats: Total messages received:       "
                                         "2147483647\n"
                                         "brel_ofp_dump_stats: OFPT_HELLO:                    "
                                         "-2147483648\n"));
}

TEST(brel_dump_feat_reply, prints_the_switch_and_its_ports)
{
    const Bytes message = features_reply(0x000000ef, 0x00000fff,
                                         {{.name = "eth1/1",
                                           .config = 0x01,
                                           .state = 0x001,
                                           .curr = 0x0c0,
                                           .advertised = 0x001,
                                           .supported = 0xfff,
                                           .peer = 0},
                                          {.name = "uplink-port-0016", .state = 0x200}});
    expect_dump(
        brel_dump_feat_reply, message,
        "brel_dump_feat_reply: datapath_id:             " + k_datapath_id +
            "\n"
            "brel_dump_feat_reply: n_buffers:               256\n"
            "brel_dump_feat_reply: n_tables:                3\n"
            "brel_dump_feat_reply: capabilities:            239\n"
            "brel_dump_ofp_cap: Supported features: OFPC_FLOW_STATS OFPC_TABLE_STATS "
            "OFPC_PORT_STATS OFPC_STP OFPC_IP_REASM OFPC_QUEUE_STATS OFPC_ARP_MATCH_IP \n"
            "brel_dump_ofp_actions: Supported actions: OFPAT_SET_VLAN_VID OFPAT_SET_VLAN_PCP "
            "OFPAT_STRIP_VLAN OFPAT_SET_DL_SRC OFPAT_SET_DL_DST OFPAT_SET_NW_SRC "
            "OFPAT_SET_NW_DST OFPAT_SET_NW_TOS OFPAT_SET_TP_SRC OFPAT_SET_TP_DST OFPAT_ENQUEUE "
            "OFPAT_VENDOR \n"
            "brel_dump_feat_reply: Found (2) ports\n" +
            k_port_start +
            "brel_dump_phy_port: name:                    eth1/1\n"
            "brel_dump_port_config: Port config 1\n"
            "brel_dump_port_config: Port is admin down\n"
            "brel_dump_port_state: Port state 1\n"
            "brel_dump_port_state: Link is down\n"
            ": Enabled feature: 10GB_FD Copper \n"
            ": Advertised feature: 10MB_HD \n"
            ": Supported feature: 10MB_HD 10MB_FD 100MB_HD 100MB_FD 1GB_HD 1GB_FD 10GB_FD Copper "
            "Fiber Autoneg Pause Pause_asym \n"
            ": Peer feature: \n" +
            k_port_start +
            "brel_dump_phy_port: name:                    uplink-port-0016\n"
            "brel_dump_port_config: Port config 0\n"
            "brel_dump_port_state: Port state 512\n"
            "brel_dump_port_state: Learning and relaying frames\n"
            "brel_dump_port_state: Not part of spanning tree\n"
            ": Enabled feature: \n"
            ": Advertised feature: \n"
            ": Supported feature: \n"
            ": Peer feature: \n");
}

TEST(brel_dump_feat_reply, prints_numbers_without_a_sign)
{
    Bytes message = features_reply(0xffffff10, 0xffff0000, {});
    std::fill_n(message.begin() + 8, 13, 0xff); // datapath id, buffers, tables
    expect_dump(brel_dump_feat_reply, message,
                "brel_dump_feat_reply: datapath_id:             18446744073709551615\n"
                "brel_dump_feat_reply: n_buffers:               4294967295\n"
                "brel_dump_feat_reply: n_tables:                255\n"
                "brel_dump_feat_reply: capabilities:            4294967056\n"
                "brel_dump_ofp_cap: Supported features: \n"
                "brel_dump_ofp_actions: Supported actions: \n"
                "brel_dump_feat_reply: Found (0) ports\n");
}

// Messages of every odd length, in blocks of that length.
TEST(brel_dump_feat_reply, prints_whole_ports_only)
{
    const std::string start = "brel_dump_feat_reply: datapath_id:             " + k_datapath_id +
                              "\n"
                              "brel_dump_feat_reply: n_buffers:               256\n"
                              "brel_dump_feat_reply: n_tables:                3\n"
                              "brel_dump_feat_reply: capabilities:            1\n"
                              "brel_dump_ofp_cap: Supported features: OFPC_FLOW_STATS \n"
                              "brel_dump_ofp_actions: Supported actions: OFPAT_SET_NW_TOS "
                              "OFPAT_SET_TP_SRC OFPAT_SET_TP_DST OFPAT_ENQUEUE OFPAT_VENDOR \n";
    struct {
        size_t length;
        std::string rest;
    } const rows[] = {
        {32, "brel_dump_feat_reply: Found (0) ports\n"},
        {33, "brel_dump_feat_reply: Found (0) ports\n"},
        {79, "brel_dump_feat_reply: Found (0) ports\n"},
        {80, "brel_dump_feat_reply: Found (1) ports\n" + k_plain_port},
        {81, "brel_dump_feat_reply: Found (1) ports\n" + k_plain_port},
        {127, "brel_dump_feat_reply: Found (1) ports\n" + k_plain_port},
        {128, "brel_dump_feat_reply: Found (2) ports\n" + k_plain_port + k_plain_port},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.length);
        Bytes message = features_reply(1, 8, {{}, {}});
        message.resize(row.length);
        message[3] = static_cast<uint8_t>(row.length);
        expect_dump(brel_dump_feat_reply, message, start + row.rest);
    }
}

// Fields that the message does not reach count as zeros.
TEST(brel_dump_feat_reply, reads_no_field_behind_a_short_message)
{
    struct {
        uint8_t length;
        size_t block; // a header is always there
        std::string datapath_id;
        const char *n_buffers;
        const char *n_tables;
        const char *capabilities;
        const char *features;
    } const rows[] = {
        {0, 8, "0", "0", "0", "0", ""},
        {4, 8, "0", "0", "0", "0", ""},
        {8, 8, "0", "0", "0", "0", ""},
        {16, 16, k_datapath_id, "0", "0", "0", ""},
        {19, 19, k_datapath_id, "256", "0", "0", ""},
        {20, 20, k_datapath_id, "256", "0", "0", ""},
        {21, 21, k_datapath_id, "256", "3", "0", ""},
        {28, 28, k_datapath_id, "256", "3", "1", "OFPC_FLOW_STATS "},
        {31, 31, k_datapath_id, "256", "3", "1", "OFPC_FLOW_STATS "},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.length);
        Bytes message = features_reply(1, 8, {});
        message.resize(row.block);
        message[3] = row.length;
        expect_dump(brel_dump_feat_reply, message,
                    "brel_dump_feat_reply: datapath_id:             " + row.datapath_id +
                        "\n"
                        "brel_dump_feat_reply: n_buffers:               " +
                        row.n_buffers +
                        "\n"
                        "brel_dump_feat_reply: n_tables:                " +
                        row.n_tables +
                        "\n"
                        "brel_dump_feat_reply: capabilities:            " +
                        row.capabilities +
                        "\n"
                        "brel_dump_ofp_cap: Supported features: " +
                        row.features +
                        "\n"
                        "brel_dump_ofp_actions: Supported actions: \n"
                        "brel_dump_feat_reply: Found (0) ports\n");
    }
}

TEST(brel_dump_feat_reply, prints_every_port_of_the_longest_message)
{
    Bytes message = features_reply(0, 0, std::vector<ruk_test::Port>(1364));
    message.resize(65535);
    message[2] = message[3] = 0xff;
    std::string ports;
    for (int i = 0; i < 1364; ++i) {
        ports += k_plain_port;
    }
    EXPECT_EQ(captured_stdout([&] { brel_dump_feat_reply(message.data()); }),
              "brel_dump_feat_reply: datapath_id:             " + k_datapath_id +
                  "\n"
                  "brel_dump_feat_reply: n_buffers:               256\n"
                  "brel_dump_feat_reply: n_tables:                3\n"
                  "brel_dump_feat_reply: capabilities:            0\n"
                  "brel_dump_ofp_cap: Supported features: \n"
                  "brel_dump_ofp_actions: Supported actions: \n"
                  "brel_dump_feat_reply: Found (1364) ports\n" +
                  ports);
}

TEST(brel_dump_phy_port, ends_the_name_at_its_field)
{
    struct {
        std::string_view name;
        const char *printed;
    } const rows[] = {
        {{"", 0}, ""},
        {{"a\0b", 3}, "a"},
        {{"fifteen-letters", 15}, "fifteen-letters"},
        {{"sixteen-letters!", 16}, "sixteen-letters!"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.printed);
        Bytes record = phy_port({.name = row.name, .config = 0x5a000000});
        // Words behind the name that would print as letters, the config word among them.
        std::fill(record.begin() + 40, record.end(), 'Z');
        expect_dump(brel_dump_phy_port, record,
                    k_port_start + "brel_dump_phy_port: name:                    " + row.printed +
                        "\n"
                        "brel_dump_port_config: Port config 1509949440\n"
                        "brel_dump_port_state: Port state 0\n"
                        ": Enabled feature: \n"
                        ": Advertised feature: \n"
                        ": Supported feature: 10MB_FD 100MB_FD 1GB_HD 10GB_FD Autoneg Pause_asym \n"
                        ": Peer feature: 10MB_FD 100MB_FD 1GB_HD 10GB_FD Autoneg Pause_asym \n");
    }
}

TEST(brel_dump_phy_port, prints_config_and_state_bits)
{
    struct {
        uint32_t config;
        uint32_t state;
        std::string printed;
    } const rows[] = {
        {0x01, 0x001,
         "brel_dump_port_config: Port config 1\n"
         "brel_dump_port_config: Port is admin down\n"
         "brel_dump_port_state: Port state 1\n"
         "brel_dump_port_state: Link is down\n"},
        {0x02, 0x100,
         "brel_dump_port_config: Port config 2\n"
         "brel_dump_port_config: STP (802.1d) not supported\n"
         "brel_dump_port_state: Port state 256\n"
         "brel_dump_port_state: Learning but not relaying frames\n"
         "brel_dump_port_state: Not part of spanning tree\n"},
        {0x04, 0x200,
         "brel_dump_port_config: Port config 4\n"
         "brel_dump_port_config: Port drops all packets except STP\n"
         "brel_dump_port_state: Port state 512\n"
         "brel_dump_port_state: Learning and relaying frames\n"
         "brel_dump_port_state: Not part of spanning tree\n"},
        {0x08, 0x300,
         "brel_dump_port_config: Port config 8\n"
         "brel_dump_port_config: Port drops all packets\n"
         "brel_dump_port_state: Port state 768\n"
         "brel_dump_port_state: Learning but not relaying frames\n"
         "brel_dump_port_state: Learning and relaying frames\n"
         "brel_dump_port_state: Not part of spanning tree\n"},
        {0x10, 0xfffffcfe,
         "brel_dump_port_config: Port config 16\n"
         "brel_dump_port_config: No flooding to this port\n"
         "brel_dump_port_state: Port state -770\n"},
        {0x20, 0x201,
         "brel_dump_port_config: Port config 32\n"
         "brel_dump_port_config: Drop all packets forwarded to this port\n"
         "brel_dump_port_state: Port state 513\n"
         "brel_dump_port_state: Link is down\n"
         "brel_dump_port_state: Learning and relaying frames\n"
         "brel_dump_port_state: Not part of spanning tree\n"},
        {0x40, 0,
         "brel_dump_port_config: Port config 64\n"
         "brel_dump_port_config: Do not send packet in messages\n"
         "brel_dump_port_state: Port state 0\n"},
        {0xffffff80, 0xffffffff,
         "brel_dump_port_config: Port config -128\n"
         "brel_dump_port_state: Port state -1\n"
         "brel_dump_port_state: Link is down\n"
         "brel_dump_port_state: Learning but not relaying frames\n"
         "brel_dump_port_state: Learning and relaying frames\n"
         "brel_dump_port_state: Not part of spanning tree\n"},
        {0xffffffff, 0,
         "brel_dump_port_config: Port config -1\n"
         "brel_dump_port_config: Port is admin down\n"
         "brel_dump_port_config: STP (802.1d) not supported\n"
         "brel_dump_port_config: Port drops all packets except STP\n"
         "brel_dump_port_config: Port drops all packets\n"
         "brel_dump_port_config: No flooding to this port\n"
         "brel_dump_port_config: Drop all packets forwarded to this port\n"
         "brel_dump_port_config: Do not send packet in messages\n"
         "brel_dump_port_state: Port state 0\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.printed);
        expect_dump(brel_dump_phy_port, phy_port({.config = row.config, .state = row.state}),
                    k_port_start + "brel_dump_phy_port: name:                    eth1/1\n" +
                        row.printed +
                        ": Enabled feature: \n"
                        ": Advertised feature: \n"
                        ": Supported feature: \n"
                        ": Peer feature: \n");
    }
}

TEST(brel_dump_phy_port_features, prints_the_label_and_each_bit)
{
    const WordRow rows[] = {
        {0, ""},
        {0x001, "10MB_HD "},
        {0x002, "10MB_FD "},
        {0x004, "100MB_HD "},
        {0x008, "100MB_FD "},
        {0x010, "1GB_HD "},
        {0x020, "1GB_FD "},
        {0x040, "10GB_FD "},
        {0x080, "Copper "},
        {0x100, "Fiber "},
        {0x200, "Autoneg "},
        {0x400, "Pause "},
        {0x800, "Pause_asym "},
        {0xfffff000, ""},
        {0x555, "10MB_HD 100MB_HD 1GB_HD 10GB_FD Fiber Pause "},
        {0xffffffff,
         "10MB_HD 10MB_FD 100MB_HD 100MB_FD 1GB_HD 1GB_FD 10GB_FD Copper Fiber Autoneg Pause "
         "Pause_asym "},
    };
    for (const WordRow &row : rows) {
        SCOPED_TRACE(row.word);
        EXPECT_EQ(feature_line(row.word, ": Enabled feature"),
                  ": Enabled feature: " + row.names + "\n");
        EXPECT_EQ(feature_line(row.word, ""), ": " + row.names + "\n");
        EXPECT_EQ(feature_line(row.word, "100% %s"), "100% %s: " + row.names + "\n");
    }
}

TEST(brel_dump_phy_port_features, cuts_the_line_at_1023_characters)
{
    const std::string most(1023, 'x');
    EXPECT_EQ(feature_line(0x3, most.substr(0, 1005).c_str()),
              most.substr(0, 1005) + ": 10MB_HD 10MB_FD \n");
    EXPECT_EQ(feature_line(0x3, most.substr(0, 1006).c_str()),
              most.substr(0, 1006) + ": 10MB_HD 10MB_FD\n");
    EXPECT_EQ(feature_line(0x1, most.substr(0, 1020).c_str()), most.substr(0, 1020) + ": 1\n");
    EXPECT_EQ(feature_line(0x1, most.substr(0, 1022).c_str()), most.substr(0, 1022) + ":\n");
    EXPECT_EQ(feature_line(0x1, most.c_str()), most + "\n");
    EXPECT_EQ(feature_line(0xfff, std::string(100000, 'x').c_str()), most + "\n");
}

TEST(brel_dump_ofp_actions, tests_the_type_numbers_as_masks)
{
    const std::string all = "OFPAT_SET_VLAN_VID OFPAT_SET_VLAN_PCP OFPAT_STRIP_VLAN "
                            "OFPAT_SET_DL_SRC OFPAT_SET_DL_DST OFPAT_SET_NW_SRC OFPAT_SET_NW_DST "
                            "OFPAT_SET_NW_TOS OFPAT_SET_TP_SRC OFPAT_SET_TP_DST OFPAT_ENQUEUE "
                            "OFPAT_VENDOR ";
    expect_lines(brel_dump_ofp_actions, "brel_dump_ofp_actions: Supported actions: ",
                 {
                     {0, ""},
                     {1, "OFPAT_SET_VLAN_VID OFPAT_STRIP_VLAN OFPAT_SET_DL_DST OFPAT_SET_NW_DST "
                         "OFPAT_SET_TP_SRC OFPAT_ENQUEUE OFPAT_VENDOR "},
                     {2, "OFPAT_SET_VLAN_PCP OFPAT_STRIP_VLAN OFPAT_SET_NW_SRC OFPAT_SET_NW_DST "
                         "OFPAT_SET_TP_DST OFPAT_ENQUEUE OFPAT_VENDOR "},
                     {4, "OFPAT_SET_DL_SRC OFPAT_SET_DL_DST OFPAT_SET_NW_SRC OFPAT_SET_NW_DST "
                         "OFPAT_VENDOR "},
                     {8, "OFPAT_SET_NW_TOS OFPAT_SET_TP_SRC OFPAT_SET_TP_DST OFPAT_ENQUEUE "
                         "OFPAT_VENDOR "},
                     {0x10, "OFPAT_VENDOR "},
                     {0x800, "OFPAT_VENDOR "},
                     {0x8000, "OFPAT_VENDOR "},
                     {0x10000, ""},
                     {0x80000000, ""},
                     {0xffff0000, ""},
                     {0xf, all},
                     {0xffffffff, all},
                 });
}

TEST(brel_dump_ofp_cap, prints_each_bit)
{
    expect_lines(
        brel_dump_ofp_cap, "brel_dump_ofp_cap: Supported features: ",
        {
            {0, ""},
            {0x01, "OFPC_FLOW_STATS "},
            {0x02, "OFPC_TABLE_STATS "},
            {0x04, "OFPC_PORT_STATS "},
            {0x08, "OFPC_STP "},
            {0x10, ""},
            {0x20, "OFPC_IP_REASM "},
            {0x40, "OFPC_QUEUE_STATS "},
            {0x80, "OFPC_ARP_MATCH_IP "},
            {0xffffff00, ""},
            {0xffffffff, "OFPC_FLOW_STATS OFPC_TABLE_STATS OFPC_PORT_STATS OFPC_STP OFPC_IP_REASM "
                         "OFPC_QUEUE_STATS OFPC_ARP_MATCH_IP "},
        });
}
