// Keeps an interruption from leaving the log stopped.
#include "rukcmd/interruption.h"

#include <csignal>

namespace
{

struct GuardedSignal {
    int number;
    volatile sig_atomic_t caught;
    struct sigaction former;
};

GuardedSignal guarded[] = {
    {SIGINT, 0, {}}, {SIGTERM, 0, {}}, {SIGHUP, 0, {}}, {SIGQUIT, 0, {}}, {SIGPIPE, 0, {}},
};

volatile sig_atomic_t noted = 0;

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

void note(int number)
{
    noted = number;
    restore_former();
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

private:
    sigset_t former_;
};

void install(const GuardedSignal &signal, bool restarts)
{
    struct sigaction action {
    };
    action.sa_handler = note;
    action.sa_flags = restarts ? SA_RESTART : 0;
    // The first signal is noted whole before a second one acts.
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
    const SignalsBlocked blocked;
    noted = 0;
    for (GuardedSignal &signal : guarded) {
        catch_signal(signal, restarts_);
    }
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
    restore_former();
    const int number = noted;
    noted = 0;
    if (number != 0) {
        raise(number);
    }
}
