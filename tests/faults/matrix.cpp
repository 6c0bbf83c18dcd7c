// The table of the matrix and the rules that leave combinations out.
#include "tests/faults/matrix.h"

#include <cstdio>

namespace ruk_test
{
namespace
{

constexpr int k_steps = 9;

struct Row {
    Fault_kind kind;
    const char *name;
    const char *cells; // a letter per step; see fate_of
};

// The steps: connect, send; nothing, in header, at status, header only, in payload, one short of
// the reply has come; surplus.
constexpr Row k_rows[] = {
    {Fault_kind::closed, "closed", "CS 000000 t"},
    {Fault_kind::reset, "reset", "LS ------ t"},
    {Fault_kind::shut_one_way, "shut one way", "CS 000000 t"},
    {Fault_kind::stalled, "stalled, then closed", "CS 000000 t"},
    {Fault_kind::dribbled, "dribbled", "1w 4wwwww d"},
    {Fault_kind::garbage, "garbage", "12 sssppp d"},
    {Fault_kind::claims_less, "header claims less", "12 333000 d"},
    {Fault_kind::claims_more, "header claims more", "12 333000 d"},
    {Fault_kind::descriptor_closed, "descriptor closed", "CS ------ 5"},
    {Fault_kind::descriptor_reused, "descriptor reused", "CS ------ 5"},
    {Fault_kind::descriptor_limit, "descriptor limit", "CS 000000 t"},
    {Fault_kind::no_memory, "no memory", "7D R66666 6"},
};

constexpr const char *k_step_names[k_steps] = {
    "connect",     "send",       "nothing",   "in header", "at status",
    "header only", "in payload", "one short", "surplus",
};

Fate fate_of(char cell)
{
    switch (cell) {
    case 'C':
        return Fate::no_connection;
    case 'L':
        return Fate::taken_and_lost;
    case 'S':
        return Fate::not_sent;
    case '0':
        return Fate::ended;
    case '-':
        return Fate::failed;
    case 'w':
        return Fate::whole;
    case 't':
        return Fate::whole_then_end;
    case 'd':
        return Fate::whole_shifted;
    case 's':
        return Fate::wrong_status;
    case 'p':
        return Fate::wrong_payload;
    case 'D':
        return Fate::no_send_block;
    case 'R':
        return Fate::no_reply_block;
    default:
        return Fate::excluded;
    }
}

// Rules of the table itself.
const char *rule_of(char cell)
{
    switch (cell) {
    case '1':
        return "connecting carries no bytes";
    case '2':
        return "while the client sends the peer says nothing";
    case '3':
        return "a header tells its sizes behind byte 16";
    case '4':
        return "no byte to dribble";
    case '5':
        return "after a whole reply it is the next exchange's send that meets it";
    case '6':
        return "an exchange allocates before it sends";
    case '7':
        return "the lock is made once, by the first connection (a case of its own)";
    default:
        return nullptr;
    }
}

// Rules that depend on who calls.
const char *rule_of(const Caller &caller, Step step, Fault_kind kind, Fate fate)
{
    const bool during_send =
        step == Step::send && (kind == Fault_kind::reset || kind == Fault_kind::stalled);
    if (during_send && caller.request_fits_socket) {
        return "a request that fits the socket is sent whatever the peer does meanwhile";
    }
    if (!caller.request_fits_socket && !during_send) {
        return "huge requests are for what happens while they are sent";
    }
    if (fate == Fate::no_reply_block && caller.reply_fits_stack) {
        return "a small reply needs no block";
    }
    if (!caller.connects_after && step == Step::connect) {
        return "the command makes no exchange after it, so nothing connects";
    }
    if (caller.prints_records && fate == Fate::taken_and_lost) {
        return "lost before it was taken: shown with the clients";
    }
    if (fate == Fate::whole_shifted &&
        (caller.has_threads || (caller.prints_records && !caller.is_last_exchange))) {
        return "a stream that is out of step stays so: shown with the clients";
    }
    if (caller.prints_records && fate == Fate::wrong_payload && step != Step::header_only) {
        return "half a record of garbage: shown with the clients";
    }
    return nullptr;
}

// The cells without the blanks that make them readable.
std::string cells_of(const Row &row)
{
    std::string cells = row.cells;
    std::erase(cells, ' ');
    return cells;
}

} // namespace

bool is_broken(Fate fate)
{
    return fate == Fate::not_sent || fate == Fate::ended || fate == Fate::failed;
}

void Matrix::run(const std::string &who, const Caller &caller,
                 const std::function<void(Step, Fault_kind, Fate)> &run_one)
{
    for (const Row &row : k_rows) {
        const std::string cells = cells_of(row);
        ASSERT_EQ(cells.size(), size_t{k_steps});
        for (int i = 0; i < k_steps; ++i) {
            const Step step{i};
            const char cell = cells[static_cast<size_t>(i)];
            const Fate fate = fate_of(cell);
            const char *rule =
                fate == Fate::excluded ? rule_of(cell) : rule_of(caller, step, row.kind, fate);
            if (rule != nullptr) {
                exclude(rule);
                continue;
            }
            SCOPED_TRACE(who + ", " + name_of(step) + ", " + row.name);
            ++run_;
            run_one(step, row.kind, fate);
            if (testing::Test::HasFatalFailure()) {
                return;
            }
        }
    }
}

Matrix::~Matrix()
{
    int left_out = 0;
    for (const auto &[reason, count] : excluded_) {
        left_out += count;
    }
    printf("%s: %d combinations run, %d left out\n", name_, run_, left_out);
    for (const auto &[reason, count] : excluded_) {
        printf("  %4d  %s\n", count, reason.c_str());
    }
}

const char *name_of(Step step)
{
    return k_step_names[static_cast<int>(step)];
}

const char *name_of(Fault_kind kind)
{
    return k_rows[static_cast<int>(kind)].name;
}

} // namespace ruk_test
