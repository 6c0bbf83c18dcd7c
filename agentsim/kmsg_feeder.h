// The kernel's log as events, read from /dev/kmsg record by record.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "agentsim/event_source.h"
#include "agentsim/unique_fd.h"
#include "ruk/log.h"

namespace agentsim
{

// One record: "priority,sequence,microseconds,flags[,field...];text", then a line feed and
// further lines that are no part of the text.
struct KmsgRecord {
    uint32_t priority;     // as in syslog
    uint64_t sequence;     // number of the record; a gap tells of records that were overwritten
    uint64_t microseconds; // since the host started
    uint16_t cpu;          // of a record that names its processor ("caller=C<n>"), else 0
    std::string_view text; // with the kernel's escapes; points into the record
};

std::optional<KmsgRecord> parse_kmsg(std::string_view record);

// Undoes the kernel's escapes ("\xNN") of backslashes, tabs and bytes above 0x7F into out, at
// most size bytes, and returns their number.  Other escapes stay, so that nothing in the kernel's
// log can drive a terminal.
size_t unescape_kmsg(std::string_view text, char *out, size_t size);

class KmsgFeeder : public EventSource
{
public:
    // kmsg does not block; it stands before the first record that is to be logged.  started is
    // the wall time at which the kernel's clock was zero.
    KmsgFeeder(UniqueFd kmsg, int64_t started) : kmsg_(std::move(kmsg)), started_(started) {}

    int descriptor() const override { return kmsg_.get(); }
    bool collect(LogService &service, int64_t now) override;

    // Logs one record, and counts those that are missing before it.
    void take(std::string_view record, LogService &service);

private:
    UniqueFd kmsg_;
    int64_t started_;
    std::optional<uint64_t> next_sequence_; // none before the first record
};

} // namespace agentsim
