// The client's side of a fault: descriptors taken away, limits, refused memory, and waiting until
// the peer has done its part.
#pragma once

#include "tests/dpa/faults.h"
#include "tests/faults/faulty_agent.h"

#include <optional>
#include <sys/resource.h>

namespace ruk_test
{

// No further descriptor can be had while it lives.
class NoMoreDescriptors
{
public:
    NoMoreDescriptors();
    ~NoMoreDescriptors();
    NoMoreDescriptors(const NoMoreDescriptors &) = delete;
    NoMoreDescriptors &operator=(const NoMoreDescriptors &) = delete;

private:
    rlimit before_;
};

// How many calls of each kind the client makes, from here to the one that the fault happens to.
struct CallsBefore {
    int connects = 0;
    int exchanges = 0;
    int blocks = 0;
};

// While it lives, the fault happens to calls of this thread.
class Sabotage
{
public:
    Sabotage(const FaultyAgent &agent, Step step, Fault_kind kind, const CallsBefore &calls);
    ~Sabotage();
    Sabotage(const Sabotage &) = delete;
    Sabotage &operator=(const Sabotage &) = delete;

private:
    void before(Call call, int nth, std::function<void(int fd)> action,
                Extent extent = Extent::once);
    void limit_descriptors(const CallsBefore &calls);
    void at_connect(const FaultyAgent &agent, Fault_kind kind, const CallsBefore &calls);
    void at_send(const FaultyAgent &agent, Fault_kind kind, const CallsBefore &calls);

    std::optional<NoMoreDescriptors> limit_;
    std::optional<Fault> fault_;
    std::optional<Before> before_;
    std::optional<ShortTransfers> short_;
    int other_; // what a reused number then stands for
};

} // namespace ruk_test
