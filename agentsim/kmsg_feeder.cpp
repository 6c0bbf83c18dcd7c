// The kernel's log as events.
#include "agentsim/kmsg_feeder.h"

#include <cerrno>
#include <charconv>

#include "agentsim/event.h"
#include "agentsim/syslog_priority.h"
#include "agentsim/text.h"

namespace agentsim
{

namespace
{

// Longer than any record of the kernel, which are at most 8 KiB.
constexpr size_t k_record_room = 16384;

// Records taken before clients get their turn.
constexpr int k_batch = 256;

// Cuts the first comma-separated field off fields and returns it.
std::string_view next_field(std::string_view &fields)
{
    const size_t end = fields.find(',');
    const std::string_view field = fields.substr(0, end);
    fields.remove_prefix(end == fields.npos ? fields.size() : end + 1);
    return field;
}

// The processor in the fields after the flags: the caller is "C<n>" where a processor logged,
// "T<n>" where a thread did.
uint16_t cpu_in(std::string_view fields)
{
    constexpr std::string_view k_caller = "caller=";
    while (!fields.empty()) {
        std::string_view field = next_field(fields);
        if (field.starts_with(k_caller)) {
            field.remove_prefix(k_caller.size());
        }
        if (field.starts_with('C')) {
            if (const auto cpu = number_of<uint16_t>(field.substr(1))) {
                return *cpu;
            }
        }
    }
    return 0;
}

// The byte of an escape "\xNN" at the start of text.
std::optional<unsigned char> escaped_byte(std::string_view text)
{
    unsigned char byte = 0;
    if (text.size() < 4 || !text.starts_with("\\x")) {
        return std::nullopt;
    }
    const auto [end, error] = std::from_chars(text.data() + 2, text.data() + 4, byte, 16);
    return error == std::errc() && end == text.data() + 4 ? std::optional(byte) : std::nullopt;
}

} // namespace

std::optional<KmsgRecord> parse_kmsg(std::string_view record)
{
    const size_t text = record.find(';');
    if (text == record.npos) {
        return std::nullopt;
    }
    std::string_view fields = record.substr(0, text);
    const auto priority = number_of<uint32_t>(next_field(fields));
    const auto sequence = number_of<uint64_t>(next_field(fields));
    const auto microseconds = number_of<uint64_t>(next_field(fields));
    if (!priority || !sequence || !microseconds) {
        return std::nullopt;
    }
    next_field(fields); // the flags
    record.remove_prefix(text + 1);
    return KmsgRecord{.priority = *priority,
                      .sequence = *sequence,
                      .microseconds = *microseconds,
                      .cpu = cpu_in(fields),
                      .text = record.substr(0, record.find('\n'))};
}

size_t unescape_kmsg(std::string_view text, char *out, size_t size)
{
    size_t length = 0;
    while (!text.empty() && length < size) {
        const auto byte = escaped_byte(text);
        const bool readable = byte && (*byte == '\\' || *byte == '\t' || *byte > 0x7F);
        out[length++] = readable ? static_cast<char>(*byte) : text.front();
        text.remove_prefix(readable ? 4 : 1);
    }
    return length;
}

bool KmsgFeeder::collect(LogService &service, int64_t)
{
    char record[k_record_room];
    for (int taken = 0; taken < k_batch; ++taken) {
        const ssize_t got = read(kmsg_.get(), record, sizeof record);
        if (got > 0) {
            take({record, static_cast<size_t>(got)}, service);
        } else if (got < 0 && errno == EAGAIN) {
            return true;
        } else if (got == 0 || (errno != EPIPE && errno != EINTR && errno != EINVAL)) {
            return false;
        }
        // EPIPE and EINVAL: records were overwritten or are too long.  The next record that
        // can be read shows by its number how many.
    }
    return true;
}

void KmsgFeeder::take(std::string_view record, LogService &service)
{
    const auto parsed = parse_kmsg(record);
    if (!parsed) {
        service.lose(1);
        return;
    }
    if (next_sequence_ && parsed->sequence > *next_sequence_) {
        service.lose(parsed->sequence - *next_sequence_);
    }
    next_sequence_ = parsed->sequence + 1;

    LogEntry event{};
    event.module = module_of_priority(parsed->priority, service.modules());
    event.level = level_of_priority(parsed->priority);
    event.cpu = parsed->cpu;
    set_time(event, started_ + static_cast<int64_t>(parsed->microseconds) * 1000);
    char text[sizeof event.message];
    const size_t length = unescape_kmsg(parsed->text, text, sizeof text);
    set_message(event, {text, length}, Ending::LINE_FEED);
    service.log(event);
}

} // namespace agentsim
