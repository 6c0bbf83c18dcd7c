// Ranges: which types have them, the rules of each type from both sides, wrap-around, and walks.
#include <cstdint>
#include <set>
#include <vector>

#include "ruk/if_index_build.h"
#include "ruk/if_index_range.h"

namespace
{

constexpr IfIndex k_untouched = 0xdeadbeef;

struct next_row {
    const char *what;
    IfIndex first, last, current;
    uint32_t error;
    IfIndex next;
};

struct lookup_row {
    const char *what;
    IfIndex first, last;
    uint32_t offset;
    uint32_t error;
    IfIndex member;
};

struct count_row {
    const char *what;
    IfIndex first, last;
    uint32_t error;
    uint32_t count;
};

void check(const std::vector<next_row> &rows)
{
    for (const next_row &row : rows) {
        SCOPED_TRACE(std::string("next: ") + row.what);
        IfIndex next = k_untouched;
        EXPECT_EQ(if_index_get_next_if_index_in_range(row.first, row.last, row.current, &next),
                  row.error);
        EXPECT_EQ(next, row.next) << std::hex << next;
    }
}

void check(const std::vector<lookup_row> &rows)
{
    for (const lookup_row &row : rows) {
        SCOPED_TRACE(std::string("lookup: ") + row.what);
        IfIndex member = k_untouched;
        EXPECT_EQ(if_index_get_if_index_in_range(row.first, row.last, &member, row.offset),
                  row.error);
        EXPECT_EQ(member, row.member) << std::hex << member;
    }
}

void check(const std::vector<count_row> &rows)
{
    for (const count_row &row : rows) {
        SCOPED_TRACE(std::string("count: ") + row.what);
        uint32_t count = 0xdeadbeef;
        EXPECT_EQ(if_index_get_num_ports_in_if_index_range(row.first, row.last, &count), row.error);
        EXPECT_EQ(count, row.count);
    }
}

// Walks from first to last, by steps and by offsets, and expects both to give these members and the
// count to agree.
void check_walk(const char *what, const std::vector<IfIndex> &members)
{
    SCOPED_TRACE(what);
    const IfIndex first = members.front();
    const IfIndex last = members.back();
    IfIndex current = first;
    for (size_t i = 1; i < members.size(); ++i) {
        EXPECT_EQ(if_index_get_next_if_index_in_range(first, last, current, &current), 0U);
        EXPECT_EQ(current, members[i]) << std::hex << current;
    }
    IfIndex beyond = k_untouched;
    EXPECT_EQ(if_index_get_next_if_index_in_range(first, last, current, &beyond), 14U);
    EXPECT_EQ(beyond, k_untouched);
    uint32_t count = 0;
    EXPECT_EQ(if_index_get_num_ports_in_if_index_range(first, last, &count), 0U);
    EXPECT_EQ(count, members.size());
    for (uint32_t offset = 0; offset < members.size(); ++offset) {
        IfIndex member = 0;
        EXPECT_EQ(if_index_get_if_index_in_range(first, last, &member, offset), 0U);
        EXPECT_EQ(member, members[offset]) << std::hex << member;
    }
}

// A walk of types that can only step.
void check_steps(const char *what, const std::vector<IfIndex> &members)
{
    SCOPED_TRACE(what);
    IfIndex current = members.front();
    for (size_t i = 1; i < members.size(); ++i) {
        EXPECT_EQ(
            if_index_get_next_if_index_in_range(members.front(), members.back(), current, &current),
            0U);
        EXPECT_EQ(current, members[i]) << std::hex << current;
    }
    EXPECT_EQ(
        if_index_get_next_if_index_in_range(members.front(), members.back(), current, &current),
        14U);
    EXPECT_EQ(current, members.back());
    check(std::vector<count_row>{{what, members.front(), members.back(), 14, 0}});
    check(std::vector<lookup_row>{{what, members.front(), members.back(), 1, 14, k_untouched}});
}

bool is_known(uint32_t type)
{
    return type != 0 && type != 3 && type <= 74;
}

} // namespace

// Two members that differ in the wildcard bit alone are not equal, and nothing steps between them,
// so that what comes out is whether the type has a count at all.
TEST(if_index_get_num_ports_in_if_index_range, by_type)
{
    const std::set<uint32_t> counted{1, 2, 4, 9, 10, 11, 14, 15, 22, 26, 28, 29, 30, 31, 34, 37};
    for (uint32_t type = 0; type < 128; ++type) {
        const IfIndex value = type << 24;
        const IfIndex other = value | 0x80000000;
        const uint32_t error = !is_known(type) ? 11 : counted.count(type) == 0 ? 14 : 0;
        SCOPED_TRACE(type);
        check(std::vector<count_row>{{"not equal", value, other, error, error == 0 ? 1U : 0U}});
    }
}

// Equal members are a range of one member of any known type, with the wildcard bit or without.
TEST(if_index_ranges, of_equal_members)
{
    for (uint32_t top = 0; top < 256; ++top) {
        SCOPED_TRACE(top);
        const bool known = is_known(top & 0x7F);
        const IfIndex value = top << 24 | 0x123456;
        check(std::vector<count_row>{{"equal", value, value, known ? 0U : 11U, known ? 1U : 0U}});
        check(std::vector<lookup_row>{
            {"equal", value, value, 0, known ? 0U : 11U, known ? value : k_untouched}});
    }
}

TEST(if_index_ranges, of_types_that_have_none)
{
    const std::set<uint32_t> steppable{1,  2,  4,  9,  10, 11, 12, 14, 15, 18, 20,
                                       22, 24, 26, 28, 29, 30, 31, 33, 34, 37};
    for (uint32_t top = 0; top < 256; ++top) {
        const uint32_t type = top & 0x7F;
        if (steppable.count(type) != 0) {
            continue;
        }
        const uint32_t error = is_known(type) ? 14 : 11;
        const IfIndex first = top << 24;
        const IfIndex last = top << 24 | 0x00F11111;
        SCOPED_TRACE(top);
        check(std::vector<next_row>{{"no range", first, last, first, error, k_untouched}});
        check(std::vector<lookup_row>{{"no range", first, last, 1, error, k_untouched}});
        check(std::vector<lookup_row>{{"not the same", first, last, 0, error, k_untouched}});
        check(
            std::vector<lookup_row>{{"one member, offset 1", first, first, 1, error, k_untouched}});
        check(std::vector<count_row>{{"no range", first, last, error, 0}});
    }
}

TEST(if_index_ranges, of_mixed_and_unknown_types)
{
    check(std::vector<next_row>{
        {"last of another type", 0x01000000, 0x02001000, 0x01000000, 14, k_untouched},
        {"current of another type", 0x01000000, 0x01001000, 0x02000000, 14, k_untouched},
        {"first unknown", 0x00000000, 0x01001000, 0x01000000, 11, k_untouched},
        {"last unknown", 0x01000000, 0x03001000, 0x01000000, 11, k_untouched},
        {"current unknown", 0x01000000, 0x01001000, 0x4B000000, 11, k_untouched},
        {"unknown before mixed", 0x01000000, 0x02000000, 0xFE000000, 11, k_untouched},
        {"a loopback", 0xFE000000, 0xFE000005, 0xFE000000, 11, k_untouched},
    });
    check(std::vector<lookup_row>{
        {"last of another type", 0x01000000, 0x02001000, 0, 14, k_untouched},
        {"first unknown", 0x03000000, 0x01000000, 0, 11, k_untouched},
        {"last unknown", 0x01000000, 0x4B000000, 0, 11, k_untouched},
        {"a loopback", 0xFE000000, 0xFE000000, 0, 11, k_untouched},
    });
    check(std::vector<count_row>{
        {"last of another type", 0x01000000, 0x02001000, 14, 0},
        {"first unknown", 0x00000000, 0x01000000, 11, 0},
        {"last unknown", 0x01000000, 0x7F000000, 11, 0},
        {"equal and unknown", 0x03000000, 0x03000000, 11, 0},
        {"a loopback", 0xFE000001, 0xFE000001, 11, 0},
        {"equal without a rule", 0x17000000, 0x17000000, 0, 1},
    });
}

TEST(if_index_ranges, of_ports)
{
    check_walk("fc", {0x01000000, 0x01001000, 0x01002000, 0x01003000});
    check_walk("last fc ports", {0x01FFE000, 0x01FFF000});
    check_walk("gigabit", {0x02285000, 0x02286000, 0x02287000});
    check_walk("ethernet", {0x1A000000, 0x1A001000, 0x1A002000});
    check_walk("iscsi", {0x0BF80000, 0x0BF81000});
    check_walk("tk", {0x0EF1C005, 0x0EF1C006, 0x0EF1C007});
    check_walk("ruk_eth", {0x250081C0, 0x25008200, 0x25008240});
    check_steps("kiro", {0x12F80000, 0x12F81000});
    check_steps("pemu", {0x21F80000, 0x21F81000, 0x21F82000});
    check_steps("umbra", {0x0CF00000, 0x0CF01000});
    check(std::vector<count_row>{
        {"fc1/1-8", 0x01000000, 0x01007000, 0, 8},
        {"across slots", 0x01000000, 0x01087000, 14, 0},
        {"the wrong way round", 0x01007000, 0x01000000, 14, 0},
        {"sub-interfaces are not looked at", 0x01000FFF, 0x01001000, 0, 2},
        {"all of a ruk_eth module", 0x25008000, 0x2500BFC0, 0, 256},
        {"ruk_eth slot 514", 0x25808000, 0x25808040, 0, 2},
        {"ruk_eth slot 515", 0x2580C000, 0x2580C040, 14, 0},
        {"tk slot 30", 0x0EF00000, 0x0EF00001, 0, 2},
        {"tk slot 31", 0x0EF80000, 0x0EF80001, 14, 0},
        {"tk numbers of 14 bits", 0x0E000000, 0x0E003FFF, 0, 16384},
        {"tk dpp is not compared", 0x0E004000, 0x0E008001, 0, 2},
    });
    check(std::vector<lookup_row>{
        {"beyond", 0x01000000, 0x01007000, 8, 14, k_untouched},
        {"the sub-interface becomes 0", 0x01001FFF, 0x01002FFF, 0, 0, 0x01001000},
        {"equal members, offset 0, whole", 0x01001FFF, 0x01001FFF, 0, 0, 0x01001FFF},
        {"equal members, offset 1", 0x01001FFF, 0x01001FFF, 1, 14, k_untouched},
        {"across slots", 0x01000000, 0x01087000, 1, 14, k_untouched},
        {"the wrong way round", 0x01007000, 0x01000000, 0, 14, k_untouched},
        {"ports wrap at 8 bits", 0x01000000, 0x01007000, 256, 0, 0x01000000},
        {"and back", 0x01003000, 0x01007000, 255, 0, 0x01002000},
        {"and from the wrong way round", 0x01007000, 0x01001000, 250, 0, 0x01001000},
        {"with the largest offset", 0x01003000, 0x01007000, 0xFFFFFFFF, 0, 0x01002000},
        {"tk ports wrap at 16 bits", 0x0E000005, 0x0E000007, 65536, 0, 0x0E000005},
        {"tk ports don't wrap at 8", 0x0E000005, 0x0E000007, 256, 14, k_untouched},
        {"tk dpp of the first", 0x0E01C000, 0x0E000001, 1, 0, 0x0E01C001},
        {"tk slot 31", 0x0EF80000, 0x0EF80001, 1, 14, k_untouched},
        {"tk port 16383 is not built", 0x0E000000, 0x0E003FFF, 16383, 0, k_untouched},
        {"ruk_eth slot 515", 0x2580C000, 0x2580C040, 1, 14, k_untouched},
        {"ruk_eth ports wrap", 0x25008040, 0x250080C0, 255, 0, 0x25008000},
    });
    check(std::vector<next_row>{
        {"the last", 0x01000000, 0x01007000, 0x01007000, 14, k_untouched},
        {"the sub-interface becomes 0", 0x01000001, 0x01007002, 0x01001003, 0, 0x01002000},
        {"current on another slot", 0x01000000, 0x01007000, 0x01081000, 14, k_untouched},
        {"current before first", 0x01003000, 0x01007000, 0x01000000, 0, 0x01001000},
        {"last before first", 0x01007000, 0x01003000, 0x01000000, 0, 0x01001000},
        {"umbra on slot 30", 0x0CF00000, 0x0CF05000, 0x0CF00000, 0, 0x0CF01000},
        {"umbra on slot 31", 0x0CF80000, 0x0CF85000, 0x0CF80000, 14, k_untouched},
        {"kiro on slot 31", 0x12F80000, 0x12F85000, 0x12F80000, 0, 0x12F81000},
        {"tk on slot 31", 0x0EF80000, 0x0EF80005, 0x0EF80000, 14, k_untouched},
        {"tk takes the dpp of the first", 0x0E01C000, 0x0E000005, 0x0E008001, 0, 0x0E01C002},
        {"ruk_eth port 255 wraps to 0", 0x25008000, 0x2500BFC0, 0x2500BFC5, 0, 0x25008000},
        {"ruk_eth slot 515", 0x2580C000, 0x2580C040, 0x2580C000, 14, k_untouched},
        {"a wildcard bit is dropped", 0x81000000, 0x81001000, 0x81000000, 0, 0x01001000},
    });
}

TEST(if_index_ranges, of_phy_ethernet_step_sub_interfaces_too)
{
    check_steps("no sub-interfaces without offsets", {0x12000000, 0x12001000});
    check(std::vector<next_row>{
        {"from a sub-interface", 0x1A000001, 0x1A000005, 0x1A000001, 0, 0x1A000002},
        {"to the last", 0x1A000001, 0x1A000005, 0x1A000004, 0, 0x1A000005},
        {"beyond the last", 0x1A000001, 0x1A000005, 0x1A000005, 14, k_untouched},
        {"keeps the port of current", 0x1A000001, 0x1A000005, 0x1A003001, 0, 0x1A003002},
        {"from a port", 0x1A000000, 0x1A002005, 0x1A000000, 0, 0x1A001000},
        {"subs the wrong way round", 0x1A000005, 0x1A002001, 0x1A000000, 14, k_untouched},
        {"subs the wrong way round, from one", 0x1A000005, 0x1A002001, 0x1A000001, 14, k_untouched},
        {"another slot", 0x1A000001, 0x1A000005, 0x1A080001, 14, k_untouched},
        {"last on another slot", 0x1A000001, 0x1A080005, 0x1A000001, 14, k_untouched},
        {"sub 4095", 0x1A000001, 0x1A000FFF, 0x1A000FFF, 14, k_untouched},
    });
    check(std::vector<count_row>{
        {"counts ports only", 0x1A000001, 0x1A000005, 0, 1},
        {"whatever the subs", 0x1A000005, 0x1A002001, 0, 3},
    });
    check(std::vector<lookup_row>{
        {"looks up ports only", 0x1A000001, 0x1A000005, 1, 14, k_untouched},
        {"whatever the subs", 0x1A000005, 0x1A002001, 1, 0, 0x1A001000},
    });
}

TEST(if_index_ranges, of_port_channels)
{
    check_walk("channels", {0x04000004, 0x04000005, 0x04000006});
    check_walk("sub-interfaces", {0x04000A04, 0x04000B04, 0x04000C04});
    check_walk("channels of subtype 2", {0x04200001, 0x04200002});
    check_walk("last channels", {0x040000FE, 0x040000FF});
    check(std::vector<count_row>{
        {"subtypes differ", 0x04000004, 0x04200006, 14, 0},
        {"subs the wrong way round", 0x04000B04, 0x04000A04, 14, 0},
        {"channels the wrong way round", 0x04000006, 0x04000004, 14, 0},
        {"subs of two channels", 0x04000A04, 0x04000B05, 14, 0},
        {"channels up to a sub", 0x04000004, 0x04000B06, 14, 0},
        {"a subtype's argument", 0x04200A04, 0x04200A05, 14, 0},
        {"all subs", 0x04000104, 0x040FFF04, 0, 4095},
    });
    check(std::vector<lookup_row>{
        {"subtypes differ", 0x04000004, 0x04200006, 1, 14, k_untouched},
        {"a sub beyond", 0x04000A04, 0x04000B04, 2, 14, k_untouched},
        {"subs wrap at 16 bits", 0x04000A04, 0x04000B04, 65536, 0, 0x04000A04},
        {"subs wrap to 0", 0x04000A04, 0x04000B04, 65526, 0, 0x04000004},
        {"channels wrap at 16 bits", 0x04000004, 0x04000006, 65535, 0, 0x04000003},
        {"but not at 8", 0x04000004, 0x04000006, 256, 14, k_untouched},
        {"subs of two channels", 0x04000A04, 0x04000B05, 1, 14, k_untouched},
        {"offset 0 of channels up to a sub", 0x04000004, 0x04000B06, 0, 14, k_untouched},
    });
    check(std::vector<next_row>{
        {"subs the wrong way round, below both", 0x04000C04, 0x04000A04, 0x04000904, 14,
         k_untouched},
        {"channels the wrong way round, below both", 0x04000006, 0x04000004, 0x04000002, 14,
         k_untouched},
        {"from a sub of another channel", 0x04000A04, 0x04000C04, 0x04000A05, 14, k_untouched},
        {"a channel, the last has a sub", 0x04000004, 0x04000C04, 0x04000004, 14, k_untouched},
        {"channels, from a sub", 0x04000004, 0x04000006, 0x04000104, 14, k_untouched},
        {"from a sub within the last one's", 0x04000004, 0x04000C04, 0x04000104, 0, 0x04000204},
        {"the subtype of current is kept", 0x04000004, 0x04000006, 0x04300004, 0, 0x04300005},
        {"its argument too", 0x04000004, 0x04000006, 0x04312304, 0, 0x04312305},
        {"subtypes of first and last differ", 0x04100004, 0x04000006, 0x04000004, 14, k_untouched},
        {"an argument of a subtype", 0x04200004, 0x04200106, 0x04200004, 14, k_untouched},
        {"subs the wrong way round", 0x04000C04, 0x04000A04, 0x04000A04, 14, k_untouched},
    });
}

TEST(if_index_ranges, of_eth_port_channels)
{
    check_walk("channels", {0x16000004, 0x16000005, 0x16000006});
    check_walk("sub-interfaces", {0x1600A123, 0x1600B123, 0x1600C123});
    check_walk("through what a port_channel has as subtypes", {0x160FF001, 0x16100001, 0x16101001});
    check(std::vector<count_row>{
        {"subs of two channels", 0x1600A004, 0x1600B005, 14, 0},
        {"channels up to a sub", 0x16000004, 0x1600B006, 14, 0},
        {"all channels", 0x16000000, 0x16000FFF, 0, 4096},
        {"all subs", 0x16001000, 0x16FFF000, 0, 4095},
        {"the wrong way round", 0x16000006, 0x16000004, 14, 0},
    });
    check(std::vector<lookup_row>{
        {"channels wrap at 16 bits", 0x16000004, 0x16000006, 65537, 0, 0x16000005},
        {"but not at 12", 0x16000004, 0x16000006, 4096, 14, k_untouched},
    });
    check(std::vector<next_row>{
        {"from a sub of another channel", 0x1600A004, 0x1600C004, 0x1600A005, 14, k_untouched},
        {"channel 4095", 0x16000000, 0x16000FFF, 0x16000FFF, 14, k_untouched},
        {"sub 4095", 0x16001000, 0x16FFF000, 0x16FFF000, 14, k_untouched},
    });
}

TEST(if_index_ranges, of_tunnels_vlans_and_overlays)
{
    check_walk("fcip", {0x0A000001, 0x0A000002, 0x0A000003});
    check_walk("fcmpls", {0x0F0000FE, 0x0F0000FF});
    check_walk("vlan", {0x0901000A, 0x0901000B, 0x0901000C});
    check_walk("overlay", {0x22080001, 0x22080002});
    check_walk("vif", {0x1D0FFFFD, 0x1D0FFFFE, 0x1D0FFFFF});
    check_steps("tunnel", {0x18030001, 0x18030002});
    check(std::vector<count_row>{
        {"fcip the wrong way round", 0x0A000003, 0x0A000001, 14, 0},
        {"fcip of all 12 bits", 0x0A000000, 0x0A000FFF, 0, 4096},
        {"vlan contexts are not compared", 0x0901000A, 0x0902000B, 0, 2},
        {"overlay port types are not compared", 0x22080001, 0x22100001, 0, 1},
        {"overlay of all 16 bits", 0x22000000, 0x2200FFFF, 0, 65536},
        {"all vifs", 0x1D000000, 0x1D0FFFFF, 0, 1048576},
        {"vif the wrong way round", 0x1D000001, 0x1D000000, 14, 0},
    });
    check(std::vector<lookup_row>{
        {"vlan context of the first", 0x0901000A, 0x0902000C, 1, 0, 0x0901000B},
        {"vlan 4095 is not built", 0x09010001, 0x09010FFF, 4094, 0, k_untouched},
        {"vlan numbers wrap at 32 bits", 0x0901000A, 0x0901000C, 0xFFFFFFFF, 0, 0x09010009},
        {"but not at 16", 0x0901000A, 0x0901000C, 65536, 14, k_untouched},
        {"fcip 256 is not built", 0x0A000000, 0x0A000FFF, 256, 0, k_untouched},
        {"fcip wraps at 16 bits", 0x0A000001, 0x0A000003, 65537, 0, 0x0A000002},
        {"overlay type of the first", 0x22080001, 0x22100005, 2, 0, 0x22080003},
        {"overlay port 65504 is not built", 0x22080000, 0x2208FFFF, 65504, 0, k_untouched},
        {"overlay ports wrap at 16 bits", 0x22080001, 0x22080005, 65536, 0, 0x22080001},
        {"vifs wrap at 32 bits", 0x1D000005, 0x1D000007, 0xFFFFFFFF, 0, 0x1D000004},
        {"but not at 16", 0x1D000005, 0x1D000007, 65536, 14, k_untouched},
        {"the wrong way round", 0x0A000003, 0x0A000001, 65534, 14, k_untouched},
    });
    check(std::vector<next_row>{
        {"fcip 255", 0x0A000000, 0x0A000FFF, 0x0A0000FF, 0, k_untouched},
        {"fcip the wrong way round", 0x0A000003, 0x0A000001, 0x0A000000, 14, k_untouched},
        {"vlan context of the first", 0x0901000A, 0x0902000C, 0x0903000A, 0, 0x0901000B},
        {"tunnel context of current", 0x18010001, 0x18020005, 0x18030001, 0, 0x18030002},
        {"tunnel 65535 wraps to 0", 0x18010001, 0x1801FFFF, 0x1801FFFF, 0, 0x18010000},
        {"tunnel the wrong way round", 0x18010005, 0x18010001, 0x18010000, 14, k_untouched},
        {"overlay 65535 wraps to 0", 0x22080000, 0x2208FFFF, 0x2208FFFF, 0, 0x22080000},
        {"overlay type of the first", 0x22080001, 0x22100005, 0x22180001, 0, 0x22080002},
        {"the last vif", 0x1D000000, 0x1D0FFFFF, 0x1D0FFFFF, 14, k_untouched},
    });
}

TEST(if_index_ranges, of_veth)
{
    check(std::vector<next_row>{
        {"without a sub", 0x1C000010, 0x1C000030, 0x1C000010, 0, 0x1C000020},
        {"the last", 0x1C000010, 0x1C000030, 0x1C000030, 14, k_untouched},
        {"sub 1", 0x1C000011, 0x1C00001F, 0x1C000011, 0, 0x1C000012},
        {"sub 14", 0x1C000011, 0x1C00001F, 0x1C00001E, 0, 0x1C00001F},
        {"sub 15 goes on with the next port", 0x1C000011, 0x1C00002F, 0x1C00001F, 0, 0x1C000020},
        {"sub 15 of the last port", 0x1C000011, 0x1C00001F, 0x1C00001F, 14, k_untouched},
        {"a sub beyond the last", 0x1C000011, 0x1C000012, 0x1C000012, 14, k_untouched},
        {"first is not looked at", 0x1C000FF0, 0x1C000030, 0x1C000010, 0, 0x1C000020},
        {"the last port", 0x1C000000, 0x1CFFFFF0, 0x1CFFFFF0, 14, k_untouched},
    });
    check(std::vector<lookup_row>{
        {"offset 1", 0x1C000010, 0x1C000030, 1, 0, 0x1C000020},
        {"beyond the last", 0x1C000010, 0x1C000030, 9, 0, 0x1C0000A0},
        {"the sub becomes 0", 0x1C000015, 0x1C000035, 0, 0, 0x1C000010},
        {"equal members, whole", 0x1C000015, 0x1C000015, 0, 0, 0x1C000015},
        {"equal members, offset 1", 0x1C000015, 0x1C000015, 1, 0, 0x1C000020},
        {"the last port", 0x1C000000, 0x1C000010, 1048575, 0, 0x1CFFFFF0},
        {"beyond the last port nothing is built", 0x1C000000, 0x1C000010, 1048576, 0, k_untouched},
        {"a huge offset", 0x1C000000, 0x1C000010, 0x7FFFFFFF, 0, k_untouched},
        {"an offset that wraps", 0x1C000050, 0x1C000060, 0xFFFFFFFF, 0, 0x1C000040},
        {"an offset that wraps to nothing", 0x1C000000, 0x1C000010, 0xFFFFFFFF, 0, k_untouched},
    });
    check(std::vector<count_row>{
        {"ports", 0x1C000010, 0x1C000030, 0, 3},
        {"subs don't count", 0x1C000011, 0x1C00001F, 0, 1},
        {"all", 0x1C000000, 0x1CFFFFFF, 0, 1048576},
        {"the wrong way round", 0x1C000030, 0x1C000010, 14, 0},
    });
}

TEST(if_index_ranges, of_vfc)
{
    check_walk("plain", {0x1E000001, 0x1E000002, 0x1E000003});
    check_walk("port-channels", {0x1E100001, 0x1E100002, 0x1E100003});
    check(std::vector<count_row>{
        {"up to 61439", 0x1E000000, 0x1E00EFFF, 0, 61440},
        {"61440", 0x1E000000, 0x1E00F000, 14, 0},
        {"first 61440", 0x1E00F000, 0x1E00F001, 14, 0},
        {"the wrong way round", 0x1E000002, 0x1E000001, 14, 0},
        {"slots and ports by their low 16 bits", 0x1E200000, 0x1E200700, 0, 1793},
        {"subtype 3", 0x1E300001, 0x1E300002, 0, 2},
        {"subtype 15", 0x1EF00001, 0x1EF00005, 0, 5},
        {"subtypes are not compared", 0x1E000001, 0x1E100003, 0, 3},
    });
    check(std::vector<lookup_row>{
        {"plain, beyond", 0x1E000001, 0x1E000003, 3, 14, k_untouched},
        {"plain, wraps at 16 bits", 0x1E000001, 0x1E000003, 65537, 0, 0x1E000002},
        {"plain, last 61439", 0x1E00EFFE, 0x1E00EFFF, 1, 0, 0x1E00EFFF},
        {"plain, last 61440", 0x1E000000, 0x1E00F000, 1, 14, k_untouched},
        {"plain, last of another subtype", 0x1E000001, 0x1E300003, 1, 0, 0x1E000002},
        {"plain, the wrong way round", 0x1E000003, 0x1E000001, 65535, 14, k_untouched},
        {"port-channel, last of another subtype", 0x1E100001, 0x1E000003, 1, 14, k_untouched},
        {"port-channel, wraps at 16 bits", 0x1E100005, 0x1E100007, 65535, 0, 0x1E100004},
        {"port-channel, the last", 0x1E100FFE, 0x1E100FFF, 1, 0, 0x1E100FFF},
        {"port-channel, the wrong way round", 0x1E100003, 0x1E100001, 0, 14, k_untouched},
        {"slot and port", 0x1E208000, 0x1E208700, 3, 0, 0x1E208300},
        {"slot and port, the last", 0x1E208000, 0x1E208700, 7, 0, 0x1E208700},
        {"slot and port, beyond", 0x1E208000, 0x1E208700, 8, 14, k_untouched},
        {"slot and port, across slots", 0x1E208000, 0x1E210700, 1, 14, k_untouched},
        {"slot and port, ports wrap at 8 bits", 0x1E208100, 0x1E208700, 256, 0, 0x1E208100},
        {"slot and port, last of another subtype", 0x1E208000, 0x1E008700, 1, 14, k_untouched},
        {"subtype 3 gives success and nothing", 0x1E300001, 0x1E300003, 1, 0, k_untouched},
        {"subtype 4 gives success and nothing", 0x1E400001, 0x1E400003, 1, 0, k_untouched},
        {"subtype 15 gives success and nothing", 0x1EF00001, 0x1E000003, 1, 0, k_untouched},
    });
    check(std::vector<next_row>{
        {"plain, the last", 0x1E000001, 0x1E000003, 0x1E000003, 14, k_untouched},
        {"plain, last 61440", 0x1E000001, 0x1E00F000, 0x1E000003, 14, k_untouched},
        {"plain, current 65535 wraps to 0", 0x1E000001, 0x1E000003, 0x1E00FFFF, 0, 0x1E000000},
        {"plain, current of another subtype", 0x1E000001, 0x1E000003, 0x1E300001, 0, 0x1E000002},
        {"slot and port, as a plain number", 0x1E208000, 0x1E208700, 0x1E208000, 0, 0x1E008001},
        {"port-channel, current of another subtype", 0x1E100001, 0x1E100003, 0x1E000001, 14,
         k_untouched},
        {"port-channel, the last", 0x1E100001, 0x1E100003, 0x1E100003, 14, k_untouched},
        {"port-channel, first is not looked at", 0x1E100009, 0x1E100003, 0x1E100001, 0, 0x1E100002},
        {"subtype 3 gives success and nothing", 0x1E300001, 0x1E300003, 0x1E300001, 0, k_untouched},
        {"subtype 4 gives success and nothing", 0x1E400001, 0x1E400003, 0x1E400001, 0, k_untouched},
    });
}

TEST(if_index_ranges, of_satellite_ports)
{
    check_walk("ports", {0x1F640000, 0x1F640040, 0x1F640080});
    check(std::vector<count_row>{
        {"another satellite", 0x1F640000, 0x1F650080, 14, 0},
        {"satellite 255", 0x1FFF0000, 0x1FFF0080, 14, 0},
        {"satellite 254", 0x1FFE0000, 0x1FFE0080, 0, 3},
        {"first on module 1", 0x1F641000, 0x1F640080, 14, 0},
        {"last on module 1", 0x1F640000, 0x1F641080, 14, 0},
        {"the wrong way round", 0x1F640080, 0x1F640000, 14, 0},
        {"subs don't count", 0x1F640001, 0x1F640005, 0, 1},
    });
    check(std::vector<lookup_row>{
        {"the sub becomes 0", 0x1F640005, 0x1F640085, 1, 0, 0x1F640040},
        {"beyond", 0x1F640000, 0x1F640080, 3, 14, k_untouched},
        {"ports wrap at 8 bits", 0x1F640040, 0x1F640080, 255, 0, 0x1F640000},
        {"satellite 255", 0x1FFF0000, 0x1FFF0080, 1, 14, k_untouched},
        {"on module 1", 0x1F641000, 0x1F641080, 1, 14, k_untouched},
    });
    check(std::vector<next_row>{
        {"a sub", 0x1F640001, 0x1F640005, 0x1F640001, 0, 0x1F640002},
        {"the last sub", 0x1F640001, 0x1F640005, 0x1F640005, 14, k_untouched},
        {"keeps the port of current", 0x1F640001, 0x1F640085, 0x1F640044, 0, 0x1F640045},
        {"a port", 0x1F640000, 0x1F640085, 0x1F640040, 0, 0x1F640080},
        {"the last port", 0x1F640000, 0x1F640080, 0x1F640080, 14, k_untouched},
        {"subs the wrong way round", 0x1F640005, 0x1F640081, 0x1F640000, 14, k_untouched},
        {"current on another satellite", 0x1F640000, 0x1F640080, 0x1F650000, 14, k_untouched},
        {"current on module 1", 0x1F640000, 0x1F640080, 0x1F641000, 0, 0x1F640040},
        {"ports the wrong way round", 0x1F640080, 0x1F640040, 0x1F640000, 14, k_untouched},
        {"satellite 255", 0x1FFF0000, 0x1FFF0080, 0x1FFF0000, 14, k_untouched},
    });
}

// Only the next-member operation knows the type, and all it does is to succeed.
TEST(if_index_ranges, of_dorsa_have_a_next_member_that_is_nothing)
{
    check(std::vector<next_row>{{"dorsa", 0x14000000, 0x14000005, 0x14000000, 0, k_untouched},
                                {"the last", 0x14000000, 0x14000005, 0x14000005, 0, k_untouched}});
    check(std::vector<lookup_row>{{"dorsa", 0x14000000, 0x14000005, 1, 14, k_untouched}});
    check(std::vector<count_row>{{"dorsa", 0x14000000, 0x14000005, 14, 0}});
}

// The built-in ranges of a device context and of a port type can be stepped and counted.
TEST(if_index_ranges, of_the_range_builders)
{
    IfIndex first = 0;
    IfIndex last = 0;
    if_index_get_overlay_range(2, &first, &last);
    check(std::vector<count_row>{{"overlay", first, last, 0, 65504}});
    check(std::vector<lookup_row>{{"overlay", first, last, 65503, 0, 0x2210FFDF}});
    if_index_get_tunnel_range(3, &first, &last);
    check(std::vector<next_row>{{"tunnel", first, last, 0x1803FFFE, 0, 0x1803FFFF}});
}
