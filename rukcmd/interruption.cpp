// Keeps an interruption from leaving the log stopped.
#include "rukcmd/interruption.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

struct GuardedSignal {
    int number;
    volatile sig_atomic_t caught;
    struct sigaction former;
};

// The end of the grace is told by a signal that nobody sends, since one that waits to be delivered
// takes in another of its number: the second signal would be lost.  It is the last but one.
GuardedSignal guarded[] = {
    {SIGINT, 0, {}},  {SIGTERM, 0, {}}, {SIGHUP, 0, {}},    {SIGQUIT, 0, {}},
    {SIGPIPE, 0, {}}, {SIGTSTP, 0, {}}, {_NSIG - 2, 0, {}},
};
GuardedSignal &end_of_grace = guarded[6];

volatile sig_atomic_t noted = 0;      // the first signal
volatile sig_atomic_t waiting = 0;    // one that came within the first one's grace
volatile sig_atomic_t suspension = 0; // SIGTSTP, when it came

enum Grace : sig_atomic_t { k_none, k_possible, k_running };
volatile sig_atomic_t grace = k_none;

constexpr timespec k_grace_length{.tv_sec = 0, .tv_nsec = 40'000'000};
bool has_timer = false;
int timer; // the kernel's number of it

void raise_once(volatile sig_atomic_t &signal)
{
    const int number = signal;
    signal = 0;
    if (number != 0) {
        raise(number);
    }
}

bool is_end_of_grace(const siginfo_t &info)
{
    return info.si_code == SI_TIMER && info.si_value.sival_ptr == &timer;
}

// Called by the handler too: nothing but sigaction.  Each disposition is put back once: what the
// host's own handler changes from then on is the host's.
void restore(GuardedSignal &signal)
{
    if (signal.caught != 0) {
        signal.caught = 0;
        sigaction(signal.number, &signal.former, nullptr);
    }
}

void restore_former()
{
    for (GuardedSignal &signal : guarded) {
        restore(signal);
    }
}

// Called by the handler, which is why the kernel is asked itself: the C library's call allocates
// memory.  False where timers are refused.
bool start_grace()
{
    if (grace != k_possible) {
        return false;
    }
    struct sigevent event {
    };
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = end_of_grace.number;
    event.sigev_value.sival_ptr = &timer;
    has_timer = syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &timer) == 0;
    const itimerspec once{.it_interval = {}, .it_value = k_grace_length};
    const bool runs = has_timer && syscall(SYS_timer_settime, timer, 0, &once, nullptr) == 0;
    grace = runs ? k_running : k_none;
    return runs;
}

void remove_timer()
{
    grace = k_none;
    if (has_timer) {
        has_timer = false;
        syscall(SYS_timer_delete, timer);
    }
}

void end_grace()
{
    if (grace == k_running) {
        grace = k_none;
        restore_former();
        raise_once(waiting);
    }
}

void take_signal(int number)
{
    if (number == SIGTSTP) {
        // A suspended tool would keep the log stopped until someone continues it.
        suspension = number;
    } else if (noted != 0) {
        waiting = number;
    } else {
        noted = number;
        if (!start_grace()) {
            restore_former();
        }
    }
}

void handle(int number, siginfo_t *info, void *)
{
    const int error = errno;
    if (is_end_of_grace(*info)) {
        end_grace();
    } else {
        take_signal(number);
    }
    errno = error;
}

// Keeps every signal waiting while the dispositions of the guarded ones change.
class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        sigset_t signals;
        sigfillset(&signals);
        pthread_sigmask(SIG_BLOCK, &signals, &former_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;

    // A set is the kernel's: a bit for each signal, from 1 on.
    bool was_blocked(int number) const
    {
        uint64_t bits;
        memcpy(&bits, &former_, sizeof bits);
        return (bits >> (number - 1) & 1) != 0;
    }

private:
    sigset_t former_;
};

// Stores what was there before in *former, unless that is null.
void install(int number, bool restarts, struct sigaction *former)
{
    struct sigaction action {
    };
    action.sa_sigaction = handle;
    // To be suspended ends no system call, whenever it is.
    const bool goes_on = restarts || number == SIGTSTP;
    action.sa_flags = SA_SIGINFO | (goes_on ? SA_RESTART : 0);
    // One signal is taken whole before the next.
    sigfillset(&action.sa_mask);
    sigaction(number, &action, former);
}

void catch_signal(GuardedSignal &signal, bool restarts)
{
    install(signal.number, restarts, &signal.former);
    const bool was_ignored =
        (signal.former.sa_flags & SA_SIGINFO) == 0 && signal.former.sa_handler == SIG_IGN;
    signal.caught = 1;
    if (was_ignored) {
        restore(signal);
    }
}

} // namespace

InterruptionGuard::InterruptionGuard()
{
    const SignalsBlocked blocked;
    noted = 0;
    waiting = 0;
    suspension = 0;
    for (GuardedSignal &signal : guarded) {
        catch_signal(signal, restarts_);
    }
    // Without an end there can be no grace.
    const bool can_end = end_of_grace.caught != 0 && !blocked.was_blocked(end_of_grace.number);
    grace = can_end ? k_possible : k_none;
}

InterruptionGuard::~InterruptionGuard()
{
    end();
}

bool InterruptionGuard::interrupted() const
{
    return noted != 0;
}

void InterruptionGuard::restart_calls(bool restarts)
{
    if (restarts == restarts_) {
        return;
    }
    const SignalsBlocked blocked;
    restarts_ = restarts;
    for (const GuardedSignal &signal : guarded) {
        if (signal.caught != 0) {
            install(signal.number, restarts, nullptr);
        }
    }
}

void InterruptionGuard::end()
{
    if (ended_) {
        return;
    }
    ended_ = true;
    {
        // An end of the grace that waits is delivered behind this block, and means nothing then.
        const SignalsBlocked blocked;
        remove_timer();
    }
    {
        const SignalsBlocked blocked;
        restore_former();
    }
    raise_once(noted);
    raise_once(waiting);
    raise_once(suspension);
}
