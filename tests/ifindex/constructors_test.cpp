// Zero-based constructors: the value built at each limit, the refusal beyond it, and named values.
#include "tests/ifindex/building.h"

#include "ruk/if_index_build.h"

using building::builds;
using building::refuses;

TEST(if_index_init, slot_port_and_sub_interface)
{
    builds(if_index_phy_fc_port_init, {
                                          {{0, 0, 0}, 0x01000000},
                                          {{31, 127, 4095}, 0x01FFFFFF},
                                          {{10, 42, 1365}, 0x0152A555},
                                          {{31, 0, 0}, 0x01F80000},
                                          {{0, 127, 0}, 0x0107F000},
                                          {{0, 0, 4095}, 0x01000FFF},
                                      });
    refuses(if_index_phy_fc_port_init, {{32, 42, 1365},
                                        {65535, 42, 1365},
                                        {10, 128, 1365},
                                        {10, 255, 1365},
                                        {10, 42, 4096},
                                        {10, 42, 65535}});
    builds(if_index_phy_eth_port_init, {
                                           {{0, 0, 0}, 0x02000000},
                                           {{31, 127, 4095}, 0x02FFFFFF},
                                           {{10, 42, 1365}, 0x0252A555},
                                           {{31, 0, 0}, 0x02F80000},
                                           {{0, 127, 0}, 0x0207F000},
                                           {{0, 0, 4095}, 0x02000FFF},
                                       });
    refuses(if_index_phy_eth_port_init, {{32, 42, 1365},
                                         {65535, 42, 1365},
                                         {10, 128, 1365},
                                         {10, 255, 1365},
                                         {10, 42, 4096},
                                         {10, 42, 65535}});
    builds(if_index_phy_ethernet_init, {
                                           {{0, 0, 0}, 0x1A000000},
                                           {{31, 127, 4095}, 0x1AFFFFFF},
                                           {{10, 42, 1365}, 0x1A52A555},
                                           {{31, 0, 0}, 0x1AF80000},
                                           {{0, 127, 0}, 0x1A07F000},
                                           {{0, 0, 4095}, 0x1A000FFF},
                                       });
    refuses(if_index_phy_ethernet_init, {{32, 42, 1365},
                                         {65535, 42, 1365},
                                         {10, 128, 1365},
                                         {10, 255, 1365},
                                         {10, 42, 4096},
                                         {10, 42, 65535}});
}

TEST(if_index_init, slot_and_port)
{
    builds(if_index_mgmt_sup_port_init, {
                                            {{0, 0}, 0x05000000},
                                            {{31, 127}, 0x05FFF000},
                                            {{10, 42}, 0x0552A000},
                                            {{31, 0}, 0x05F80000},
                                            {{0, 127}, 0x0507F000},
                                        });
    refuses(if_index_mgmt_sup_port_init, {{32, 42}, {65535, 42}, {10, 128}, {10, 255}});
    builds(if_index_iscsi_port_init, {
                                         {{0, 0}, 0x0B000000},
                                         {{31, 127}, 0x0BFFF000},
                                         {{10, 42}, 0x0B52A000},
                                         {{31, 0}, 0x0BF80000},
                                         {{0, 127}, 0x0B07F000},
                                     });
    refuses(if_index_iscsi_port_init, {{32, 42}, {65535, 42}, {10, 128}, {10, 255}});
    builds(if_index_umbra_port_init, {
                                         {{0, 0}, 0x0C000000},
                                         {{31, 127}, 0x0CFFF000},
                                         {{10, 42}, 0x0C52A000},
                                         {{31, 0}, 0x0CF80000},
                                         {{0, 127}, 0x0C07F000},
                                     });
    refuses(if_index_umbra_port_init, {{32, 42}, {65535, 42}, {10, 128}, {10, 255}});
    builds(if_index_xlport_init, {
                                     {{0, 0}, 0x0D000000},
                                     {{31, 127}, 0x0DFFF000},
                                     {{10, 42}, 0x0D52A000},
                                     {{31, 0}, 0x0DF80000},
                                     {{0, 127}, 0x0D07F000},
                                 });
    refuses(if_index_xlport_init, {{32, 42}, {65535, 42}, {10, 128}, {10, 255}});
    builds(if_index_kiro_port_init, {
                                        {{0, 0}, 0x12000000},
                                        {{31, 127}, 0x12FFF000},
                                        {{10, 42}, 0x1252A000},
                                        {{31, 0}, 0x12F80000},
                                        {{0, 127}, 0x1207F000},
                                    });
    refuses(if_index_kiro_port_init, {{32, 42}, {65535, 42}, {10, 128}, {10, 255}});
    builds(if_index_pemu_port_init, {
                                        {{0, 0}, 0x21000000},
                                        {{31, 127}, 0x21FFF000},
                                        {{10, 42}, 0x2152A000},
                                        {{31, 0}, 0x21F80000},
                                        {{0, 127}, 0x2107F000},
                                    });
    refuses(if_index_pemu_port_init, {{32, 42}, {65535, 42}, {10, 128}, {10, 255}});
    builds(if_index_eobc_port_init, {
                                        {{0}, 0x07000000},
                                        {{31}, 0x07F80000},
                                        {{10}, 0x07500000},
                                    });
    refuses(if_index_eobc_port_init, {{32}, {65535}});
}

TEST(if_index_init, port_channels)
{
    builds(if_index_port_channel_init, {
                                           {{0}, 0x04000000},
                                           {{4095}, 0x040000FF},
                                           {{1365}, 0x04000055},
                                           {{255}, 0x040000FF},
                                           {{256}, 0x04000000},
                                           {{300}, 0x0400002C},
                                       });
    refuses(if_index_port_channel_init, {{4096}, {65535}});
    builds(if_index_port_channel_init_internal, {
                                                    {{0, 0, 0}, 0x04000000},
                                                    {{4095, 3, 4095}, 0x043FFFFF},
                                                    {{1365, 1, 1365}, 0x04155555},
                                                    {{4095, 0, 0}, 0x040000FF},
                                                    {{0, 3, 0}, 0x04300000},
                                                    {{0, 0, 4095}, 0x040FFF00},
                                                    {{300, 0, 0}, 0x0400002C},
                                                });
    refuses(if_index_port_channel_init_internal, {{4096, 1, 1365},
                                                  {65535, 1, 1365},
                                                  {1365, 4, 1365},
                                                  {1365, 255, 1365},
                                                  {1365, 1, 4096},
                                                  {1365, 1, 65535}});
    builds(if_index_xgfc_port_init, {
                                        {{0, 0, 0}, 0x04100000},
                                        {{65535, 65535, 255}, 0x041FF0FF},
                                        {{21845, 21845, 85}, 0x04155055},
                                        {{65535, 0, 0}, 0x041000FF},
                                        {{0, 65535, 0}, 0x041F0000},
                                        {{0, 0, 255}, 0x0410F000},
                                        {{256, 16, 16}, 0x04100000},
                                        {{255, 15, 15}, 0x041FF0FF},
                                    });
    builds(if_index_eth_port_channel_init, {
                                               {{0}, 0x16000000},
                                               {{4095}, 0x16000FFF},
                                               {{1365}, 0x16000555},
                                           });
    refuses(if_index_eth_port_channel_init, {{4096}, {65535}});
    builds(if_index_eth_port_channel_init_subintf, {
                                                       {{0, 0}, 0x16000000},
                                                       {{4095, 4095}, 0x16FFFFFF},
                                                       {{1365, 1365}, 0x16555555},
                                                       {{4095, 0}, 0x16000FFF},
                                                       {{0, 4095}, 0x16FFF000},
                                                   });
    refuses(if_index_eth_port_channel_init_subintf,
            {{4096, 1365}, {65535, 1365}, {1365, 4096}, {1365, 65535}});
    builds(if_index_eth_port_channel_init_internal, {
                                                        {{0, 0, 0}, 0x16000000},
                                                        {{4095, 3, 4095}, 0x163FFFFF},
                                                        {{1365, 1, 1365}, 0x16155555},
                                                        {{4095, 0, 0}, 0x160000FF},
                                                        {{0, 3, 0}, 0x16300000},
                                                        {{0, 0, 4095}, 0x160FFF00},
                                                        {{300, 0, 0}, 0x1600002C},
                                                    });
    refuses(if_index_eth_port_channel_init_internal, {{4096, 1, 1365},
                                                      {65535, 1, 1365},
                                                      {1365, 4, 1365},
                                                      {1365, 255, 1365},
                                                      {1365, 1, 4096},
                                                      {1365, 1, 65535}});
}

TEST(if_index_init, inband_types)
{
    builds(if_index_inband_port_init, {
                                          {{0, 0}, 0x06000000},
                                          {{4, 3}, 0x06203000},
                                          {{1, 1}, 0x06081000},
                                          {{4, 0}, 0x06200000},
                                          {{0, 3}, 0x06003000},
                                          {{1, 2}, 0x06082000},
                                          {{4, 1}, 0x06201000},
                                      });
    refuses(if_index_inband_port_init, {{5, 1}, {255, 1}, {1, 4}, {1, 255}});
    builds(if_index_inband_linecard_port_init, {
                                                   {{0, 0}, 0x06200000},
                                                   {{3, 65535}, 0x062FFFF0},
                                                   {{1, 21845}, 0x06255550},
                                                   {{3, 0}, 0x06203000},
                                                   {{0, 65535}, 0x062FFFF0},
                                                   {{0, 255}, 0x06200FF0},
                                                   {{0, 256}, 0x06201000},
                                                   {{1, 31}, 0x062011F0},
                                               });
    refuses(if_index_inband_linecard_port_init, {{4, 21845}, {255, 21845}});
    builds(if_index_eth_inband_port_init, {
                                              {{0}, 0x15000000},
                                              {{32}, 0x19200000},
                                              {{10}, 0x150A0000},
                                              {{31}, 0x151F0000},
                                          });
    refuses(if_index_eth_inband_port_init, {{33}, {255}});
    builds(if_index_eth_inband_diag_port_init, {
                                                   {{}, 0x19200000},
                                               });
    builds(if_index_null_interface_init, {
                                             {{}, 0x17000000},
                                         });
}

TEST(if_index_init, vsan_and_vlan)
{
    builds(if_index_vsan_port_init, {
                                        {{0, 0, 0}, 0x08000000},
                                        {{31, 127, 4095}, 0x08FFFFFF},
                                        {{10, 42, 1365}, 0x0852A555},
                                        {{31, 0, 0}, 0x08F80000},
                                        {{0, 127, 0}, 0x0807F000},
                                        {{0, 0, 4095}, 0x08000FFF},
                                    });
    refuses(if_index_vsan_port_init, {{32, 42, 1365},
                                      {65535, 42, 1365},
                                      {10, 128, 1365},
                                      {10, 255, 1365},
                                      {10, 42, 4096},
                                      {10, 42, INT32_MAX}});
    builds(if_index_vlan_port_init, {
                                        {{0, 1}, 0x09000001},
                                        {{255, 4094}, 0x09FF0FFE},
                                        {{85, 1365}, 0x09550555},
                                        {{255, 1}, 0x09FF0001},
                                        {{0, 4094}, 0x09000FFE},
                                    });
    refuses(if_index_vlan_port_init,
            {{256, 1365}, {4294967295, 1365}, {85, 0}, {85, 4095}, {85, 4294967295}});
}

TEST(if_index_init, tunnels)
{
    builds(if_index_fcip_port_init, {
                                        {{0}, 0x0A000000},
                                        {{255}, 0x0A0000FF},
                                        {{85}, 0x0A000055},
                                    });
    refuses(if_index_fcip_port_init, {{256}, {65535}});
    builds(if_index_fcmpls_tnnl_init, {
                                          {{0}, 0x0F000000},
                                          {{255}, 0x0F0000FF},
                                          {{85}, 0x0F000055},
                                      });
    refuses(if_index_fcmpls_tnnl_init, {{256}, {65535}});
    builds(if_index_tunnel_init, {
                                     {{0, 0}, 0x18000000},
                                     {{4294967295, 65535}, 0x18FFFFFF},
                                     {{1431655765, 21845}, 0x18555555},
                                     {{4294967295, 0}, 0x18FF0000},
                                     {{0, 65535}, 0x1800FFFF},
                                     {{255, 0}, 0x18FF0000},
                                     {{256, 1}, 0x18000001},
                                     {{511, 32768}, 0x18FF8000},
                                 });
    refuses(if_index_tunnel_init, {{1431655765, 65536}, {1431655765, 4294967295}});
}

TEST(if_index_init, tk_ifc_dorsa_and_virtual_types)
{
    builds(if_index_tk_port_init, {
                                      {{0, 0, 0}, 0x0E000000},
                                      {{31, 31, 16382}, 0x0EFFFFFE},
                                      {{10, 10, 5460}, 0x0E529554},
                                      {{31, 0, 0}, 0x0EF80000},
                                      {{0, 31, 0}, 0x0E07C000},
                                      {{0, 0, 16382}, 0x0E003FFE},
                                  });
    refuses(if_index_tk_port_init, {{32, 10, 5460},
                                    {65535, 10, 5460},
                                    {10, 32, 5460},
                                    {10, 255, 5460},
                                    {10, 10, 16383},
                                    {10, 10, 65535}});
    builds(if_index_xgfc_ifc_init, {
                                       {{0, 0, 0}, 0x11000000},
                                       {{31, 127, 255}, 0x1100FFFF},
                                       {{10, 42, 85}, 0x110052A5},
                                       {{31, 0, 0}, 0x1100F800},
                                       {{0, 127, 0}, 0x110007F0},
                                       {{0, 0, 255}, 0x1100000F},
                                       {{0, 0, 15}, 0x1100000F},
                                       {{0, 0, 16}, 0x11000000},
                                   });
    refuses(if_index_xgfc_ifc_init, {{32, 42, 85}, {65535, 42, 85}, {10, 128, 85}, {10, 255, 85}});
    builds(if_index_dorsa_port_init, {
                                         {{0, 0, 0}, 0x14000000},
                                         {{31, 255, 16}, 0x14FFE010},
                                         {{10, 85, 5}, 0x145AA005},
                                         {{31, 0, 0}, 0x14F80000},
                                         {{0, 255, 0}, 0x141FE000},
                                         {{0, 0, 16}, 0x14000010},
                                         {{0, 63, 0}, 0x1407E000},
                                         {{0, 64, 0}, 0x14080000},
                                     });
    refuses(if_index_dorsa_port_init, {{32, 85, 5}, {65535, 85, 5}, {10, 85, 17}, {10, 85, 255}});
    builds(if_index_nalp_vxe_init, {
                                       {{0, 0}, 0x10000000},
                                       {{255, 255}, 0x1000FFFF},
                                       {{85, 85}, 0x10005555},
                                       {{255, 0}, 0x1000FF00},
                                       {{0, 255}, 0x100000FF},
                                   });
    builds(if_index_zeff_vxe_init, {
                                       {{0, 0}, 0x13000000},
                                       {{255, 255}, 0x1300FFFF},
                                       {{85, 85}, 0x13005555},
                                       {{255, 0}, 0x1300FF00},
                                       {{0, 255}, 0x130000FF},
                                   });
}

TEST(if_index_init, virtual_ethernet)
{
    builds(if_index_lveth_init, {
                                    {{0, 0, 0}, 0x1B000000},
                                    {{65535, 4095, 15}, 0x1BFFFFFF},
                                    {{21845, 1365, 5}, 0x1B555555},
                                    {{65535, 0, 0}, 0x1BFF0003},
                                    {{0, 4095, 0}, 0x1B00FFF0},
                                    {{0, 0, 15}, 0x1B00000C},
                                    {{255, 0, 0}, 0x1BFF0000},
                                    {{256, 0, 0}, 0x1B000001},
                                    {{1023, 0, 0}, 0x1BFF0003},
                                    {{1024, 0, 0}, 0x1B000000},
                                    {{0, 0, 3}, 0x1B000000},
                                    {{0, 0, 4}, 0x1B000004},
                                    {{0, 0, 5}, 0x1B000004},
                                    {{0, 0, 8}, 0x1B000008},
                                });
    refuses(if_index_lveth_init,
            {{21845, 4096, 5}, {21845, 65535, 5}, {21845, 1365, 16}, {21845, 1365, 65535}});
    builds(if_index_veth_init, {
                                   {{0, 0}, 0x1C000000},
                                   {{1048575, 15}, 0x1CFFFFFF},
                                   {{349525, 5}, 0x1C555555},
                                   {{1048575, 0}, 0x1CFFFFF0},
                                   {{0, 15}, 0x1C00000F},
                               });
    refuses(if_index_veth_init, {{1048576, 5}, {4294967295, 5}, {349525, 16}, {349525, 65535}});
    builds(if_index_ether_server_interface_init, {
                                                     {{0}, 0x1D000000},
                                                     {{4294967295}, 0x1D0FFFFF},
                                                     {{1431655765}, 0x1D055555},
                                                     {{1048575}, 0x1D0FFFFF},
                                                     {{1048576}, 0x1D000000},
                                                 });
    builds(if_index_vif_init, {
                                  {{0}, 0x1D000000},
                                  {{4294967295}, 0x1D0FFFFF},
                                  {{1431655765}, 0x1D055555},
                                  {{1048575}, 0x1D0FFFFF},
                                  {{1048576}, 0x1D000000},
                              });
}

TEST(if_index_init, vfc)
{
    builds(if_index_fc_server_interface_init, {
                                                  {{0}, 0x1E000000},
                                                  {{4294967295}, 0x1E00FFFF},
                                                  {{1431655765}, 0x1E005555},
                                                  {{65535}, 0x1E00FFFF},
                                                  {{65536}, 0x1E000000},
                                              });
    builds(if_index_vfc_init, {
                                  {{0}, 0x1E000000},
                                  {{61440}, 0x1E00F000},
                                  {{20480}, 0x1E005000},
                              });
    refuses(if_index_vfc_init, {{61441}, {4294967295}});
    builds(if_index_vfc_veth_init, {
                                       {{0}, 0x1E300000},
                                       {{61440}, 0x1E30F000},
                                       {{20480}, 0x1E305000},
                                   });
    refuses(if_index_vfc_veth_init, {{61441}, {4294967295}});
    builds(if_index_vfc_port_channel_init, {
                                               {{1}, 0x1E100000},
                                               {{4096}, 0x1E100FFF},
                                               {{1366}, 0x1E100555},
                                           });
    refuses(if_index_vfc_port_channel_init, {{0}, {4097}, {65535}});
    builds(if_index_vfc_slot_port_init, {
                                            {{0, 0}, 0x1E200000},
                                            {{31, 127}, 0x1E2FFF00},
                                            {{10, 42}, 0x1E252A00},
                                            {{31, 0}, 0x1E2F8000},
                                            {{0, 127}, 0x1E207F00},
                                        });
    refuses(if_index_vfc_slot_port_init, {{32, 42}, {65535, 42}, {10, 128}, {10, 255}});
    builds(if_index_vfc_hobb_init, {
                                       {{0, 0, 0}, 0x1E400000},
                                       {{255, 31, 127}, 0x1E43FFFC},
                                       {{85, 10, 42}, 0x1E415EA8},
                                       {{255, 0, 0}, 0x1E43FC00},
                                       {{0, 31, 0}, 0x1E401F00},
                                       {{0, 0, 127}, 0x1E4001FC},
                                   });
    refuses(if_index_vfc_hobb_init, {{85, 32, 42}, {85, 65535, 42}, {85, 10, 128}, {85, 10, 255}});
}

TEST(if_index_init, satellites)
{
    builds(if_index_sat_phy_eth_port_init, {
                                               {{0, 0, 0, 0}, 0x1F000000},
                                               {{255, 255, 255, 65535}, 0x1FFFFFFF},
                                               {{85, 85, 85, 21845}, 0x1F555555},
                                               {{255, 0, 0, 0}, 0x1FFF0000},
                                               {{0, 255, 0, 0}, 0x1F0FF000},
                                               {{0, 0, 255, 0}, 0x1F003FC0},
                                               {{0, 0, 0, 65535}, 0x1F00FFFF},
                                               {{100, 15, 63, 63}, 0x1F64FFFF},
                                               {{0, 16, 0, 0}, 0x1F010000},
                                               {{0, 0, 64, 0}, 0x1F001000},
                                               {{0, 0, 0, 64}, 0x1F000040},
                                           });
    builds(if_index_sat_phy_eth_port_init_from_slot_port_subintf,
           {
               {{0, 0, 0}, 0x1F430000},
               {{65535, 255, 65535}, 0x1F42FFFF},
               {{21845, 85, 21845}, 0x1F985555},
               {{65535, 0, 0}, 0x1F420000},
               {{0, 255, 0}, 0x1F433FC0},
               {{0, 0, 65535}, 0x1F43FFFF},
               {{33, 2, 5}, 0x1F640085},
               {{188, 0, 0}, 0x1FFF0000},
               {{189, 0, 0}, 0x1F000000},
           });
    builds(if_index_sat_phy_eth_port_init_from_slot_port, {
                                                              {{0, 0}, 0x1F430000},
                                                              {{65535, 255}, 0x1F423FC0},
                                                              {{21845, 85}, 0x1F981540},
                                                              {{65535, 0}, 0x1F420000},
                                                              {{0, 255}, 0x1F433FC0},
                                                              {{33, 2}, 0x1F640080},
                                                          });
    builds(if_index_sat_phy_eth_fif_port_init, {
                                                   {{0, 0, 0}, 0x20000000},
                                                   {{255, 255, 255}, 0x3FEFFFC0},
                                                   {{85, 85, 85}, 0x2AA55540},
                                                   {{255, 0, 0}, 0x200FF000},
                                                   {{0, 255, 0}, 0x20003FC0},
                                                   {{0, 0, 255}, 0x3FE00000},
                                                   {{15, 63, 7}, 0x20E0FFC0},
                                                   {{0, 0, 8}, 0x21000000},
                                               });
}

TEST(if_index_init, overlay_vl3_marn_ruk_eth_mpls_and_loopback)
{
    builds(if_index_overlay_init, {
                                      {{0, 0}, 0x22000000},
                                      {{255, 65503}, 0x27F8FFDF},
                                      {{85, 21834}, 0x22A8554A},
                                      {{255, 0}, 0x27F80000},
                                      {{0, 65503}, 0x2200FFDF},
                                      {{4, 1}, 0x22200001},
                                      {{31, 0}, 0x22F80000},
                                      {{32, 0}, 0x23000000},
                                  });
    refuses(if_index_overlay_init, {{85, 65504}, {85, 4294967295}});
    builds(if_index_vl3_interface_init, {
                                            {{0, 0, 0, 0}, 0x23000000},
                                            {{3, 31, 127, 1023}, 0x23FFFFFF},
                                            {{1, 10, 42, 341}, 0x2354A955},
                                            {{3, 0, 0, 0}, 0x23C00000},
                                            {{0, 31, 0, 0}, 0x233E0000},
                                            {{0, 0, 127, 0}, 0x2301FC00},
                                            {{0, 0, 0, 1023}, 0x230003FF},
                                        });
    refuses(if_index_vl3_interface_init, {{4, 10, 42, 341},
                                          {255, 10, 42, 341},
                                          {1, 32, 42, 341},
                                          {1, 65535, 42, 341},
                                          {1, 10, 128, 341},
                                          {1, 10, 255, 341},
                                          {1, 10, 42, 1024},
                                          {1, 10, 42, 65535}});
    builds(if_index_marn_interface_init, {
                                             {{0, 0}, 0x24000000},
                                             {{1023, 4095}, 0x243FFFFF},
                                             {{341, 1365}, 0x24155555},
                                             {{1023, 0}, 0x243FF000},
                                             {{0, 4095}, 0x24000FFF},
                                         });
    refuses(if_index_marn_interface_init, {{1024, 1365}, {65535, 1365}, {341, 4096}, {341, 65535}});
    builds(if_index_ruk_eth_init, {
                                      {{0, 0, 0}, 0x25000000},
                                      {{514, 255, 63}, 0x2580BFFF},
                                      {{171, 85, 21}, 0x252AD555},
                                      {{514, 0, 0}, 0x25808000},
                                      {{0, 255, 0}, 0x25003FC0},
                                      {{0, 0, 63}, 0x2500003F},
                                  });
    refuses(if_index_ruk_eth_init,
            {{515, 85, 21}, {65535, 85, 21}, {171, 85, 64}, {171, 85, 65535}});
    builds(if_index_ruk_eth_init_from_mod, {
                                               {{3, 0, 0}, 0x2500C000},
                                               {{515, 255, 63}, 0x2580FFFF},
                                               {{173, 85, 21}, 0x252B5555},
                                               {{515, 0, 0}, 0x2580C000},
                                               {{3, 255, 0}, 0x2500FFC0},
                                               {{3, 0, 63}, 0x2500C03F},
                                           });
    refuses(if_index_ruk_eth_init_from_mod, {{2, 85, 21},
                                             {516, 85, 21},
                                             {0, 85, 21},
                                             {65535, 85, 21},
                                             {173, 85, 64},
                                             {173, 85, 65535}});
    builds(if_index_ruk_eth_init_from_slot, {
                                                {{2, 0, 0}, 0x2500C000},
                                                {{514, 255, 63}, 0x2580FFFF},
                                                {{172, 85, 21}, 0x252B5555},
                                                {{514, 0, 0}, 0x2580C000},
                                                {{2, 255, 0}, 0x2500FFC0},
                                                {{2, 0, 63}, 0x2500C03F},
                                            });
    refuses(if_index_ruk_eth_init_from_slot, {{1, 85, 21},
                                              {515, 85, 21},
                                              {0, 85, 21},
                                              {65535, 85, 21},
                                              {172, 85, 64},
                                              {172, 85, 65535}});
    builds(if_index_mpls_sublayer_port_init, {
                                                 {{1}, 0x26000001},
                                                 {{4294967295}, 0x26FFFFFF},
                                                 {{1431655765}, 0x26555555},
                                                 {{16777215}, 0x26FFFFFF},
                                                 {{16777216}, 0x26000000},
                                             });
    refuses(if_index_mpls_sublayer_port_init, {{0}});
    builds(if_index_loopback_port_init, {
                                            {{0}, 0xFE000000},
                                            {{1023}, 0xFE0003FF},
                                            {{341}, 0xFE000155},
                                        });
    refuses(if_index_loopback_port_init, {{1024}, {65535}});
}

// A VSAN is judged from above only, and a negative one covers the value with its sign bits.
TEST(if_index_vsan_port_init, takes_negative_vsans)
{
    builds(if_index_vsan_port_init, {
                                        {{0, 0, -1}, 0xFFFFFFFF},
                                        {{1, 1, -4096}, 0xFFFFF000},
                                        {{0, 0, INT32_MIN}, 0x88000000},
                                    });
    refuses(if_index_vsan_port_init, {{32, 0, -1}, {0, 128, -1}});
}

// Channels are judged at 12 bits and stored in 8.
TEST(if_index_port_channel_init, keeps_8_bits_of_the_channel)
{
    builds(if_index_port_channel_init, {{{300}, 0x0400002C}});
}

TEST(if_index_lveth_init, keeps_bits_2_and_3_of_the_sub_interface)
{
    builds(if_index_lveth_init, {{{0, 0, 5}, 0x1B000004}});
}

TEST(if_index_ruk_eth_init, from_a_slot_and_from_its_module_agree)
{
    IfIndex from_slot = 0;
    IfIndex from_module = 1;
    EXPECT_EQ(if_index_ruk_eth_init_from_slot(&from_slot, 2, 7, 9), 0U);
    EXPECT_EQ(if_index_ruk_eth_init_from_mod(&from_module, 3, 7, 9), 0U);
    EXPECT_EQ(from_slot, 0x2500C1C9U);
    EXPECT_EQ(from_module, 0x2500C1C9U);
}

TEST(if_index_inband_port_init, stores_queue_2_since_the_platform_is_pinned)
{
    for (const auto &[alder, birch] : {std::pair{0, 0}, {1, 0}, {0, 1}}) {
        cli_set_platform_alder(alder, birch);
        builds(if_index_inband_port_init, {{{1, 2}, 0x06082000}});
        cli_set_platform_alder(alder, birch);
        EXPECT_EQ(if_index_inband_get_active_sup_priority_lo(), 0x06082000U);
    }
}

TEST(if_index_tunnel_create, checks_nothing)
{
    struct {
        uint32_t vdc;
        uint32_t number;
        IfIndex value;
    } const rows[] = {
        {0, 0, 0x18000000},         {3, 65535, 0x1803FFFF},   {256, 1, 0x18000001},
        {255, 0x10000, 0x18FF0000}, {0, 0x10001, 0x18010001}, {0, 0xFFFFFFFF, 0xFFFFFFFF},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.number);
        IfIndex value = 0;
        if_index_tunnel_create(&value, row.vdc, row.number);
        EXPECT_EQ(value, row.value);
    }
    if_index_tunnel_create(nullptr, 0, 0);
}

TEST(if_index_named_values, are_these)
{
    EXPECT_EQ(if_index_get_null_interface(), 0x17000000U);
    EXPECT_EQ(if_index_inband_get_remote_sup(), 0x06180000U);
    EXPECT_EQ(if_index_inband_get_local_sup(), 0x06100000U);
    EXPECT_EQ(if_index_inband_get_active_sup_bit_bucket(), 0x06083000U);
    EXPECT_EQ(if_index_inband_get_active_sup_priority_hi(), 0x06081000U);
    EXPECT_EQ(if_index_eth_inband_get_priority_hi(), 0x15010000U);
    EXPECT_EQ(if_index_eth_inband_get_priority_lo(), 0x15020000U);
    EXPECT_EQ(if_index_eth_inband_get_port_security(), 0x15030000U);
    EXPECT_EQ(if_index_eth_inband_get_mcast(), 0x15050000U);
    EXPECT_EQ(if_index_eth_inband_get_quill(), 0x15060000U);
    EXPECT_EQ(if_index_eth_inband_get_pong(), 0x15070000U);
    EXPECT_EQ(if_index_eth_inband_get_qinq(), 0x15080000U);
    EXPECT_EQ(if_index_eth_inband_get_hobb(), 0x15090000U);
    EXPECT_EQ(if_index_eth_inband_get_peer_link_gateway(), 0x150A0000U);
    EXPECT_EQ(if_index_eth_inband_get_glean_fast_path(), 0x150B0000U);
    EXPECT_EQ(if_index_eth_inband_get_lisp_copy(), 0x150C0000U);
    EXPECT_EQ(if_index_eth_inband_get_sup_non_trusted(), 0x151F0000U);
}

TEST(if_index_named_values, of_one_number)
{
    EXPECT_EQ(if_index_get_loopback_port(0), 0xFE000000U);
    EXPECT_EQ(if_index_get_loopback_port(1024), 0xFE000400U);
    EXPECT_EQ(if_index_get_loopback_port(65535), 0xFE00FFFFU);
    EXPECT_EQ(if_index_get_loopback_port(65536), 0xFE000000U);
    EXPECT_EQ(if_index_inband_linecard_get_priority_hi(0), 0x06201000U);
    EXPECT_EQ(if_index_inband_linecard_get_priority_hi(255), 0x06201FF0U);
    EXPECT_EQ(if_index_inband_linecard_get_priority_hi(65535), 0x062FFFF0U);
}

TEST(if_index_get_tunnel_range, spans_a_device_context)
{
    struct {
        uint32_t vdc;
        IfIndex first;
        IfIndex last;
    } const rows[] = {
        {0, 0x18000000, 0x1800FFFF},     {3, 0x18030000, 0x1803FFFF},
        {255, 0x18FF0000, 0x18FFFFFF},   {256, 0x18000000, 0x1800FFFF},
        {0x1FF, 0x18FF0000, 0x18FFFFFF},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.vdc);
        IfIndex first = 0;
        IfIndex last = 0;
        EXPECT_EQ(if_index_get_tunnel_range(row.vdc, &first, &last), row.first);
        EXPECT_EQ(first, row.first);
        EXPECT_EQ(last, row.last);
    }
}

TEST(if_index_get_overlay_range, spans_a_port_type)
{
    struct {
        uint32_t port_type;
        IfIndex first;
        IfIndex last;
    } const rows[] = {
        {0, 0x22000000, 0x2200FFDF},  {1, 0x22080000, 0x2208FFDF},   {31, 0x22F80000, 0x22F8FFDF},
        {32, 0x23000000, 0x2300FFDF}, {255, 0x27F80000, 0x27F8FFDF}, {256, 0x22000000, 0x2200FFDF},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.port_type);
        IfIndex first = 0;
        IfIndex last = 0;
        EXPECT_EQ(if_index_get_overlay_range(row.port_type, &first, &last), row.first);
        EXPECT_EQ(first, row.first);
        EXPECT_EQ(last, row.last);
    }
}
