// Constructors of the numbers a user types: the value built at each limit, the refusal beyond it.
#include "tests/ifindex/building.h"

#include "ruk/if_index_cli.h"

using building::builds;
using building::refuses;

TEST(if_index_cli_init, slot_and_port)
{
    builds(if_index_phy_fc_port_cli_init, {
                                              {{1, 1}, 0x01000000},
                                              {{32, 128}, 0x01FFF000},
                                              {{11, 43}, 0x0152A000},
                                              {{32, 1}, 0x01F80000},
                                              {{1, 128}, 0x0107F000},
                                          });
    refuses(if_index_phy_fc_port_cli_init, {{0, 43},
                                            {33, 43},
                                            {INT32_MIN, 43},
                                            {INT32_MAX, 43},
                                            {11, 0},
                                            {11, 129},
                                            {11, INT32_MIN},
                                            {11, INT32_MAX}});
    builds(if_index_iscsi_port_cli_init, {
                                             {{1, 1}, 0x0B000000},
                                             {{32, 128}, 0x0BFFF000},
                                             {{11, 43}, 0x0B52A000},
                                             {{32, 1}, 0x0BF80000},
                                             {{1, 128}, 0x0B07F000},
                                         });
    refuses(if_index_iscsi_port_cli_init, {{0, 43},
                                           {33, 43},
                                           {INT32_MIN, 43},
                                           {INT32_MAX, 43},
                                           {11, 0},
                                           {11, 129},
                                           {11, INT32_MIN},
                                           {11, INT32_MAX}});
    builds(if_index_umbra_port_cli_init, {
                                             {{1, 1}, 0x0C000000},
                                             {{32, 128}, 0x0CFFF000},
                                             {{11, 43}, 0x0C52A000},
                                             {{32, 1}, 0x0CF80000},
                                             {{1, 128}, 0x0C07F000},
                                         });
    refuses(if_index_umbra_port_cli_init, {{0, 43},
                                           {33, 43},
                                           {INT32_MIN, 43},
                                           {INT32_MAX, 43},
                                           {11, 0},
                                           {11, 129},
                                           {11, INT32_MIN},
                                           {11, INT32_MAX}});
    builds(if_index_xlport_cli_init, {
                                         {{1, 1}, 0x0D000000},
                                         {{32, 128}, 0x0DFFF000},
                                         {{11, 43}, 0x0D52A000},
                                         {{32, 1}, 0x0DF80000},
                                         {{1, 128}, 0x0D07F000},
                                     });
    refuses(if_index_xlport_cli_init, {{0, 43},
                                       {33, 43},
                                       {INT32_MIN, 43},
                                       {INT32_MAX, 43},
                                       {11, 0},
                                       {11, 129},
                                       {11, INT32_MIN},
                                       {11, INT32_MAX}});
    builds(if_index_kiro_port_cli_init, {
                                            {{1, 1}, 0x12000000},
                                            {{32, 128}, 0x12FFF000},
                                            {{11, 43}, 0x1252A000},
                                            {{32, 1}, 0x12F80000},
                                            {{1, 128}, 0x1207F000},
                                        });
    refuses(if_index_kiro_port_cli_init, {{0, 43},
                                          {33, 43},
                                          {INT32_MIN, 43},
                                          {INT32_MAX, 43},
                                          {11, 0},
                                          {11, 129},
                                          {11, INT32_MIN},
                                          {11, INT32_MAX}});
    builds(if_index_pemu_port_cli_init, {
                                            {{1, 1}, 0x21000000},
                                            {{32, 128}, 0x21FFF000},
                                            {{11, 43}, 0x2152A000},
                                            {{32, 1}, 0x21F80000},
                                            {{1, 128}, 0x2107F000},
                                        });
    refuses(if_index_pemu_port_cli_init, {{0, 43},
                                          {33, 43},
                                          {INT32_MIN, 43},
                                          {INT32_MAX, 43},
                                          {11, 0},
                                          {11, 129},
                                          {11, INT32_MIN},
                                          {11, INT32_MAX}});
}

TEST(if_index_cli_init, slot_and_port_as_stored)
{
    builds(if_index_mgmt_sup_port_cli_init, {
                                                {{0, 0}, 0x05000000},
                                                {{31, 127}, 0x05FFF000},
                                                {{10, 42}, 0x0552A000},
                                                {{31, 0}, 0x05F80000},
                                                {{0, 127}, 0x0507F000},
                                            });
    refuses(if_index_mgmt_sup_port_cli_init, {{-1, 42},
                                              {32, 42},
                                              {INT32_MIN, 42},
                                              {INT32_MAX, 42},
                                              {10, -1},
                                              {10, 128},
                                              {10, INT32_MIN},
                                              {10, INT32_MAX}});
    builds(if_index_eobc_port_cli_init, {
                                            {{0, 0}, 0x07000000},
                                            {{31, 127}, 0x07F80000},
                                            {{10, 42}, 0x07500000},
                                            {{31, 0}, 0x07F80000},
                                            {{0, 127}, 0x07000000},
                                        });
    refuses(if_index_eobc_port_cli_init, {{-1, 42},
                                          {32, 42},
                                          {INT32_MIN, 42},
                                          {INT32_MAX, 42},
                                          {10, -1},
                                          {10, 128},
                                          {10, INT32_MIN},
                                          {10, INT32_MAX}});
    builds(if_index_inband_port_cli_init, {
                                              {{0, 0}, 0x06000000},
                                              {{4, 3}, 0x06203000},
                                              {{1, 1}, 0x06081000},
                                              {{4, 0}, 0x06200000},
                                              {{0, 3}, 0x06003000},
                                              {{1, 2}, 0x06082000},
                                          });
    refuses(if_index_inband_port_cli_init, {{-1, 1},
                                            {5, 1},
                                            {INT32_MIN, 1},
                                            {INT32_MAX, 1},
                                            {1, -1},
                                            {1, 4},
                                            {1, INT32_MIN},
                                            {1, INT32_MAX}});
    builds(if_index_loopback_port_cli_init, {
                                                {{0}, 0xFE000000},
                                                {{1023}, 0xFE0003FF},
                                                {{341}, 0xFE000155},
                                            });
    refuses(if_index_loopback_port_cli_init, {{-1}, {1024}, {INT32_MIN}, {INT32_MAX}});
}

TEST(if_index_cli_init, port_channels)
{
    builds(if_index_port_channel_cli_init, {
                                               {{1, 0}, 0x04000000},
                                               {{256, 4095}, 0x040FFFFF},
                                               {{86, 1365}, 0x04055555},
                                               {{256, 0}, 0x040000FF},
                                               {{1, 4095}, 0x040FFF00},
                                           });
    refuses(if_index_port_channel_cli_init, {{0, 1365},
                                             {257, 1365},
                                             {INT32_MIN, 1365},
                                             {INT32_MAX, 1365},
                                             {86, -1},
                                             {86, 4096},
                                             {86, INT32_MIN},
                                             {86, INT32_MAX}});
    builds(if_index_port_channel_cli_init_internal, {
                                                        {{1, 0, 0}, 0x04000000},
                                                        {{256, 3, 4095}, 0x043FFFFF},
                                                        {{86, 1, 1365}, 0x04155555},
                                                        {{256, 0, 0}, 0x040000FF},
                                                        {{1, 3, 0}, 0x04300000},
                                                        {{1, 0, 4095}, 0x040FFF00},
                                                    });
    refuses(if_index_port_channel_cli_init_internal, {{0, 1, 1365},
                                                      {257, 1, 1365},
                                                      {INT32_MIN, 1, 1365},
                                                      {INT32_MAX, 1, 1365},
                                                      {86, -1, 1365},
                                                      {86, 4, 1365},
                                                      {86, INT32_MIN, 1365},
                                                      {86, INT32_MAX, 1365},
                                                      {86, 1, -1},
                                                      {86, 1, 4096},
                                                      {86, 1, INT32_MIN},
                                                      {86, 1, INT32_MAX}});
    builds(if_index_eth_port_channel_cli_init, {
                                                   {{1, 0}, 0x16000000},
                                                   {{4096, 4095}, 0x16FFFFFF},
                                                   {{1366, 1365}, 0x16555555},
                                                   {{4096, 0}, 0x16000FFF},
                                                   {{1, 4095}, 0x16FFF000},
                                               });
    refuses(if_index_eth_port_channel_cli_init, {{0, 1365},
                                                 {4097, 1365},
                                                 {INT32_MIN, 1365},
                                                 {INT32_MAX, 1365},
                                                 {1366, -1},
                                                 {1366, 4096},
                                                 {1366, INT32_MIN},
                                                 {1366, INT32_MAX}});
    builds(if_index_eth_port_channel_cli_init_internal, {
                                                            {{1, 0, 0}, 0x16000000},
                                                            {{4096, 3, 4095}, 0x163FFFFF},
                                                            {{1366, 1, 1365}, 0x16155555},
                                                            {{4096, 0, 0}, 0x160000FF},
                                                            {{1, 3, 0}, 0x16300000},
                                                            {{1, 0, 4095}, 0x160FFF00},
                                                            {{257, 0, 0}, 0x16000000},
                                                            {{256, 0, 0}, 0x160000FF},
                                                        });
    refuses(if_index_eth_port_channel_cli_init_internal, {{0, 1, 1365},
                                                          {4097, 1, 1365},
                                                          {INT32_MIN, 1, 1365},
                                                          {INT32_MAX, 1, 1365},
                                                          {1366, -1, 1365},
                                                          {1366, 4, 1365},
                                                          {1366, INT32_MIN, 1365},
                                                          {1366, INT32_MAX, 1365},
                                                          {1366, 1, -1},
                                                          {1366, 1, 4096},
                                                          {1366, 1, INT32_MIN},
                                                          {1366, 1, INT32_MAX}});
}

TEST(if_index_cli_init, vlan_and_tunnels)
{
    builds(if_index_vlan_port_cli_init, {
                                            {{0, 1}, 0x09000001},
                                            {{255, 4094}, 0x09FF0FFE},
                                            {{85, 1365}, 0x09550555},
                                            {{255, 1}, 0x09FF0001},
                                            {{0, 4094}, 0x09000FFE},
                                        });
    refuses(if_index_vlan_port_cli_init, {{-1, 1365},
                                          {256, 1365},
                                          {INT32_MIN, 1365},
                                          {INT32_MAX, 1365},
                                          {85, 0},
                                          {85, 4095},
                                          {85, INT32_MIN},
                                          {85, INT32_MAX}});
    builds(if_index_fcip_port_cli_init, {
                                            {{1}, 0x0A000000},
                                            {{255}, 0x0A0000FE},
                                            {{85}, 0x0A000054},
                                        });
    refuses(if_index_fcip_port_cli_init, {{0}, {256}, {INT32_MIN}, {INT32_MAX}});
    builds(if_index_fcmpls_tnnl_cli_init, {
                                              {{1}, 0x0F000000},
                                              {{255}, 0x0F0000FE},
                                              {{85}, 0x0F000054},
                                          });
    refuses(if_index_fcmpls_tnnl_cli_init, {{0}, {256}, {INT32_MIN}, {INT32_MAX}});
    builds(if_index_tunnel_cli_init, {
                                         {{0, 0}, 0x18000000},
                                         {{255, 65535}, 0x18FFFFFF},
                                         {{85, 21845}, 0x18555555},
                                         {{255, 0}, 0x18FF0000},
                                         {{0, 65535}, 0x1800FFFF},
                                     });
    refuses(if_index_tunnel_cli_init, {{-1, 21845},
                                       {256, 21845},
                                       {INT32_MIN, 21845},
                                       {INT32_MAX, 21845},
                                       {85, -1},
                                       {85, 65536},
                                       {85, INT32_MIN},
                                       {85, INT32_MAX}});
}

TEST(if_index_cli_init, tk_and_virtual_ethernet)
{
    builds(if_index_tk_port_cli_init, {
                                          {{1, 1, 1}, 0x0E000000},
                                          {{32, 32, 16383}, 0x0EFFFFFE},
                                          {{11, 11, 5461}, 0x0E529554},
                                          {{32, 1, 1}, 0x0EF80000},
                                          {{1, 32, 1}, 0x0E07C000},
                                          {{1, 1, 16383}, 0x0E003FFE},
                                      });
    refuses(if_index_tk_port_cli_init, {{0, 11, 5461},
                                        {33, 11, 5461},
                                        {INT32_MIN, 11, 5461},
                                        {INT32_MAX, 11, 5461},
                                        {11, 0, 5461},
                                        {11, 33, 5461},
                                        {11, INT32_MIN, 5461},
                                        {11, INT32_MAX, 5461},
                                        {11, 11, 0},
                                        {11, 11, 16384},
                                        {11, 11, INT32_MIN},
                                        {11, 11, INT32_MAX}});
    builds(if_index_lveth_cli_init, {
                                        {{1, 1, 0}, 0x1B000000},
                                        {{32, 4096, 15}, 0x1B1FFFFC},
                                        {{11, 1366, 5}, 0x1B0A5554},
                                        {{32, 1, 0}, 0x1B1F0000},
                                        {{1, 4096, 0}, 0x1B00FFF0},
                                        {{1, 1, 15}, 0x1B00000C},
                                    });
    refuses(if_index_lveth_cli_init, {{0, 1366, 5},
                                      {33, 1366, 5},
                                      {INT32_MIN, 1366, 5},
                                      {INT32_MAX, 1366, 5},
                                      {11, 0, 5},
                                      {11, 4097, 5},
                                      {11, INT32_MIN, 5},
                                      {11, INT32_MAX, 5},
                                      {11, 1366, -1},
                                      {11, 1366, 16},
                                      {11, 1366, INT32_MIN},
                                      {11, 1366, INT32_MAX}});
    builds(if_index_veth_cli_init, {
                                       {{1, 0}, 0x1C000000},
                                       {{1048576, 15}, 0x1CFFFFFF},
                                       {{349526, 5}, 0x1C555555},
                                       {{1048576, 0}, 0x1CFFFFF0},
                                       {{1, 15}, 0x1C00000F},
                                   });
    refuses(if_index_veth_cli_init, {{0, 5},
                                     {1048577, 5},
                                     {INT32_MIN, 5},
                                     {INT32_MAX, 5},
                                     {349526, -1},
                                     {349526, 16},
                                     {349526, INT32_MIN},
                                     {349526, INT32_MAX}});
    builds(if_index_ether_sif_cli_init, {
                                            {{1}, 0x1D000000},
                                            {{1048576}, 0x1D0FFFFF},
                                            {{349526}, 0x1D055555},
                                        });
    refuses(if_index_ether_sif_cli_init, {{0}, {1048577}, {INT32_MIN}, {INT32_MAX}});
    builds(if_index_fc_sif_cli_init, {
                                         {{1}, 0x1E000000},
                                         {{61440}, 0x1E00EFFF},
                                         {{20480}, 0x1E004FFF},
                                     });
    refuses(if_index_fc_sif_cli_init, {{0}, {61441}, {INT32_MIN}, {INT32_MAX}});
    builds(if_index_overlay_cli_init, {
                                          {{0, 0}, 0x22000000},
                                          {{4, 65503}, 0x2220FFDF},
                                          {{1, 21834}, 0x2208554A},
                                          {{4, 0}, 0x22200000},
                                          {{0, 65503}, 0x2200FFDF},
                                      });
    refuses(if_index_overlay_cli_init, {{-1, 21834},
                                        {5, 21834},
                                        {INT32_MIN, 21834},
                                        {INT32_MAX, 21834},
                                        {1, -1},
                                        {1, 65504},
                                        {1, INT32_MIN},
                                        {1, INT32_MAX}});
}

TEST(if_index_cli_init, dorsa_takes_any_node)
{
    builds(if_index_dorsa_port_cli_init, {
                                             {{1, INT32_MIN, 1}, 0x141FE000},
                                             {{32, INT32_MAX, 128}, 0x14FFC07F},
                                             {{11, -715827883, 43}, 0x145A802A},
                                             {{32, INT32_MIN, 1}, 0x14FFE000},
                                             {{1, INT32_MAX, 1}, 0x141FC000},
                                             {{1, INT32_MIN, 128}, 0x141FE07F},
                                             {{1, 0, 1}, 0x141FE000},
                                             {{1, 1, 1}, 0x14000000},
                                             {{1, 64, 64}, 0x1407E03F},
                                             {{1, 65, 65}, 0x14080040},
                                             {{1, 256, 1}, 0x141FE000},
                                             {{1, 257, 1}, 0x14000000},
                                         });
    refuses(if_index_dorsa_port_cli_init, {{0, -715827883, 43},
                                           {33, -715827883, 43},
                                           {INT32_MIN, -715827883, 43},
                                           {INT32_MAX, -715827883, 43},
                                           {11, -715827883, 0},
                                           {11, -715827883, 129},
                                           {11, -715827883, INT32_MIN},
                                           {11, -715827883, INT32_MAX}});
}

TEST(if_index_cli_init, satellites_let_a_sub_interface_of_64_run_into_the_port)
{
    builds(if_index_sat_phy_eth_port_cli_init, {
                                                   {{1, 1, 1, 0}, 0x1F000000},
                                                   {{256, 2, 64, 64}, 0x1FFF1FC0},
                                                   {{86, 2, 22, 21}, 0x1F551555},
                                                   {{256, 1, 1, 0}, 0x1FFF0000},
                                                   {{1, 2, 1, 0}, 0x1F001000},
                                                   {{1, 1, 64, 0}, 0x1F000FC0},
                                                   {{1, 1, 1, 64}, 0x1F000040},
                                                   {{1, 1, 1, 63}, 0x1F00003F},
                                                   {{1, 1, 2, 64}, 0x1F000040},
                                               });
    refuses(if_index_sat_phy_eth_port_cli_init, {{0, 2, 22, 21},
                                                 {257, 2, 22, 21},
                                                 {INT32_MIN, 2, 22, 21},
                                                 {INT32_MAX, 2, 22, 21},
                                                 {86, 0, 22, 21},
                                                 {86, 3, 22, 21},
                                                 {86, INT32_MIN, 22, 21},
                                                 {86, INT32_MAX, 22, 21},
                                                 {86, 2, 0, 21},
                                                 {86, 2, 65, 21},
                                                 {86, 2, INT32_MIN, 21},
                                                 {86, 2, INT32_MAX, 21},
                                                 {86, 2, 22, -1},
                                                 {86, 2, 22, 65},
                                                 {86, 2, 22, INT32_MIN},
                                                 {86, 2, 22, INT32_MAX}});
}

TEST(if_index_cli_init, ruk_eth_takes_any_port)
{
    builds(if_index_ruk_eth_cli_init, {
                                          {{1, INT32_MIN, 0}, 0x25003FC0},
                                          {{515, INT32_MAX, 63}, 0x2580BFBF},
                                          {{172, -715827883, 21}, 0x252AD515},
                                          {{515, INT32_MIN, 0}, 0x2580BFC0},
                                          {{1, INT32_MAX, 0}, 0x25003F80},
                                          {{1, INT32_MIN, 63}, 0x25003FFF},
                                          {{1, 0, 0}, 0x25003FC0},
                                          {{1, 1, 0}, 0x25000000},
                                          {{1, 256, 0}, 0x25003FC0},
                                          {{1, 257, 0}, 0x25000000},
                                      });
    refuses(if_index_ruk_eth_cli_init, {{0, -715827883, 21},
                                        {516, -715827883, 21},
                                        {INT32_MIN, -715827883, 21},
                                        {INT32_MAX, -715827883, 21},
                                        {172, -715827883, -1},
                                        {172, -715827883, 64},
                                        {172, -715827883, INT32_MIN},
                                        {172, -715827883, INT32_MAX}});
}

TEST(if_index_cli_init, vfc)
{
    builds(if_index_vfc_cli_init, {
                                      {{1}, 0x1E000000},
                                      {{61441}, 0x1E00F000},
                                      {{20481}, 0x1E005000},
                                  });
    refuses(if_index_vfc_cli_init, {{0}, {61442}, {INT32_MIN}, {INT32_MAX}, {65536}, {65537}});
    builds(if_index_vfc_veth_cli_init, {
                                           {{1}, 0x1E300000},
                                           {{61441}, 0x1E30F000},
                                           {{20481}, 0x1E305000},
                                       });
    refuses(if_index_vfc_veth_cli_init, {{0}, {61442}, {INT32_MIN}, {INT32_MAX}, {65537}});
    builds(if_index_vfc_port_channel_cli_init, {
                                                   {{1}, 0x1E100000},
                                                   {{4096}, 0x1E100FFF},
                                                   {{1366}, 0x1E100555},
                                               });
    refuses(if_index_vfc_port_channel_cli_init, {{0}, {4097}, {65535}});
    builds(if_index_vfc_slot_port_cli_init, {
                                                {{1, 1}, 0x1E200000},
                                                {{32, 128}, 0x1E2FFF00},
                                                {{11, 43}, 0x1E252A00},
                                                {{32, 1}, 0x1E2F8000},
                                                {{1, 128}, 0x1E207F00},
                                            });
    refuses(if_index_vfc_slot_port_cli_init,
            {{0, 43}, {33, 43}, {65535, 43}, {11, 0}, {11, 129}, {11, 255}});
    builds(if_index_vfc_hobb_cli_init, {
                                           {{1, 1, 1}, 0x1E400000},
                                           {{255, 32, 128}, 0x1E43FFFC},
                                           {{85, 11, 43}, 0x1E415AA8},
                                           {{255, 1, 1}, 0x1E43F800},
                                           {{1, 32, 1}, 0x1E401F00},
                                           {{1, 1, 128}, 0x1E4001FC},
                                       });
    refuses(if_index_vfc_hobb_cli_init, {{0, 11, 43},
                                         {85, 0, 43},
                                         {85, 33, 43},
                                         {85, 65535, 43},
                                         {85, 11, 0},
                                         {85, 11, 129},
                                         {85, 11, 255}});
}

// With a satellite port the numbers keep the ranges of a physical port and go to smaller fields.
TEST(if_index_phy_eth_port_cli_init, builds_a_satellite_port_from_a_satellite_port_number)
{
    builds(if_index_phy_eth_port_cli_init,
           {
               {{1, 1, 0, 0}, 0x02000000},
               {{32, 128, 0, 4095}, 0x02FFFFFF},
               {{2, 3, 0, 4}, 0x02082004},
               {{1, 1, 3, 0}, 0x1F0000C0},
               {{2, 3, 4, 5}, 0x1F012105},
               {{32, 1, 63, 63}, 0x1F1F0FFF},
               {{1, 16, 1, 0}, 0x1F00F040},
               {{1, 17, 1, 0}, 0x1F010040}, // module 16 is one bit of the satellite
               {{1, 128, 1, 0}, 0x1F07F040},
               {{1, 1, 64, 0}, 0x1F001000},   // port 64 is one bit of the module
               {{1, 1, 1, 4095}, 0x1F000FFF}, // the sub-interface covers the port
               {{1, 1, 255, 0}, 0x1F003FC0},
               {{1, 1, 256, 0}, 0x1F000000},
               {{1, 1, 257, 0}, 0x1F000040},
               {{1, 1, -1, 0}, 0x1F003FC0},
               {{1, 1, INT32_MIN, 0}, 0x1F000000},
               {{1, 1, INT32_MAX, 0}, 0x1F003FC0},
           });
    for (const int32_t sat_port : {0, 1}) {
        refuses(if_index_phy_eth_port_cli_init, {
                                                    {0, 1, sat_port, 0},
                                                    {33, 1, sat_port, 0},
                                                    {1, 0, sat_port, 0},
                                                    {1, 129, sat_port, 0},
                                                    {1, 1, sat_port, -1},
                                                    {1, 1, sat_port, 4096},
                                                    {INT32_MIN, 1, sat_port, 0},
                                                    {INT32_MAX, 1, sat_port, 0},
                                                    {1, INT32_MIN, sat_port, 0},
                                                    {1, INT32_MAX, sat_port, 0},
                                                    {1, 1, sat_port, INT32_MIN},
                                                    {1, 1, sat_port, INT32_MAX},
                                                });
    }
}

// Outside of 1-32 the first number is a satellite; only the port is judged, and sub is ignored.
TEST(if_index_phy_ethernet_cli_init, builds_a_satellite_port_outside_of_slots_1_to_32)
{
    builds(if_index_phy_ethernet_cli_init,
           {
               {{1, 1, 0, 0}, 0x1A000000},
               {{32, 128, 4095, 0}, 0x1AFFFFFF},
               {{2, 5, 7, 999}, 0x1A084007},
               {{101, 1, 0, 1}, 0x1F640000},
               {{33, 2, 0, 3}, 0x1F201080},
               {{33, 2, 5, 3}, 0x1F201080},
               {{33, 2, 5000, 3}, 0x1F201080},
               {{33, 1, INT32_MIN, 128}, 0x1F201FC0}, // port 127 has one bit more than its field
               {{0, 1, 0, 1}, 0x1FFF0000},
               {{256, 1, 0, 1}, 0x1FFF0000},
               {{257, 1, 0, 1}, 0x1F000000},
               {{33, 0, 0, 1}, 0x1F2FF000}, // module 255 covers half of the satellite
               {{33, 257, 0, 1}, 0x1F200000},
               {{INT32_MIN, INT32_MIN, 0, 1}, 0x1FFFF000},
               {{INT32_MAX, INT32_MAX, 0, 1}, 0x1FFFE000},
               {{-1, 1, 0, 1}, 0x1FFE0000},
           });
    refuses(if_index_phy_ethernet_cli_init, {
                                                {1, 0, 0, 1},
                                                {1, 129, 0, 1},
                                                {1, 1, -1, 1},
                                                {1, 1, 4096, 1},
                                                {1, INT32_MIN, 0, 1},
                                                {1, INT32_MAX, 0, 1},
                                                {1, 1, INT32_MIN, 1},
                                                {1, 1, INT32_MAX, 1},
                                                {33, 1, 0, 0},
                                                {33, 1, 0, 129},
                                                {0, 1, 0, 0},
                                                {33, 1, 0, INT32_MIN},
                                                {33, 1, 0, INT32_MAX},
                                            });
}

TEST(if_index_vsan_port_cli_init, takes_slot_31_as_it_is_stored)
{
    builds(if_index_vsan_port_cli_init, {
                                            {{1, 1, 0}, 0x08000000},
                                            {{30, 5, 10}, 0x08E8400A},
                                            {{30, 128, 4095}, 0x08EFFFFF},
                                            {{31, 5, 10}, 0x08F8500A},
                                            {{31, 0, 0}, 0x08F80000},
                                            {{31, 127, 4095}, 0x08FFFFFF},
                                            {{32, 1, 1}, 0x08F80001},
                                            {{32, 128, 1}, 0x08FFF001},
                                        });
    refuses(if_index_vsan_port_cli_init,
            {
                {0, 1, 1},          {33, 1, 1},         {1, 0, 1},         {1, 129, 1},
                {30, 0, 1},         {31, -1, 1},        {31, 128, 1},      {32, 0, 1},
                {1, 1, -1},         {1, 1, 4096},       {31, 0, -1},       {31, 0, 4096},
                {INT32_MIN, 1, 1},  {INT32_MAX, 1, 1},  {1, INT32_MIN, 1}, {1, INT32_MAX, 1},
                {31, INT32_MIN, 1}, {31, INT32_MAX, 1}, {1, 1, INT32_MIN}, {1, 1, INT32_MAX},
            });
}

TEST(if_index_ruk_eth_cli_init, counts_modules_from_one_even_after_birch_was_set)
{
    cli_set_platform_alder(0, 1);
    builds(if_index_ruk_eth_cli_init, {{{1, 1, 0}, 0x25000000}});
    cli_set_platform_alder(0, 1);
    builds(if_index_ruk_eth_cli_init, {{{128, 1, 0}, 0x251FC000}});
    cli_set_platform_alder(0, 1);
    refuses(if_index_ruk_eth_cli_init, {{642, 1, 0}});
}
