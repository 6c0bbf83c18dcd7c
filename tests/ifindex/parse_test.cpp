// Interface names back to interface indices: keywords, numbers, and what each kind builds.
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <strings.h>
#include <vector>

#include "ifindex/keyword_search.h"
#include "ifindex/numbers.h"
#include "ruk/if_index_name.h"

namespace
{

// What an output holds that must stay as it is.
constexpr IfIndex k_untouched = 0xdeadbeef;

// The device context for the length of a test; nullptr for none.
class vdc_environment
{
public:
    explicit vdc_environment(const char *text)
    {
        if (text == nullptr) {
            unsetenv("SYSMGR_VDC_ID");
        } else {
            setenv("SYSMGR_VDC_ID", text, 1);
        }
    }
    ~vdc_environment() { unsetenv("SYSMGR_VDC_ID"); }
    vdc_environment(const vdc_environment &) = delete;
    vdc_environment &operator=(const vdc_environment &) = delete;
};

void expect_parse(const char *name, int32_t result, IfIndex value)
{
    SCOPED_TRACE(name);
    IfIndex out = k_untouched;
    EXPECT_EQ(ulx_interface_name_to_ifindex(name, &out), result);
    EXPECT_EQ(out, value) << std::hex << out;
}

struct name_case {
    const char *name;
    int32_t result;
    IfIndex value;
};

void expect_parses(std::span<const name_case> rows)
{
    for (const name_case &row : rows) {
        expect_parse(row.name, row.result, row.value);
    }
}

// What the search finds: the keyword and what follows it.
struct keyword_match {
    int32_t kind = -1;
    const char *rest = nullptr;
};

struct match_of_keyword {
    template <size_t kind> static int32_t found(const char *rest, keyword_match *out)
    {
        *out = {static_cast<int32_t>(kind), rest};
        return 1;
    }
};

keyword_match find_keyword(const char *name)
{
    keyword_match match;
    const int32_t result = ifindex::with_keyword<match_of_keyword>(name, &match);
    EXPECT_EQ(result, match.kind < 0 ? 0 : 1);
    return match;
}

// Every keyword in the list's order: the kind that a name starting with it reaches, and what a
// name of it gives.
struct keyword_case {
    const char *keyword;
    int32_t kind;
    const char *name;
    int32_t result = 0;
    IfIndex value = k_untouched;
};

// clang-format off
constexpr keyword_case k_keyword_cases[] = {
    {"Unknown", 0, "Unknown1/1"},
    {"fc", 1, "fc2/5", 1, 0x01000000 | 1 << 19 | 4 << 12},
    {"gigabitethernet", 2, "gigabitethernet2/5", 1, 0x02000000 | 1 << 19 | 4 << 12},
    {"vsan", 3, "vsan10", 1, 0x08f8000a},
    {"iscsi", 4, "iscsi2/5", 1, 0x0b000000 | 1 << 19 | 4 << 12},
    {"port-channel", 5, "port-channel 5", 1, 0x04000004},
    {"cpp", 6, "cpp2/5/7", 1, 0x08000000 | 1 << 19 | 4 << 12 | 7},
    {"fcip", 1, "fcip5"},
    {"mgmt", 8, "mgmt0", 1, 0x05000000},
    {"tk", 9, "tk2/3/301", 1, 0x0e000000 | 1 << 19 | 2 << 14 | 300},
    {"xl", 10, "xlport 2/5", 1, 0x0d000000 | 1 << 19 | 4 << 12},
    {"svc", 11, "svc2/5", 1, 0x0c000000 | 1 << 19 | 4 << 12},
    {"sup-fc", 12, "sup-fc", 1, 0x06000000 | 1 << 19 | 1 << 12},
    {"fc-tunnel", 1, "fc-tunnel 5"},
    {"ipc", 14, "ipc8/2/10", 1, 0x04000000 | 2 << 20 | 10 << 8 | 7},
    {"loopback", 15, "loopback7", 1, 0xfe000007},
    {"vlan", 16, "vlan100", 1, 0x09010064},
    {"null", 17, "null 0"},
    {"kiro", 18, "kiro2/5", 1, 0x12000000 | 1 << 19 | 4 << 12},
    {"bay", 19, "bay3", 1},
    {"ext", 20, "ext3", 1},
    {"san-port-channel", 21, "san-port-channel 5", 1, 0x04000004},
    {"ethernet-port-channel", 22, "ethernet-port-channel5", 1, 0x16000004},
    {"tunnel", 23, "tunnel5", 1, 0x18010005},
    {"ethernet", 24, "ethernet3/5", 1, 0x25000000 | 2 << 14 | 4 << 6},
    {"sup-eth", 25, "sup-eth0"},
    {"dorsa", 26, "dorsa2/3/4"},
    {"vethernet", 33, "vethernet5", 1, 0x1c000040},
    {"vfc", 28, "vfc6", 1, 0x1e000005},
    {"remote-ethernet", 29, "remote-ethernet100/2/3", 1, 0x1f000000 | 99 << 16 | 1 << 12 | 2 << 6},
    {"pemu", 30, "pemu2/5", 1, 0x21000000 | 1 << 19 | 4 << 12},
    {"overlay", 31, "overlay5", 1, 0x22080005},
    {"lveth", 32, "lveth2/6", 1, 0x1b000000 | 1 << 16 | 5 << 4},
    {"veth", 33, "veth5", 1, 0x1c000040},
    {"ruk-ethernet", 34, "ruk-ethernet3/5", 1, 0x25000000 | 2 << 14 | 4 << 6},
    {"tunnel-te", 23, "tunnel-te5", 1, 0x18010005},
    {"mti", 36, "mti5", 1, 0x22180005},
    {"control", 37, "control3", 1, 0x07180000},
    {"data", 38, "data1"},
    {"vfc-veth", 28, "vfc-veth10", 1, 0x1e000009},
    {"vfc-port-channel", 28, "vfc-port-channel8", 1, 0x1e000007},
    {"plc", 41, "plc1/1"},
    {"serial", 42, "serial1/1"},
    {"cellular", 43, "cellular1/1"},
    {"dialer", 44, "dialer1"},
    {"pseudowire", 45, "pseudowire1"},
    {"wimax", 46, "wimax1"},
    {"efp-ethernet", 47, "efp-ethernet1/1"},
    {"efp-ethernet-port-channel", 47, "efp-ethernet-port-channel1"},
    {"vfi", 49, "vfi1"},
    {"shadow-pc", 50, "shadow-pc1"},
    {"shadow-fabpc", 51, "shadow-fabpc1"},
    {"wpan", 52, "wpan1"},
    {"wifi", 53, "wifi1"},
    {"glt", 54, "glt1"},
    {"vni", 55, "vni1"},
    {"vsi-ethernet", 56, "vsi-ethernet1/1"},
    {"vsi-ethernet-port-channel", 56, "vsi-ethernet-port-channel1"},
    {"vtep", 58, "vtep1"},
    {"bdi", 59, "bdi1"},
    {"IPStorage", 60, "IPStorage1/1"},
    {"nve", 61, "nve1"},
    {"ii", 62, "ii1/1"},
    {"Super", 63, "Super1"},
    {"10GigEther", 64, "10GigEther1/1"},
    {"POS", 65, "POS1/1"},
    {"RP-to-RP", 66, "RP-to-RP1"},
    {"Autotunnel", 67, "Autotunnel1"},
    {"eth-port-channel", 68, "eth-port-channel1"},
};
// clang-format on

// text with its ASCII letters in the other case, where they are between first and last.
std::string with_case(const char *text, char first, char last)
{
    std::string changed = text;
    for (char &c : changed) {
        c = static_cast<char>(c >= first && c <= last ? c ^ 0x20 : c);
    }
    return changed;
}

// The numbers with which every kind is built below: c0, c1 and so on.
constexpr int32_t k_numbers[9] = {3, 2, 4, 5, 6, 7, 8, 9, 10};

// What a kind gives for a number of numbers; any other is refused: 0, and the output stays.
struct build_case {
    int32_t kind;
    int32_t least;
    int32_t most;
    IfIndex value;
};

// clang-format off
constexpr build_case k_build_cases[] = {
    {1, 2, 2, 0x01000000 | 2 << 19 | 1 << 12},
    // With three numbers a satellite port, whose number is its sub-interface, too.
    {2, 2, 2, 0x02000000 | 2 << 19 | 1 << 12},
    {2, 3, 3, 0x1f000000 | 2 << 16 | 1 << 12 | 4 << 6 | 4},
    {2, 4, 9, 0x02000000 | 2 << 19 | 1 << 12},
    {3, 1, 1, 0x08000000 | 31 << 19 | 3},
    {4, 2, 2, 0x0b000000 | 2 << 19 | 1 << 12},
    {5, 1, 1, 0x04000000 | 2},
    {5, 2, 2, 0x04000000 | 2 << 8 | 2},
    {6, 3, 3, 0x08000000 | 2 << 19 | 1 << 12 | 4},
    {7, 1, 1, 0x0a000000 | 2},
    // Any other count succeeds without a value.
    {8, 0, 0, k_untouched},
    {8, 1, 1, 0x05000000 | 3 << 19},
    {8, 2, 2, 0x05000000 | 3 << 19 | 2 << 12},
    {8, 3, 9, k_untouched},
    {9, 3, 3, 0x0e000000 | 2 << 19 | 1 << 14 | 3},
    {10, 2, 2, 0x0d000000 | 2 << 19 | 1 << 12},
    {11, 2, 2, 0x0c000000 | 2 << 19 | 1 << 12},
    {12, 0, 0, 0x06000000 | 1 << 19 | 1 << 12},
    {13, 1, 1, 0x0f000000 | 2},
    {14, 3, 3, 0x04000000 | 2 << 20 | 4 << 8 | 2},
    {15, 1, 1, 0xfe000003},
    {16, 1, 1, 0x09000000 | 1 << 16 | 3},
    {18, 2, 2, 0x12000000 | 2 << 19 | 1 << 12},
    // Only an interface database knows these.
    {19, 0, 9, k_untouched},
    {20, 0, 9, k_untouched},
    {21, 1, 1, 0x04000000 | 2},
    {21, 2, 2, 0x04000000 | 2 << 8 | 2},
    {22, 1, 1, 0x16000000 | 2},
    {22, 2, 2, 0x16000000 | 2 << 12 | 2},
    {23, 1, 1, 0x18000000 | 1 << 16 | 3},
    {24, 2, 2, 0x25000000 | 2 << 14 | 1 << 6},
    {24, 3, 3, 0x25000000 | 2 << 14 | 1 << 6 | 4},
    {24, 4, 9, 0x25000000 | 2 << 14 | 1 << 6},
    {27, 1, 1, 0x1d000000 | 2},
    {28, 1, 1, 0x1e000000 | 2},
    {28, 2, 2, 0x1e200000 | 2 << 15 | 1 << 8},
    {28, 3, 3, 0x1e400000 | 2 << 10 | 1 << 8 | 3 << 2},
    {29, 3, 3, 0x1f000000 | 2 << 16 | 1 << 12 | 3 << 6},
    {29, 4, 4, 0x1f000000 | 2 << 16 | 1 << 12 | 3 << 6 | 5},
    {29, 5, 9, 0x1f000000 | 2 << 16 | 1 << 12 | 3 << 6},
    {30, 2, 2, 0x21000000 | 2 << 19 | 1 << 12},
    {31, 1, 1, 0x22000000 | 1 << 19 | 3},
    {32, 2, 2, 0x1b000000 | 2 << 16 | 1 << 4},
    {32, 3, 3, 0x1b000000 | 2 << 16 | 1 << 4 | 4},
    {32, 4, 9, 0x1b000000 | 2 << 16 | 1 << 4},
    {33, 1, 1, 0x1c000000 | 2 << 4},
    {33, 2, 2, 0x1c000000 | 2 << 4 | 2},
    {33, 3, 9, 0x1c000000 | 2 << 4},
    {34, 2, 2, 0x25000000 | 2 << 14 | 1 << 6},
    {34, 3, 3, 0x25000000 | 2 << 14 | 1 << 6 | 4},
    {34, 4, 9, 0x25000000 | 2 << 14 | 1 << 6},
    {35, 1, 1, 0x22000000 | 2 << 19 | 3},
    {36, 1, 1, 0x22000000 | 3 << 19 | 3},
    {37, 0, 0, k_untouched},
    {37, 1, 2, 0x07000000 | 3 << 19},
    {37, 3, 9, k_untouched},
    {39, 1, 1, 0x1e300000 | 2},
    {40, 1, 1, 0x1e100000 | 2},
};
// clang-format on

const build_case *find_build_case(int32_t kind, int32_t count)
{
    for (const build_case &row : k_build_cases) {
        if (row.kind == kind && count >= row.least && count <= row.most) {
            return &row;
        }
    }
    return nullptr;
}

struct coordinates_case {
    int32_t kind;
    std::vector<int32_t> numbers;
    int32_t result;
    IfIndex value;
};

void expect_built(const coordinates_case &row)
{
    SCOPED_TRACE(testing::Message()
                 << "kind " << row.kind << " " << testing::PrintToString(row.numbers));
    IfIndex out = k_untouched;
    EXPECT_EQ(ulx_interface_coordinates_to_ifindex(row.kind, row.numbers.data(),
                                                   static_cast<int32_t>(row.numbers.size()), &out),
              row.result);
    EXPECT_EQ(out, row.value) << std::hex << out;
}

} // namespace

TEST(ulx_interface_name_to_ifindex, takes_the_first_keyword_of_the_list_that_a_name_begins_with)
{
    static_assert(std::size(k_keyword_cases) == 69);
    const vdc_environment unset(nullptr);
    for (const keyword_case &row : k_keyword_cases) {
        SCOPED_TRACE(row.keyword);
        EXPECT_EQ(find_keyword(row.keyword).kind, row.kind);
        expect_parse(row.name, row.result, row.value);
        expect_parse((std::string("   ") + row.name).c_str(), row.result, row.value);
        expect_parse(with_case(row.name, 'a', 'z').c_str(), row.result, row.value);
        expect_parse(with_case(row.name, 'A', 'Z').c_str(), row.result, row.value);
    }
}

TEST(ulx_interface_name_to_ifindex, keeps_the_keywords_at_their_kinds)
{
    for (size_t kind = 0; kind < std::size(k_keyword_cases); ++kind) {
        EXPECT_EQ(ifindex::k_keywords[kind], k_keyword_cases[kind].keyword) << kind;
    }
}

namespace
{

// Letters as in the C locale, whichever one the test runs in.
constexpr char k_case = 'a' ^ 'A';

bool is_letter(char c)
{
    const char lower = static_cast<char>(c | k_case);
    return lower >= 'a' && lower <= 'z';
}

bool begins_with(std::string_view name, std::string_view word)
{
    const auto same = [](char a, char b) {
        return a == b || (is_letter(a) && is_letter(b) && (a | k_case) == (b | k_case));
    };
    return name.size() >= word.size() && std::equal(word.begin(), word.end(), name.begin(), same);
}

} // namespace

// Beside the list as it is told: every keyword in turn, but "vethernet", over its own length.
TEST(with_keyword, agrees_with_a_walk_of_the_list)
{
    std::mt19937 random(1906);
    for (int i = 0; i < 100000; ++i) {
        std::string name(ifindex::k_keywords[random() % ifindex::k_keyword_count]);
        if (random() % 3 == 0) {
            name += ifindex::k_keywords[random() % ifindex::k_keyword_count];
        }
        if (random() % 4 == 0) {
            name += "-port-channel1/5";
        }
        for (char &c : name) {
            if (is_letter(c) && random() % 2 == 0) {
                c = static_cast<char>(c ^ k_case);
            }
        }
        if (random() % 2 == 0) {
            name[random() % name.size()] = "ehtv-0Mm\x0d\xc5"[random() % 10];
        }
        if (random() % 3 == 0) {
            name.resize(random() % (name.size() + 1));
        }
        name.shrink_to_fit();
        int32_t kind = -1;
        size_t length = 0;
        for (size_t each = 0; each < ifindex::k_keyword_count && kind < 0; ++each) {
            const std::string_view word = ifindex::k_keywords[each];
            if (word != "vethernet" && begins_with(name, word)) {
                kind = static_cast<int32_t>(each);
                length = word.size();
            }
        }
        const keyword_match match = find_keyword(name.c_str());
        ASSERT_EQ(match.kind, kind) << name;
        ASSERT_EQ(match.rest, kind < 0 ? nullptr : name.c_str() + length) << name;
    }
}

// Beside strtoll, whose 64 bits are cut to 32: as many digits as there may be, leading zeros too.
TEST(read_digits, agrees_with_strtoll)
{
    std::mt19937 random(1907);
    for (int i = 0; i < 20000; ++i) {
        std::string text(1 + random() % (random() % 4 == 0 ? 30 : 5), '0');
        for (char &c : text) {
            c = static_cast<char>('0' + (random() % 4 == 0 ? 0 : random() % 10));
        }
        const size_t digits = text.size();
        text += std::string("/x").substr(0, random() % 3);
        const ifindex::number_read read = ifindex::read_digits(text.c_str());
        ASSERT_EQ(read.value, static_cast<int32_t>(strtoll(text.c_str(), nullptr, 10))) << text;
        ASSERT_EQ(read.rest, text.c_str() + digits) << text;
    }
}

TEST(ulx_interface_name_to_ifindex, knows_no_abbreviations_and_no_short_names)
{
    for (const char *name : {"",
                             "   ",
                             "Eth1/1",
                             "Po5",
                             "e1/1",
                             "ethernt1/1",
                             "f1/1",
                             "vla100",
                             "San-po5",
                             "1/1",
                             "0",
                             "\tvlan100",
                             "\nvlan100",
                             "-vlan100",
                             "nul0",
                             "zeba 1:2",
                             "\xff\xfe",
                             "\x80vlan1",
                             "Gateway Port-Channel1:2",
                             "lc-eth0/1",
                             "internal san-port-channel 5",
                             "0x26000000"}) {
        expect_parse(name, 0, k_untouched);
    }
}

TEST(ulx_interface_name_to_ifindex, lets_an_earlier_keyword_hide_a_longer_one)
{
    const vdc_environment unset(nullptr);
    constexpr name_case rows[] = {
        {"fcip2/5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc-tunnel2/5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fcx2/5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"tunnel-te5", 1, 0x18010005},
        {"vfc-veth10", 1, 0x1e000009},
        {"vfc-port-channel8", 1, 0x1e000007},
        {"vfc-port-channel2/3", 1, 0x1e200000 | 1 << 15 | 2 << 8},
        {"vethernet5", 1, 0x1c000040},
        {"Vethernet5.7", 1, 0x1c000047},
        {"extra3", 1, k_untouched},
        {"san-port-channelx5", 1, 0x04000004},
        {"ethernetx3/5", 1, 0x25000000 | 2 << 14 | 4 << 6},
        {"loopbacks 7", 1, 0xfe000007},
        {"mgmt", 1, k_untouched},
        {"nullx", 0, k_untouched},
    };
    expect_parses(rows);
}

TEST(ulx_interface_name_to_ifindex, knows_the_null_interface_by_its_whole_name)
{
    constexpr name_case rows[] = {
        {"null0", 1, 0x17000000},    {"NULL0", 1, 0x17000000},   {"Null0", 1, 0x17000000},
        {"  nUlL0", 1, 0x17000000},  {"null 0", 0, k_untouched}, {"null0 ", 0, k_untouched},
        {"null00", 0, k_untouched},  {"null", 0, k_untouched},   {"\tnull0", 0, k_untouched},
        {"null0/1", 0, k_untouched},
    };
    expect_parses(rows);
}

TEST(ulx_interface_name_to_ifindex, takes_anything_but_digits_between_the_numbers)
{
    const vdc_environment unset(nullptr);
    constexpr name_case rows[] = {
        {"fc 2/5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc2.5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc2:5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc2 5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc2 / \t 5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc2slot5port", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc-2/5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc,2/5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc 2 -/5", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc2/5/", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc2/5\xe2\x80\x93", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc00002/0005", 1, 0x01000000 | 1 << 19 | 4 << 12},
        {"fc2", 0, k_untouched},
        {"fc2/5/7", 0, k_untouched},
        {"fc", 0, k_untouched},
        {"fc/", 0, k_untouched},
        {"sup-fc", 1, 0x06081000},
        {"sup-fc ()", 1, 0x06081000},
        {"sup-fc0", 0, k_untouched},
        {"Ethernet3/5.7", 1, 0x25000000 | 2 << 14 | 4 << 6 | 7},
        {"port-channel5.10", 1, 0x04000000 | 10 << 8 | 4},
        {"10GigEther1", 0, k_untouched},
    };
    expect_parses(rows);
}

TEST(ulx_interface_name_to_ifindex, takes_the_first_interface_of_a_list_or_range)
{
    const vdc_environment unset(nullptr);
    constexpr name_case rows[] = {
        {"ethernet1/5-7", 1, 0x25000000 | 4 << 6},
        {"ethernet1/5,1/7", 1, 0x25000000 | 4 << 6},
        {"ethernet1/5-", 1, 0x25000000 | 4 << 6},
        {"ethernet1/5,", 1, 0x25000000 | 4 << 6},
        {"ethernet1/5 - 7", 1, 0x25000000 | 4 << 6 | 7},
        {"ethernet1/5 -7", 1, 0x25000000 | 4 << 6},
        // Only the character right before the digit tells: here it is a blank.
        {"ethernet1/5, 7", 1, 0x25000000 | 4 << 6 | 7},
        {"fc1/5, 1/7", 0, k_untouched},
        {"vlan10-20", 1, 0x0901000a},
        {"vlan10,20,30", 1, 0x0901000a},
        {"fc2-5", 0, k_untouched},
    };
    expect_parses(rows);
}

TEST(ulx_interface_name_to_ifindex, reads_nine_numbers_and_refuses_a_tenth)
{
    constexpr name_case rows[] = {
        {"ethernet1/2/3/4/5/6/7/8/9", 1, 0x25000000 | 1 << 6},
        {"ethernet1/2/3/4/5/6/7/8/9/", 1, 0x25000000 | 1 << 6},
        {"ethernet1/2/3/4/5/6/7/8/9-10", 1, 0x25000000 | 1 << 6},
        {"ethernet1/2/3/4/5/6/7/8/9/10", 0, k_untouched},
        {"ethernet1/2/3/4/5/6/7/8/9/10/1", 0, k_untouched},
        {"mgmt1/2/3/4/5/6/7/8/9", 1, k_untouched},
        {"mgmt1/2/3/4/5/6/7/8/9/10", 0, k_untouched},
        {"serial1/2/3/4/5/6/7/8/9/10", 0, k_untouched},
    };
    expect_parses(rows);
}

// Held to 64 bits, then cut to 32.
TEST(ulx_interface_name_to_ifindex, takes_the_low_bits_of_numbers_that_are_too_large)
{
    const vdc_environment unset(nullptr);
    constexpr name_case rows[] = {
        {"vlan99999999999", 1, k_untouched},          // 0x4876e7ff
        {"vlan4294967396", 1, 0x09010064},            // 2^32 + 100
        {"vlan2147483648", 1, k_untouched},           // the lowest
        {"vlan18446744073709551716", 1, k_untouched}, // 2^64 + 100, held: -1
        {"veth4294967301", 1, 0x1c000040},            // 2^32 + 5
        {"veth18446744073709551621", 0, k_untouched}, // 2^64 + 5, held: -1
        {"veth9223372036854775807", 0, k_untouched},  // 2^63 - 1: -1
        {"vfc-7", 1, 0x1e000006},
        {"fc4294967298/4294967301", 1, 0x01000000 | 1 << 19 | 4 << 12},
        // 16 bits of the slot, 8 of the port.
        {"vfc65538/259", 1, 0x1e200000 | 1 << 15 | 2 << 8},
        {"vfc65536/3", 1, k_untouched},
        {"vfc259/65538/260", 1, 0x1e400000 | 2 << 10 | 1 << 8 | 3 << 2},
    };
    expect_parses(rows);
}

TEST(ulx_interface_name_to_ifindex, takes_the_device_context_from_the_environment)
{
    struct {
        const char *context;
        IfIndex vlan;
        IfIndex tunnel;
    } const rows[] = {
        {nullptr, 0x09010064, 0x18010005},
        {"3", 0x09030064, 0x18030005},
        {"0", 0x09000064, 0x18000005},
        {"255", 0x09ff0064, 0x18ff0005},
        {"256", k_untouched, k_untouched},
        {"", 0x09000064, 0x18000005},
        {"main", 0x09000064, 0x18000005},
        {"0x10", 0x09000064, 0x18000005},
        {" 7 of 9", 0x09070064, 0x18070005},
        {"+7", 0x09070064, 0x18070005},
        {"-1", k_untouched, k_untouched},
        // The tunnel's is cut to 16 bits before it is judged, the VLAN's is not.
        {"65539", k_untouched, 0x18030005},
        {"-65533", k_untouched, 0x18030005},
        {"4294967299", 0x09030064, 0x18030005},
        {"99999999999999999999", k_untouched, k_untouched},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.context ? row.context : "unset");
        const vdc_environment context(row.context);
        expect_parse("vlan100", 1, row.vlan);
        expect_parse("tunnel5", 1, row.tunnel);
    }
}

TEST(ulx_interface_name_to_ifindex, refuses_null_pointers)
{
    IfIndex out = k_untouched;
    EXPECT_EQ(ulx_interface_name_to_ifindex(nullptr, &out), 0);
    EXPECT_EQ(out, k_untouched);
    EXPECT_EQ(ulx_interface_name_to_ifindex("vlan100", nullptr), 0);
    EXPECT_EQ(ulx_interface_name_to_ifindex("null0", nullptr), 0);
    EXPECT_EQ(ulx_interface_name_to_ifindex("bay3", nullptr), 0);
}

TEST(ulx_interface_coordinates_to_ifindex, builds_every_kind_from_the_counts_that_it_takes)
{
    const vdc_environment unset(nullptr);
    for (int32_t kind = -2; kind <= 71; ++kind) {
        for (int32_t count = 0; count <= 9; ++count) {
            SCOPED_TRACE(testing::Message() << "kind " << kind << " count " << count);
            const build_case *row = find_build_case(kind, count);
            IfIndex out = k_untouched;
            EXPECT_EQ(ulx_interface_coordinates_to_ifindex(kind, k_numbers, count, &out),
                      row != nullptr ? 1 : 0);
            EXPECT_EQ(out, row != nullptr ? row->value : k_untouched) << std::hex << out;
        }
    }
}

TEST(ulx_interface_coordinates_to_ifindex, reads_no_number_beyond_the_count)
{
    const vdc_environment unset(nullptr);
    for (const build_case &row : k_build_cases) {
        for (int32_t count = row.least; count <= row.most; ++count) {
            SCOPED_TRACE(testing::Message() << "kind " << row.kind << " count " << count);
            // Just as long as the count says, so that a sanitizer sees a read too many.
            const std::vector<int32_t> numbers(k_numbers, k_numbers + count);
            IfIndex out = k_untouched;
            EXPECT_EQ(ulx_interface_coordinates_to_ifindex(row.kind, numbers.data(), count, &out),
                      1);
            EXPECT_EQ(out, row.value);
        }
    }
}

TEST(ulx_interface_coordinates_to_ifindex, succeeds_without_a_value_for_refused_numbers)
{
    const vdc_environment unset(nullptr);
    const coordinates_case rows[] = {
        {1, {0, 1}, 1, k_untouched},       {1, {33, 1}, 1, k_untouched},
        {1, {1, 129}, 1, k_untouched},     {1, {-1, 1}, 1, k_untouched},
        {2, {0, 1}, 1, k_untouched},       {2, {1, 1, 0}, 1, 0x02000000},
        {2, {1, 1, 4096}, 1, k_untouched}, {3, {4096}, 1, k_untouched},
        {4, {33, 1}, 1, k_untouched},      {5, {257}, 1, k_untouched},
        {5, {0}, 1, k_untouched},          {5, {1, 4096}, 1, k_untouched},
        {6, {33, 1, 1}, 1, k_untouched},   {6, {31, 5, 10}, 1, 0x08f8500a},
        {6, {30, 5, 10}, 1, 0x08e8400a},   {7, {256}, 1, k_untouched},
        {8, {32}, 1, k_untouched},         {9, {1, 1, 16384}, 1, k_untouched},
        {10, {33, 1}, 1, k_untouched},     {11, {33, 1}, 1, k_untouched},
        {13, {256}, 1, k_untouched},       {14, {1, 4, 0}, 1, k_untouched},
        {15, {1024}, 1, k_untouched},      {16, {0}, 1, k_untouched},
        {16, {4095}, 1, k_untouched},      {18, {33, 1}, 1, k_untouched},
        {21, {257}, 1, k_untouched},       {22, {4097}, 1, k_untouched},
        {22, {4096, 4095}, 1, 0x16ffffff}, {23, {65536}, 1, k_untouched},
        {27, {0}, 1, k_untouched},         {28, {0}, 1, k_untouched},
        {28, {0, 1}, 1, k_untouched},      {28, {1, 0}, 1, k_untouched},
        {28, {256, 1, 1}, 1, k_untouched}, {29, {1, 3, 1}, 1, k_untouched},
        {30, {33, 1}, 1, k_untouched},     {31, {65504}, 1, k_untouched},
        {32, {33, 1}, 1, k_untouched},     {32, {1, 1, 16}, 1, k_untouched},
        {35, {65504}, 1, k_untouched},     {36, {65504}, 1, k_untouched},
        {37, {32}, 1, k_untouched},        {37, {1, 128}, 1, k_untouched},
        {39, {0}, 1, k_untouched},         {40, {0}, 1, k_untouched},
        {40, {65536}, 1, k_untouched},     {40, {65544}, 1, 0x1e100007},
    };
    for (const coordinates_case &row : rows) {
        expect_built(row);
    }
}

TEST(ulx_interface_coordinates_to_ifindex, fails_for_refused_numbers_of_three_kinds)
{
    const coordinates_case rows[] = {
        {24, {0, 1}, 0, k_untouched},
        {24, {516, 1}, 0, k_untouched},
        {24, {515, 1}, 1, 0x25000000 | 514 << 14},
        {24, {1, 1, 64}, 0, k_untouched},
        {24, {1, 1, 63}, 1, 0x2500003f},
        // No satellite chassis on this platform.
        {24, {32, 1}, 1, 0x25000000 | 31 << 14},
        {24, {101, 1, 5}, 1, 0x25000000 | 100 << 14 | 5},
        {33, {0}, 0, k_untouched},
        {33, {1048577}, 0, k_untouched},
        {33, {1048576}, 1, 0x1cfffff0},
        {33, {1, 16}, 0, k_untouched},
        {33, {-1}, 0, k_untouched},
        {34, {0, 1}, 0, k_untouched},
        {34, {516, 1}, 0, k_untouched},
        {34, {1, 1, 64}, 0, k_untouched},
    };
    for (const coordinates_case &row : rows) {
        expect_built(row);
    }
}

TEST(ulx_interface_coordinates_to_ifindex, guards_its_arguments)
{
    IfIndex out = k_untouched;
    EXPECT_EQ(ulx_interface_coordinates_to_ifindex(1, nullptr, 2, &out), 0);
    EXPECT_EQ(ulx_interface_coordinates_to_ifindex(1, k_numbers, 2, nullptr), 0);
    EXPECT_EQ(ulx_interface_coordinates_to_ifindex(12, nullptr, 0, nullptr), 0);
    EXPECT_EQ(ulx_interface_coordinates_to_ifindex(1, nullptr, -1, &out), 0);
    EXPECT_EQ(ulx_interface_coordinates_to_ifindex(8, nullptr, -1, &out), 1);
    EXPECT_EQ(ulx_interface_coordinates_to_ifindex(INT32_MAX, k_numbers, 2, &out), 0);
    EXPECT_EQ(ulx_interface_coordinates_to_ifindex(INT32_MIN, k_numbers, 2, &out), 0);
    EXPECT_EQ(out, k_untouched);
    EXPECT_EQ(ulx_interface_coordinates_to_ifindex(12, nullptr, 0, &out), 1);
    EXPECT_EQ(out, 0x06081000u);
}

TEST(ulx_interface_coordinates_to_ifindex, takes_a_negative_count_for_a_wrong_one)
{
    // These take any count: the first two look a name up that nothing knows.
    for (const int32_t kind : {19, 20, 8, 37}) {
        SCOPED_TRACE(kind);
        IfIndex value = k_untouched;
        EXPECT_EQ(ulx_interface_coordinates_to_ifindex(kind, k_numbers, -1, &value), 1);
        EXPECT_EQ(value, k_untouched);
    }
    for (const int32_t kind : {1, 2, 12, 24, 33}) {
        SCOPED_TRACE(kind);
        IfIndex value = k_untouched;
        EXPECT_EQ(ulx_interface_coordinates_to_ifindex(kind, k_numbers, -1, &value), 0);
        EXPECT_EQ(value, k_untouched);
    }
}
