// Every constructor with any arguments, in and out of range, against its row: the limits of each
// argument and the bits that it goes to, typed out.
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ruk/if_index.h"
#include "tests/support/random.h"

using ruk_test::Random;

namespace
{

constexpr IfIndex k_untouched = 0xdeadbeef;
constexpr int k_calls = 4000;
constexpr int64_t k_any = INT64_MAX;

// One argument: refused outside least to most, else (argument - less) & kept, shifted to its place.
struct Argument {
    int64_t least = 0;
    int64_t most = k_any;
    int shift = 0;
    int64_t less = 0;
    uint32_t kept = 0xffffffff;
    bool unchecked = false; // least and most don't count

    bool takes(int64_t number) const { return unchecked || (number >= least && number <= most); }
    uint32_t place(int64_t number) const
    {
        return (static_cast<uint32_t>(number - less) & kept) << shift;
    }
};

Argument bounded(int64_t least, int64_t most, int shift, uint32_t kept = 0xffffffff)
{
    return {least, most, shift, 0, kept, false};
}

// A number that a user counts from one.
Argument counted(int64_t most, int shift, uint32_t kept = 0xffffffff)
{
    return {1, most, shift, 1, kept, false};
}

Argument unchecked(int shift, uint32_t kept = 0xffffffff)
{
    return {0, 0, shift, 0, kept, true};
}

// Checked, but stored nowhere.
Argument dropped(int64_t most)
{
    return {0, most, 0, 0, 0, false};
}

Random &shared_random()
{
    static Random random;
    return random;
}

// An argument near its limits, near those of its width, or anything.
template <typename Number> Number some_argument(Random &random, const Argument &argument)
{
    const int64_t near = static_cast<int64_t>(random.below(5)) - 2;
    switch (random.below(6)) {
    case 0:
        return static_cast<Number>(argument.least + near);
    case 1:
        return static_cast<Number>(argument.most + near);
    case 2:
        return static_cast<Number>((int64_t{1} << random.below(34)) + near);
    case 3:
        return static_cast<Number>(random.bits64());
    default: {
        const int64_t span = argument.unchecked ? 1 << 16 : argument.most - argument.least + 1;
        return static_cast<Number>(argument.least + static_cast<int64_t>(random.bits64() >> 1) %
                                                        (span > 0 ? span : 1));
    }
    }
}

template <typename... Numbers, size_t... I>
std::tuple<Numbers...> some_arguments(Random &random, const std::vector<Argument> &arguments,
                                      std::index_sequence<I...>)
{
    return {some_argument<Numbers>(random, arguments[I])...};
}

template <typename... Numbers>
std::string show(const char *name, const std::tuple<Numbers...> &numbers)
{
    std::string text = name;
    std::apply([&](auto... number) { ((text += " " + std::to_string(number)), ...); }, numbers);
    return text;
}

// Calls init with random arguments; expected is the value that it builds of some, or nothing.
template <typename... Numbers, typename Expected>
void check(const char *name, uint32_t (*init)(IfIndex *, Numbers...),
           const std::vector<Argument> &arguments, Expected expected)
{
    Random &random = shared_random();
    ASSERT_EQ(arguments.size(), sizeof...(Numbers)) << name;
    int built = 0;
    for (int i = 0; i < k_calls; ++i) {
        const auto numbers =
            some_arguments<Numbers...>(random, arguments, std::index_sequence_for<Numbers...>{});
        const auto value =
            std::apply([&](auto... number) { return expected(int64_t{number}...); }, numbers);
        IfIndex got = k_untouched;
        const uint32_t result =
            std::apply([&](auto... number) { return init(&got, number...); }, numbers);
        ASSERT_EQ(result, value ? 0U : 14U) << show(name, numbers);
        ASSERT_EQ(got, value.value_or(k_untouched))
            << show(name, numbers) << std::hex << " " << got;
        built += value ? 1 : 0;
    }
    EXPECT_GT(built, k_calls / 100) << name;
}

// The same for a constructor of which each argument is judged and placed by itself.
template <typename... Numbers>
void check(const char *name, uint32_t (*init)(IfIndex *, Numbers...), IfIndex base,
           const std::vector<Argument> &arguments)
{
    check(name, init, arguments, [&](auto... numbers) -> std::optional<IfIndex> {
        IfIndex value = base;
        size_t next = 0;
        bool taken = true;
        for (const int64_t number : {numbers...}) {
            const Argument &argument = arguments[next++];
            taken = taken && argument.takes(number);
            value |= argument.place(number);
        }
        return taken ? std::optional(value) : std::nullopt;
    });
}

const Argument k_slot = bounded(0, 31, 19);
const Argument k_port = bounded(0, 127, 12);
const Argument k_sub = bounded(0, 4095, 0);
const Argument k_user_slot = counted(32, 19);
const Argument k_user_port = counted(128, 12);

} // namespace

#define CHECK(name, ...) check(#name, name, __VA_ARGS__)

TEST(if_index_constructors_random, physical_ports)
{
    CHECK(if_index_phy_fc_port_init, 0x01000000, {k_slot, k_port, k_sub});
    CHECK(if_index_phy_eth_port_init, 0x02000000, {k_slot, k_port, k_sub});
    CHECK(if_index_phy_ethernet_init, 0x1A000000, {k_slot, k_port, k_sub});
    CHECK(if_index_mgmt_sup_port_init, 0x05000000, {k_slot, k_port});
    CHECK(if_index_eobc_port_init, 0x07000000, {k_slot});
    CHECK(if_index_vsan_port_init, 0x08000000, {k_slot, k_port, bounded(INT32_MIN, 4095, 0)});
    CHECK(if_index_iscsi_port_init, 0x0B000000, {k_slot, k_port});
    CHECK(if_index_umbra_port_init, 0x0C000000, {k_slot, k_port});
    CHECK(if_index_xlport_init, 0x0D000000, {k_slot, k_port});
    CHECK(if_index_tk_port_init, 0x0E000000, {k_slot, bounded(0, 31, 14), bounded(0, 16382, 0)});
    CHECK(if_index_xgfc_ifc_init, 0x11000000,
          {bounded(0, 31, 11), bounded(0, 127, 4), unchecked(0, 15)});
    CHECK(if_index_kiro_port_init, 0x12000000, {k_slot, k_port});
    CHECK(if_index_dorsa_port_init, 0x14000000, {k_slot, unchecked(13), bounded(0, 16, 0)});
    CHECK(if_index_pemu_port_init, 0x21000000, {k_slot, k_port});
    CHECK(if_index_vl3_interface_init, 0x23000000,
          {bounded(0, 3, 22), bounded(0, 31, 17), bounded(0, 127, 10), bounded(0, 1023, 0)});
    CHECK(if_index_ruk_eth_init, 0x25000000,
          {bounded(0, 514, 14), unchecked(6), bounded(0, 63, 0)});
    CHECK(if_index_ruk_eth_init_from_mod, 0x25000000,
          {bounded(3, 515, 14), unchecked(6), bounded(0, 63, 0)});
    CHECK(if_index_ruk_eth_init_from_slot, 0x25000000,
          {{2, 514, 14, -1}, unchecked(6), bounded(0, 63, 0)});
    CHECK(if_index_sat_phy_eth_port_init, 0x1F000000,
          {unchecked(16), unchecked(12), unchecked(6), unchecked(0)});
    CHECK(if_index_sat_phy_eth_fif_port_init, 0x20000000,
          {unchecked(12), unchecked(6), unchecked(21)});
    CHECK(if_index_sat_phy_eth_port_init_from_slot_port_subintf, 0x1F000000,
          {{0, 0, 16, -67, 0xff, true}, unchecked(6), unchecked(0)});
    CHECK(if_index_sat_phy_eth_port_init_from_slot_port, 0x1F000000,
          {{0, 0, 16, -67, 0xff, true}, unchecked(6)});
}

TEST(if_index_constructors_random, numbered_interfaces)
{
    const Argument channel = bounded(0, 4095, 0, 0xff);
    CHECK(if_index_port_channel_init, 0x04000000, {channel});
    CHECK(if_index_port_channel_init_internal, 0x04000000,
          {channel, bounded(0, 3, 20), bounded(0, 4095, 8)});
    CHECK(if_index_eth_port_channel_init, 0x16000000, {bounded(0, 4095, 0)});
    CHECK(if_index_eth_port_channel_init_subintf, 0x16000000,
          {bounded(0, 4095, 0), bounded(0, 4095, 12)});
    CHECK(if_index_eth_port_channel_init_internal, 0x16000000,
          {channel, bounded(0, 3, 20), bounded(0, 4095, 8)});
    CHECK(if_index_xgfc_port_init, 0x04100000,
          {unchecked(0, 0xff), unchecked(16, 0xf), unchecked(12, 0xf)});
    CHECK(if_index_inband_port_init, 0x06000000, {bounded(0, 4, 19), bounded(0, 3, 12)});
    CHECK(if_index_inband_linecard_port_init, 0x06200000, {bounded(0, 3, 12), unchecked(4)});
    CHECK(if_index_vlan_port_init, 0x09000000, {bounded(0, 255, 16), bounded(1, 4094, 0)});
    CHECK(if_index_fcip_port_init, 0x0A000000, {bounded(0, 255, 0)});
    CHECK(if_index_fcmpls_tnnl_init, 0x0F000000, {bounded(0, 255, 0)});
    CHECK(if_index_nalp_vxe_init, 0x10000000, {unchecked(8), unchecked(0)});
    CHECK(if_index_zeff_vxe_init, 0x13000000, {unchecked(8), unchecked(0)});
    CHECK(if_index_eth_inband_port_init, {bounded(0, 32, 16)},
          [](int64_t number) -> std::optional<IfIndex> {
              if (number > 32) {
                  return std::nullopt;
              }
              return number == 32 ? 0x19200000 : 0x15000000 | static_cast<uint32_t>(number) << 16;
          });
    CHECK(if_index_tunnel_init, 0x18000000, {unchecked(16, 0xff), bounded(0, 65535, 0)});
    CHECK(if_index_lveth_init, {bounded(0, 1023, 0), bounded(0, 4095, 0), bounded(0, 15, 0)},
          [](int64_t slot, int64_t port, int64_t sub) -> std::optional<IfIndex> {
              if (port > 4095 || sub > 15) {
                  return std::nullopt;
              }
              return static_cast<IfIndex>(0x1B000000 | (slot & 0xff) << 16 | port << 4 |
                                          (slot >> 8 & 3) | (sub & 12));
          });
    CHECK(if_index_veth_init, 0x1C000000, {bounded(0, 1048575, 4), bounded(0, 15, 0)});
    CHECK(if_index_ether_server_interface_init, 0x1D000000, {unchecked(0, 0xfffff)});
    CHECK(if_index_vif_init, 0x1D000000, {unchecked(0, 0xfffff)});
    CHECK(if_index_fc_server_interface_init, 0x1E000000, {unchecked(0, 0xffff)});
    CHECK(if_index_vfc_init, 0x1E000000, {bounded(0, 61440, 0)});
    CHECK(if_index_vfc_veth_init, 0x1E300000, {bounded(0, 61440, 0)});
    CHECK(if_index_vfc_port_channel_init, 0x1E100000, {counted(4096, 0)});
    CHECK(if_index_vfc_slot_port_init, 0x1E200000, {bounded(0, 31, 15), bounded(0, 127, 8)});
    CHECK(if_index_vfc_hobb_init, 0x1E400000,
          {unchecked(10), bounded(0, 31, 8), bounded(0, 127, 2)});
    CHECK(if_index_overlay_init, 0x22000000, {unchecked(19), bounded(0, 65503, 0)});
    CHECK(if_index_marn_interface_init, 0x24000000, {bounded(0, 1023, 12), bounded(0, 4095, 0)});
    CHECK(if_index_mpls_sublayer_port_init, 0x26000000, {bounded(1, UINT32_MAX, 0, 0xffffff)});
    CHECK(if_index_loopback_port_init, 0xFE000000, {bounded(0, 1023, 0)});
}

TEST(if_index_constructors_random, of_user_numbers)
{
    const std::vector<Argument> slot_port = {k_user_slot, k_user_port};
    CHECK(if_index_phy_fc_port_cli_init, 0x01000000, slot_port);
    CHECK(if_index_iscsi_port_cli_init, 0x0B000000, slot_port);
    CHECK(if_index_umbra_port_cli_init, 0x0C000000, slot_port);
    CHECK(if_index_xlport_cli_init, 0x0D000000, slot_port);
    CHECK(if_index_kiro_port_cli_init, 0x12000000, slot_port);
    CHECK(if_index_pemu_port_cli_init, 0x21000000, slot_port);
    CHECK(if_index_port_channel_cli_init, 0x04000000, {counted(256, 0), bounded(0, 4095, 8)});
    CHECK(if_index_port_channel_cli_init_internal, 0x04000000,
          {counted(256, 0), bounded(0, 3, 20), bounded(0, 4095, 8)});
    CHECK(if_index_eth_port_channel_cli_init, 0x16000000, {counted(4096, 0), bounded(0, 4095, 12)});
    CHECK(if_index_eth_port_channel_cli_init_internal, 0x16000000,
          {counted(4096, 0, 0xff), bounded(0, 3, 20), bounded(0, 4095, 8)});
    CHECK(if_index_mgmt_sup_port_cli_init, 0x05000000, {k_slot, k_port});
    CHECK(if_index_eobc_port_cli_init, 0x07000000, {k_slot, dropped(127)});
    CHECK(if_index_inband_port_cli_init, 0x06000000, {bounded(0, 4, 19), bounded(0, 3, 12)});
    CHECK(if_index_loopback_port_cli_init, 0xFE000000, {bounded(0, 1023, 0)});
    CHECK(if_index_vlan_port_cli_init, 0x09000000, {bounded(0, 255, 16), bounded(1, 4094, 0)});
    CHECK(if_index_fcip_port_cli_init, 0x0A000000, {counted(255, 0)});
    CHECK(if_index_fcmpls_tnnl_cli_init, 0x0F000000, {counted(255, 0)});
    CHECK(if_index_tk_port_cli_init, 0x0E000000, {k_user_slot, counted(32, 14), counted(16383, 0)});
    CHECK(if_index_tunnel_cli_init, 0x18000000, {bounded(0, 255, 16), bounded(0, 65535, 0)});
    CHECK(if_index_lveth_cli_init, 0x1B000000,
          {counted(32, 16), counted(4096, 4), bounded(0, 15, 0, 12)});
    CHECK(if_index_veth_cli_init, 0x1C000000, {counted(1048576, 4), bounded(0, 15, 0)});
    CHECK(if_index_ether_sif_cli_init, 0x1D000000, {counted(1048576, 0)});
    CHECK(if_index_fc_sif_cli_init, 0x1E000000, {counted(61440, 0)});
    CHECK(if_index_sat_phy_eth_port_cli_init, 0x1F000000,
          {counted(256, 16), counted(2, 12), counted(64, 6), bounded(0, 64, 0)});
    CHECK(if_index_overlay_cli_init, 0x22000000, {bounded(0, 4, 19), bounded(0, 65503, 0)});
    CHECK(if_index_vfc_cli_init, 0x1E000000, {counted(61441, 0)});
    CHECK(if_index_vfc_veth_cli_init, 0x1E300000, {counted(61441, 0)});
    CHECK(if_index_vfc_port_channel_cli_init, 0x1E100000, {counted(4096, 0)});
    CHECK(if_index_vfc_slot_port_cli_init, 0x1E200000, {counted(32, 15), counted(128, 8)});
    CHECK(if_index_vfc_hobb_cli_init, 0x1E400000,
          {counted(255, 10), counted(32, 8), counted(128, 2)});
}

// Arguments that decide over each other.
TEST(if_index_constructors_random, of_user_numbers_with_two_readings)
{
    using Built = std::optional<IfIndex>;
    const auto within = [](int64_t number, int64_t least, int64_t most) {
        return number >= least && number <= most;
    };
    CHECK(if_index_phy_eth_port_cli_init,
          {k_user_slot, k_user_port, bounded(0, 3, 6), bounded(0, 4095, 0)},
          [&](int64_t slot, int64_t port, int64_t sat_port, int64_t sub) -> Built {
              if (!within(slot, 1, 32) || !within(port, 1, 128) || !within(sub, 0, 4095)) {
                  return std::nullopt;
              }
              return sat_port == 0
                         ? static_cast<IfIndex>(0x02000000 | (slot - 1) << 19 | (port - 1) << 12 |
                                                sub)
                         : static_cast<IfIndex>(0x1F000000 | (slot - 1) << 16 | (port - 1) << 12 |
                                                (sat_port & 0xff) << 6 | sub);
          });
    CHECK(if_index_phy_ethernet_cli_init,
          {bounded(-8, 256, 0), k_user_port, bounded(0, 4095, 0), counted(128, 0)},
          [&](int64_t first, int64_t second, int64_t sub, int64_t third) -> Built {
              if (within(first, 1, 32)) {
                  return within(second, 1, 128) && within(sub, 0, 4095)
                             ? Built(static_cast<IfIndex>(0x1A000000 | (first - 1) << 19 |
                                                          (second - 1) << 12 | sub))
                             : std::nullopt;
              }
              if (!within(third, 1, 128)) {
                  return std::nullopt;
              }
              return static_cast<IfIndex>(0x1F000000 | ((first - 1) & 0xff) << 16 |
                                          ((second - 1) & 0xff) << 12 | (third - 1) << 6);
          });
    CHECK(if_index_vsan_port_cli_init, {bounded(1, 32, 0), bounded(0, 128, 0), bounded(0, 4095, 0)},
          [&](int64_t slot, int64_t port, int64_t vsan) -> Built {
              if (!within(vsan, 0, 4095)) {
                  return std::nullopt;
              }
              if (slot == 31) {
                  return within(port, 0, 127)
                             ? Built(static_cast<IfIndex>(0x08F80000 | port << 12 | vsan))
                             : std::nullopt;
              }
              return within(slot, 1, 32) && within(port, 1, 128)
                         ? Built(static_cast<IfIndex>(0x08000000 | (slot - 1) << 19 |
                                                      (port - 1) << 12 | vsan))
                         : std::nullopt;
          });
    CHECK(if_index_ruk_eth_cli_init, {bounded(1, 515, 0), bounded(1, 256, 0), bounded(0, 63, 0)},
          [&](int64_t module, int64_t port, int64_t sub) -> Built {
              if (!within(module - 1, 0, 514) || !within(sub, 0, 63)) {
                  return std::nullopt;
              }
              return static_cast<IfIndex>(0x25000000 | (module - 1) << 14 |
                                          ((port - 1) & 0xff) << 6 | sub);
          });
    CHECK(if_index_dorsa_port_cli_init, {bounded(1, 32, 0), bounded(1, 256, 0), bounded(1, 128, 0)},
          [&](int64_t slot, int64_t node, int64_t port) -> Built {
              if (!within(slot, 1, 32) || !within(port, 1, 128)) {
                  return std::nullopt;
              }
              return static_cast<IfIndex>(0x14000000 | (slot - 1) << 19 |
                                          ((node - 1) & 0xff) << 13 | (port - 1));
          });
}
