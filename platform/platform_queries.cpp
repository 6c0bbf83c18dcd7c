// Queries of the host: its management address through the Agent, its data interface through the
// kernel's network interface requests.
#include "ruk/platform.h"

#include <cstring>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "ruk/agent.h"

namespace
{

constexpr uint16_t k_get_management_ip = 56;
constexpr uint8_t k_get_management_ip_flags = 0x01;

constexpr char k_data_interface[] = "eth1";

// A datagram socket that is closed at the end of its scope.
class QuerySocket
{
public:
    QuerySocket() : fd_(socket(AF_INET, SOCK_DGRAM, 0)) {}
    ~QuerySocket()
    {
        if (is_open()) {
            close(fd_);
        }
    }
    QuerySocket(const QuerySocket &) = delete;
    QuerySocket &operator=(const QuerySocket &) = delete;

    bool is_open() const { return fd_ >= 0; }

    bool ask(unsigned long request, ifreq &about) const { return ioctl(fd_, request, &about) == 0; }

private:
    int fd_;
};

ifreq data_interface()
{
    ifreq about = {};
    memcpy(about.ifr_name, k_data_interface, sizeof k_data_interface);
    return about;
}

} // namespace

int32_t dpa_platform_init(void)
{
    return 0;
}

int32_t kt_dpa_platform_get_management_ip(uint32_t *value)
{
    // Given, though not used without AGENT_FLAG_COUNTED.
    const uint32_t count = 1;
    return kt_dpa_call_indirect1(k_get_management_ip, 0, k_get_management_ip_flags, value,
                                 sizeof *value, &count);
}

int32_t kt_platform_get_ethtool_info(uint32_t *duplex, uint32_t *speed, uint32_t *mtu)
{
    ethtool_cmd settings = {};
    settings.cmd = ETHTOOL_GSET;
    ifreq link = data_interface();
    link.ifr_data = reinterpret_cast<char *>(&settings);
    ifreq size = data_interface();

    const QuerySocket kernel;
    if (!kernel.is_open() || !kernel.ask(SIOCETHTOOL, link) || !kernel.ask(SIOCGIFMTU, size)) {
        return -1;
    }
    *duplex = settings.duplex;
    *speed = settings.speed;
    *mtu = static_cast<uint32_t>(size.ifr_mtu);
    return 0;
}
