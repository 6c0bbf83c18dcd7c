// The dump and a network analyser, tshark, must read the same facts from the same bytes.
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <unistd.h>

#include "ruk/openflow.h"
#include "tests/ofp/messages.h"
#include "tests/support/capture.h"

using ruk_test::Bytes;

namespace
{

// A fact as the analyser names and prints it, and as a line of the dump.
struct Fact {
    const char *field;
    const char *value;
    const char *line;
};

constexpr Fact k_facts[] = {
    {"openflow.n_buffers", "256", "brel_dump_feat_reply: n_buffers:               256\n"},
    {"openflow.n_tables", "3", "brel_dump_feat_reply: n_tables:                3\n"},
    {"openflow.capabilities", "0x00000005", "brel_dump_feat_reply: capabilities:            5\n"},
    {"openflow.flow_stats", "1", "OFPC_FLOW_STATS "},
    {"openflow.port_stats", "1", "OFPC_PORT_STATS "},
    {"openflow.hw_add", "00:1b:02:3d:0e:ff",
     "brel_dump_phy_port: hw_address:              0:1b:2:3d:e:ff\n"},
    {"openflow.port_name", "uplink-port-0016",
     "brel_dump_phy_port: name:                    uplink-port-0016\n"},
    {"openflow.port_config", "0x00000011", "brel_dump_port_config: Port config 17\n"},
    {"openflow.port_down", "1", "brel_dump_port_config: Port is admin down\n"},
    {"openflow.no_flood", "1", "brel_dump_port_config: No flooding to this port\n"},
    {"openflow.port_state", "0x00000001", "brel_dump_port_state: Port state 1\n"},
    {"openflow.link_down", "1", "brel_dump_port_state: Link is down\n"},
    {"openflow.port_curr", "0x00000640", ": Enabled feature: 10GB_FD Autoneg Pause \n"},
    {"openflow.10gb_fd", "1", "10GB_FD "},
    {"openflow.autoneg", "1", "Autoneg "},
    {"openflow.pause", "1", "Pause "},
    {"openflow.port_advertised", "0x00000001", ": Advertised feature: 10MB_HD \n"},
    {"openflow.port_supported", "0x00000020", ": Supported feature: 1GB_FD \n"},
    {"openflow.port_peer", "0x00000100", ": Peer feature: Fiber \n"},
};

Bytes message()
{
    return ruk_test::features_reply(0x05, 0x0800,
                                    {{.name = "uplink-port-0016",
                                      .config = 0x11,
                                      .state = 0x001,
                                      .curr = 0x640,
                                      .advertised = 0x001,
                                      .supported = 0x020,
                                      .peer = 0x100}});
}

void add_le32(Bytes &bytes, uint32_t word)
{
    for (const int shift : {0, 8, 16, 24}) {
        bytes.push_back(static_cast<uint8_t>(word >> shift));
    }
}

// A capture file of one IPv4 packet with a TCP segment from port 6653 that holds payload.
Bytes capture_file(const Bytes &payload)
{
    const size_t length = 20 + 20 + payload.size();
    Bytes file;
    add_le32(file, 0xa1b2c3d4); // classic format, seconds and microseconds
    add_le32(file, 0x00040002); // version 2.4
    for (const uint32_t word : {0u, 0u, 65535u, 101u}) {
        add_le32(file, word); // 101: packets begin with their IP header
    }
    for (const size_t word : {size_t{0}, size_t{0}, length, length}) {
        add_le32(file, static_cast<uint32_t>(word));
    }
    ruk_test::add(file, {0x45, 0, 0, static_cast<int>(length), 0, 1, 0x40, 0, 64, 6, 0, 0});
    ruk_test::add(file, {10, 0, 0, 1, 10, 0, 0, 2});
    ruk_test::add(file, {6653 >> 8, 6653 & 0xff, 0x9c, 0x40, 0, 0, 0, 1, 0, 0, 0, 1});
    ruk_test::add(file, {0x50, 0x18, 0x20, 0, 0, 0, 0, 0});
    file.insert(file.end(), payload.begin(), payload.end());
    return file;
}

std::string output_of(const std::string &command)
{
    std::string text;
    FILE *pipe = popen(command.c_str(), "r");
    char piece[4096];
    while (pipe != nullptr && fgets(piece, sizeof piece, pipe) != nullptr) {
        text += piece;
    }
    if (pipe == nullptr || pclose(pipe) != 0) {
        ADD_FAILURE() << "failed: " << command;
    }
    return text;
}

// What the analyser prints for each fact's field, in their order.
std::vector<std::string> dissected(const Bytes &file)
{
    char path[] = "/tmp/ruklog-dissector-XXXXXX";
    const int fd = mkstemp(path);
    EXPECT_EQ(write(fd, file.data(), file.size()), static_cast<ssize_t>(file.size()));
    close(fd);
    std::string command = std::string("tshark -n -r ") + path +
                          " -d tcp.port==6653,openflow -T fields -E separator=';' 2>/dev/null";
    for (const Fact &fact : k_facts) {
        command += std::string(" -e ") + fact.field;
    }
    std::istringstream line(output_of(command));
    unlink(path);
    std::vector<std::string> values;
    for (std::string value; std::getline(line, value, ';');) {
        if (!value.empty() && value.back() == '\n') {
            value.pop_back();
        }
        values.push_back(value == "True" ? "1" : value); // as newer versions print a bit
    }
    return values;
}

} // namespace

TEST(openflow_dissector, reads_the_same_facts)
{
    if (system("tshark --version >/dev/null 2>&1") != 0) {
        GTEST_SKIP() << "tshark is not installed: the dump is not compared with it.";
    }
    const Bytes bytes = message();
    const std::string dump = ruk_test::captured_stdout([&] { brel_dump_feat_reply(bytes.data()); });
    const std::vector<std::string> values = dissected(capture_file(bytes));
    ASSERT_EQ(values.size(), std::size(k_facts));
    for (size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(values[i], k_facts[i].value) << k_facts[i].field;
        EXPECT_THAT(dump, testing::HasSubstr(k_facts[i].line));
    }
}
