// Keeps an interruption from leaving the log stopped.
#include "rukcmd/interruption.h"

#include <cerrno>
#include <csignal>
#include <ctime>

namespace
{

struct GuardedSignal {
    int number;
    volatile sig_atomic_t caught;
    struct sigaction former;
};

// The last one tells the end of the grace.  It is one that nobody sends, since a signal that waits
// to be delivered takes in another of its number: the end of the grace would lose the second
// signal.
GuardedSignal guarded[] = {
    {SIGINT, 0, {}},  {SIGTERM, 0, {}}, {SIGHUP, 0, {}},
    {SIGQUIT, 0, {}}, {SIGPIPE, 0, {}}, {SIGRTMAX - 1, 0, {}},
};
GuardedSignal &end_of_grace = guarded[5];

volatile sig_atomic_t noted = 0;   // the first signal
volatile sig_atomic_t waiting = 0; // one that came within the first one's grace

constexpr timespec k_grace{.tv_sec = 0, .tv_nsec = 40'000'000};
timer_t grace_timer;
bool has_timer = false;

sigset_t set_of(int number)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, number);
    return signals;
}

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
    return info.si_code == SI_TIMER && info.si_value.sival_ptr == &grace_timer;
}

// Called by the handler too: nothing but sigaction.  Each disposition is put back once: what the
// host's own handler changes from then on is the host's.
void restore_former()
{
    for (GuardedSignal &signal : guarded) {
        if (signal.caught != 0) {
            signal.caught = 0;
            sigaction(signal.number, &signal.former, nullptr);
        }
    }
}

bool create_timer()
{
    struct sigevent event {
    };
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = end_of_grace.number;
    event.sigev_value.sival_ptr = &grace_timer;
    return timer_create(CLOCK_MONOTONIC, &event, &grace_timer) == 0;
}

// Called by the handler.  False where timers are refused.
bool start_grace()
{
    const itimerspec once{.it_interval = {}, .it_value = k_grace};
    return has_timer && timer_settime(grace_timer, 0, &once, nullptr) == 0;
}

// Called with the signals blocked, and takes back an end of the grace that waits to be delivered.
void remove_timer()
{
    if (has_timer) {
        has_timer = false;
        timer_delete(grace_timer);
        const sigset_t signals = set_of(end_of_grace.number);
        const timespec no_wait{};
        sigtimedwait(&signals, nullptr, &no_wait);
    }
}

void take_signal(int number, const siginfo_t &info)
{
    if (is_end_of_grace(info)) {
        if (noted != 0) {
            restore_former();
            raise_once(waiting);
        }
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
    take_signal(number, *info);
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

    bool was_blocked(int number) const { return sigismember(&former_, number) == 1; }

private:
    sigset_t former_;
};

// A suspended tool would keep the log stopped until someone continues it.
bool suspension_waits = false;

void put_suspension_off()
{
    const sigset_t signals = set_of(SIGTSTP);
    sigset_t former;
    pthread_sigmask(SIG_BLOCK, &signals, &former);
    suspension_waits = sigismember(&former, SIGTSTP) == 0;
}

void allow_suspension()
{
    if (suspension_waits) {
        suspension_waits = false;
        const sigset_t signals = set_of(SIGTSTP);
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }
}

void install(const GuardedSignal &signal, bool restarts)
{
    struct sigaction action {
    };
    action.sa_sigaction = handle;
    action.sa_flags = SA_SIGINFO | (restarts ? SA_RESTART : 0);
    // One signal is taken whole before the next.
    sigfillset(&action.sa_mask);
    sigaction(signal.number, &action, nullptr);
}

void catch_signal(GuardedSignal &signal, bool restarts)
{
    sigaction(signal.number, nullptr, &signal.former);
    const bool is_ignored =
        (signal.former.sa_flags & SA_SIGINFO) == 0 && signal.former.sa_handler == SIG_IGN;
    if (!is_ignored) {
        install(signal, restarts);
        signal.caught = 1;
    }
}

} // namespace

InterruptionGuard::InterruptionGuard()
{
    put_suspension_off();
    const SignalsBlocked blocked;
    noted = 0;
    waiting = 0;
    for (GuardedSignal &signal : guarded) {
        catch_signal(signal, restarts_);
    }
    // Without an end there can be no grace.
    has_timer =
        end_of_grace.caught != 0 && !blocked.was_blocked(end_of_grace.number) && create_timer();
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
            install(signal, restarts);
        }
    }
}

void InterruptionGuard::end()
{
    {
        const SignalsBlocked blocked;
        remove_timer();
        restore_former();
    }
    raise_once(noted);
    raise_once(waiting);
    allow_suspension();
}
