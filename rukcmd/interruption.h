// Keeps an interruption from leaving the log stopped.
//
// From its construction on, the first of SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGPIPE is only
// noted, so that a read-out can see it between two entries and release the log.  Signals often come
// in pairs (a shell and the terminal both hang up, timeout signals the process and its group), so
// the first one has a grace of 40 ms in which further ones wait.  After that the former
// dispositions are back and a second signal acts, since an Agent that has stalled must not make the
// tool unkillable.  When the guard ends, the noted signal is raised again.  A signal that was
// ignored stays ignored.  SIGTSTP waits until the guard ends.
#pragma once

class InterruptionGuard
{
public:
    InterruptionGuard();
    ~InterruptionGuard();
    InterruptionGuard(const InterruptionGuard &) = delete;
    InterruptionGuard &operator=(const InterruptionGuard &) = delete;

    bool interrupted() const;

    // Whether a system call that a signal interrupts goes on.  It does at first, so that no
    // exchange is torn; a write to a reader that takes nothing has to end.  A signal that comes
    // just before the write can't end it; the end of the grace, which is a signal as well, does.
    void restart_calls(bool restarts);

    // Ends the guard early.
    void end();

private:
    bool restarts_ = true;
    bool ended_ = false;
};
