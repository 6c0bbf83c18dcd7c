// Host queries: a scripted kernel, a real interface, a scripted Agent.
#include "ruk/platform.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sched.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "ruk/agent.h"
#include "tests/support/scripted_agent.h"

using ruk_test::ScriptedAgent;

namespace
{

// A network interface request as this program sent it.
struct KernelRequest {
    int fd;
    unsigned long number;
    std::string interface;
    uint32_t command; // of an ethtool request

    bool operator==(const KernelRequest &) const = default;
};

std::ostream &operator<<(std::ostream &out, const KernelRequest &request)
{
    return out << std::hex << request.number << " " << request.interface << " " << request.command;
}

// What the kernel is to answer instead of the real one, and what it was asked.
struct ScriptedKernel {
    unsigned long failing = 0; // this request fails
    std::vector<KernelRequest> requests;
};

ScriptedKernel *scripted_kernel = nullptr;

int answer_scripted(ScriptedKernel &kernel, int fd, unsigned long number, ifreq &about)
{
    ethtool_cmd *settings = nullptr;
    if (number == SIOCETHTOOL) {
        settings = reinterpret_cast<ethtool_cmd *>(about.ifr_data);
    }
    kernel.requests.push_back({fd, number, about.ifr_name, settings ? settings->cmd : 0});
    if (number == kernel.failing) {
        errno = EOPNOTSUPP;
        return -1;
    }
    if (settings != nullptr) {
        settings->duplex = 0xff;
        settings->speed = 0x86a0; // 100,000 Mbit/s is 0x186a0: its upper half goes elsewhere
        settings->speed_hi = 0x0001;
    } else {
        about.ifr_mtu = 9216;
    }
    return 0;
}

} // namespace

// Stands in front of the C library's own.
extern "C" int ioctl(int fd, unsigned long number, ...) noexcept
{
    va_list arguments;
    va_start(arguments, number);
    void *about = va_arg(arguments, void *);
    va_end(arguments);
    if (scripted_kernel != nullptr && (number == SIOCETHTOOL || number == SIOCGIFMTU)) {
        return answer_scripted(*scripted_kernel, fd, number, *static_cast<ifreq *>(about));
    }
    return static_cast<int>(syscall(SYS_ioctl, fd, number, about));
}

namespace
{

size_t open_descriptors()
{
    size_t count = 0;
    for ([[maybe_unused]] const auto &entry :
         std::filesystem::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

constexpr uint32_t k_old = 0xdeadbeef;

struct Answer {
    int32_t result = 0;
    uint32_t duplex = k_old;
    uint32_t speed = k_old;
    uint32_t mtu = k_old;

    bool operator==(const Answer &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Answer &answer)
{
    return out << answer.result << ": duplex " << answer.duplex << ", speed " << answer.speed
               << ", mtu " << answer.mtu;
}

constexpr Answer k_failed{.result = -1};

// Asks and sees to it that no descriptor stays open.
Answer ask()
{
    const size_t before = open_descriptors();
    Answer answer;
    answer.result = kt_platform_get_ethtool_info(&answer.duplex, &answer.speed, &answer.mtu);
    EXPECT_EQ(open_descriptors(), before);
    return answer;
}

Answer ask(ScriptedKernel &kernel)
{
    scripted_kernel = &kernel;
    const Answer answer = ask();
    scripted_kernel = nullptr;
    return answer;
}

// Runs action in a thread that has a network namespace of its own, without any interface but a
// loopback.  Children of that thread, such as ip, are in there as well.  False when refused.
bool in_new_network(const std::function<void()> &action)
{
    bool entered = false;
    std::thread([&] {
        entered = unshare(CLONE_NEWNET) == 0;
        if (entered) {
            action();
        }
    }).join();
    return entered;
}

bool ip_link(const std::string &arguments)
{
    return system(("ip link " + arguments + " >/dev/null 2>&1").c_str()) == 0;
}

} // namespace

TEST(dpa_platform_init, succeeds)
{
    EXPECT_EQ(dpa_platform_init(), 0);
}

// Each case begins and ends without a connection and leaves no descriptor open.
class kt_dpa_platform_get_management_ip : public testing::Test
{
protected:
    void TearDown() override
    {
        kt_dpa_api_exit();
        EXPECT_EQ(open_descriptors(), before_);
    }

private:
    size_t before_ = open_descriptors();
};

TEST_F(kt_dpa_platform_get_management_ip, stores_the_four_bytes_of_the_reply)
{
    const ScriptedAgent agent(ruk_test::replies({{0, "\x0a\x01\x02\x03"}}));
    ASSERT_EQ(kt_dpa_api_init(), 0);
    uint32_t value = k_old;
    EXPECT_EQ(::kt_dpa_platform_get_management_ip(&value), 0);
    EXPECT_EQ(memcmp(&value, "\x0a\x01\x02\x03", 4), 0);
    EXPECT_EQ(agent.defined_requests(),
              std::vector{ruk_test::request_bytes(56, 0, 0x01, ruk_test::u32(k_old))});
}

TEST_F(kt_dpa_platform_get_management_ip, returns_the_status_of_the_service)
{
    const ScriptedAgent agent(ruk_test::replies({{-7, "\x0a\x01\x02\x03"}, {6, ""}}));
    ASSERT_EQ(kt_dpa_api_init(), 0);
    uint32_t value = k_old;
    EXPECT_EQ(::kt_dpa_platform_get_management_ip(&value), -7);
    EXPECT_EQ(memcmp(&value, "\x0a\x01\x02\x03", 4), 0);
    EXPECT_EQ(::kt_dpa_platform_get_management_ip(&value), 6);
}

TEST_F(kt_dpa_platform_get_management_ip, leaves_the_value_alone_when_the_exchange_fails)
{
    uint32_t value = k_old;
    {
        const ScriptedAgent agent([](const auto &) { return std::nullopt; });
        ASSERT_EQ(kt_dpa_api_init(), 0);
        EXPECT_EQ(::kt_dpa_platform_get_management_ip(&value), 1);
        EXPECT_EQ(value, k_old);
    }
    // Nobody answers any more, and opening says so in its own words.
    kt_debug_print_brel_dpa_api = 0;
    EXPECT_EQ(::kt_dpa_platform_get_management_ip(&value), 1);
    EXPECT_EQ(value, k_old);
    kt_debug_print_brel_dpa_api = 0x87;
}

TEST(kt_platform_get_ethtool_info, asks_for_settings_and_then_mtu)
{
    ScriptedKernel kernel;
    EXPECT_EQ(ask(kernel), (Answer{.result = 0, .duplex = 0xff, .speed = 0x86a0, .mtu = 9216}));
    ASSERT_EQ(kernel.requests.size(), 2u);
    const int fd = kernel.requests[0].fd;
    EXPECT_EQ(kernel.requests, (std::vector<KernelRequest>{
                                   {fd, 0x8946, "eth1", 1},
                                   {fd, 0x8921, "eth1", 0},
                               }));
}

TEST(kt_platform_get_ethtool_info, fails_when_the_settings_do)
{
    ScriptedKernel kernel{.failing = SIOCETHTOOL, .requests = {}};
    EXPECT_EQ(ask(kernel), k_failed);
    EXPECT_EQ(kernel.requests.size(), 1u);
}

TEST(kt_platform_get_ethtool_info, fails_when_only_the_mtu_does)
{
    ScriptedKernel kernel{.failing = SIOCGIFMTU, .requests = {}};
    EXPECT_EQ(ask(kernel), k_failed);
    EXPECT_EQ(kernel.requests.size(), 2u);
}

TEST(kt_platform_get_ethtool_info, fails_without_a_socket)
{
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none = {0, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    Answer answer;
    answer.result = kt_platform_get_ethtool_info(&answer.duplex, &answer.speed, &answer.mtu);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_EQ(answer, k_failed);
}

TEST(kt_platform_get_ethtool_info, fails_without_the_interface)
{
    if (in_new_network([] { EXPECT_EQ(ask(), k_failed); })) {
        return;
    }
    if (if_nametoindex("eth1") != 0) {
        GTEST_SKIP() << "Network namespaces are refused here, and this host has an eth1.";
    }
    EXPECT_EQ(ask(), k_failed);
}

// A virtual pair says 10,000 Mbit/s and full duplex, whatever it runs on.
TEST(kt_platform_get_ethtool_info, reads_a_real_interface)
{
    bool made = false;
    in_new_network([&made] {
        made = ip_link("add eth1 mtu 1400 type veth peer name eth2");
        if (made) {
            EXPECT_EQ(ask(), (Answer{.result = 0, .duplex = 1, .speed = 10000, .mtu = 1400}));
            EXPECT_TRUE(ip_link("set eth1 mtu 9000"));
            EXPECT_EQ(ask(), (Answer{.result = 0, .duplex = 1, .speed = 10000, .mtu = 9000}));
            EXPECT_TRUE(ip_link("set eth1 name eth10"));
            EXPECT_EQ(ask(), k_failed);
        }
    });
    if (!made) {
        GTEST_SKIP() << "No virtual interface here (network namespaces, ip or veth are missing): "
                        "the query is not tried on a real one.";
    }
}
