// The fault matrix: what becomes of one exchange for each fault at each step, and which
// combinations make no sense and why.
#pragma once

#include "tests/faults/faulty_agent.h"

#include <functional>
#include <map>
#include <string>

namespace ruk_test
{

// What becomes of the exchange that the fault happens to.
enum class Fate {
    no_connection,  // none can be made; the message tells why
    taken_and_lost, // one is made and lost before anything was sent
    not_sent,       // send gives -1
    ended,          // read gives 0
    failed,         // read gives -1
    whole,          // as if nothing were
    whole_then_end, // whole; the connection is lost for the next
    whole_shifted,  // whole; five bytes are left in the stream
    wrong_status,   // the status is garbage, and all that follows
    wrong_payload,  // what follows the step is garbage
    no_send_block,  // nothing sent, connection kept
    no_reply_block, // likewise
    excluded,
};

// Whether the connection is lost and the next exchange connects anew.
bool is_broken(Fate fate);

// Who makes the exchange, as far as it decides what makes sense.
struct Caller {
    bool reply_fits_stack = true;    // 4096 bytes with the header
    bool request_fits_socket = true; // a megabyte does not
    bool is_last_exchange = false;   // of its command
    bool connects_after = true;      // when it has lost the connection
    bool prints_records = false;     // a command, which shows what comes
    bool has_threads = false;
};

// Calls run for every combination that makes sense, and prints how many those were and why the
// others were left out.
class Matrix
{
public:
    explicit Matrix(const char *name) : name_(name) {}
    ~Matrix();

    void run(const std::string &who, const Caller &caller,
             const std::function<void(Step, Fault_kind, Fate)> &run_one);
    // One that a caller's own table leaves out.
    void exclude(const char *reason) { ++excluded_[reason]; }

    int combinations() const { return run_; }

private:
    const char *name_;
    int run_ = 0;
    std::map<std::string, int> excluded_;
};

const char *name_of(Step step);
const char *name_of(Fault_kind kind);

} // namespace ruk_test
