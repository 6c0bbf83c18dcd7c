// What happens in the client's own process.
#include "tests/faults/sabotage.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace ruk_test
{

NoMoreDescriptors::NoMoreDescriptors()
{
    getrlimit(RLIMIT_NOFILE, &before_);
    rlimit none = before_;
    none.rlim_cur = 0;
    setrlimit(RLIMIT_NOFILE, &none);
}

NoMoreDescriptors::~NoMoreDescriptors()
{
    setrlimit(RLIMIT_NOFILE, &before_);
}

Sabotage::Sabotage(const FaultyAgent &agent, Step step, Fault_kind kind, const CallsBefore &calls)
    : other_(open("/dev/null", O_RDWR))
{
    if (kind == Fault_kind::descriptor_limit) {
        limit_descriptors(calls);
    }
    if (step == Step::connect) {
        at_connect(agent, kind, calls);
        return;
    }
    if (step == Step::send) {
        at_send(agent, kind, calls);
        return;
    }
    const int nth = calls.exchanges + (step == Step::nothing ? 1 : 2);
    if (kind == Fault_kind::no_memory) {
        fault_.emplace(Call::allocate, ENOMEM, calls.blocks + 1);
    } else if (kind == Fault_kind::descriptor_closed) {
        before(Call::receive_bytes, nth, [](int fd) { close(fd); });
    } else if (kind == Fault_kind::descriptor_reused) {
        before(Call::receive_bytes, nth, [this](int fd) { dup2(other_, fd); });
    }
}

Sabotage::~Sabotage()
{
    close(other_);
}

void Sabotage::before(Call call, int nth, std::function<void(int fd)> action, Extent extent)
{
    before_.reset();
    before_.emplace(call, nth, std::move(action), extent);
}

// A connection that is there, or that the tool makes at its start, goes on.
void Sabotage::limit_descriptors(const CallsBefore &calls)
{
    if (calls.connects > 0) {
        before(Call::send_bytes, 1, [this](int) { limit_.emplace(); });
    } else {
        limit_.emplace();
    }
}

void Sabotage::at_connect(const FaultyAgent &agent, Fault_kind kind, const CallsBefore &calls)
{
    const int nth = calls.connects + 1;
    if (kind == Fault_kind::descriptor_closed) {
        before(
            Call::connect_socket, nth, [](int fd) { close(fd); }, Extent::ever_after);
    } else if (kind == Fault_kind::descriptor_reused) {
        before(
            Call::connect_socket, nth, [this](int fd) { dup2(other_, fd); }, Extent::ever_after);
    } else if (kind == Fault_kind::reset) {
        before(Call::send_bytes, calls.exchanges + 1, [&](int) { agent.await_played(); });
    } else if (kind == Fault_kind::no_memory) {
        fault_.emplace(Call::allocate, ENOMEM, calls.blocks + 1);
    }
}

void Sabotage::at_send(const FaultyAgent &agent, Fault_kind kind, const CallsBefore &calls)
{
    const int nth = calls.exchanges + 1;
    switch (kind) {
    case Fault_kind::closed:
    case Fault_kind::shut_one_way:
        before(Call::send_bytes, nth, [&](int) { agent.await_played(); });
        return;
    case Fault_kind::descriptor_limit:
        before(Call::send_bytes, nth, [&](int) {
            agent.await_played();
            if (!limit_) {
                limit_.emplace();
            }
        });
        return;
    case Fault_kind::dribbled:
        short_.emplace(1);
        return;
    case Fault_kind::descriptor_closed:
        before(Call::send_bytes, nth, [](int fd) { close(fd); });
        return;
    case Fault_kind::descriptor_reused:
        before(Call::send_bytes, nth, [this](int fd) { dup2(other_, fd); });
        return;
    case Fault_kind::no_memory:
        fault_.emplace(Call::allocate, ENOMEM, calls.blocks + 1);
        return;
    default:
        return;
    }
}

} // namespace ruk_test
