// Lines of text as events.
#include "agentsim/line_feeder.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include "agentsim/syslog_priority.h"
#include "agentsim/text.h"

namespace agentsim
{

namespace
{

// Facility user-level messages, severity information.
constexpr uint32_t k_user_info = 1 * 8 + 6;

// The highest priority there is: facility 23, severity debug.
constexpr uint32_t k_last_priority = 191;

struct LevelWord {
    std::string_view word;
    uint16_t level;
};

constexpr LevelWord k_level_words[] = {
    {"error", KT_LEVEL_ERROR},   {"notice", KT_LEVEL_NOTICE}, {"warning", KT_LEVEL_WARNING},
    {"info", KT_LEVEL_INFO},     {"debug", KT_LEVEL_DEBUG},   {"temp", KT_LEVEL_TEMP},
    {"packet", KT_LEVEL_PACKET}, {"log", KT_LEVEL_LOG},
};

// "<N>text" with a priority that exists.
std::optional<ParsedLine> with_priority(std::string_view line)
{
    const size_t end = line.find('>');
    if (!line.starts_with('<') || end == line.npos) {
        return std::nullopt;
    }
    const auto priority = number_of<uint32_t>(line.substr(1, end - 1));
    if (!priority || *priority > k_last_priority) {
        return std::nullopt;
    }
    return ParsedLine{*priority, level_of_priority(*priority), line.substr(end + 1)};
}

// "level:text", with or without a blank after the colon.
std::optional<ParsedLine> with_level(std::string_view line)
{
    const size_t end = line.find(':');
    if (end == line.npos) {
        return std::nullopt;
    }
    for (const LevelWord &row : k_level_words) {
        if (is_word(line.substr(0, end), row.word)) {
            const size_t text = end + (line.substr(end + 1).starts_with(' ') ? 2 : 1);
            return ParsedLine{k_user_info, row.level, line.substr(text)};
        }
    }
    return std::nullopt;
}

} // namespace

ParsedLine parse_line(std::string_view line)
{
    if (const auto parsed = with_priority(line)) {
        return *parsed;
    }
    if (const auto parsed = with_level(line)) {
        return *parsed;
    }
    return {k_user_info, KT_LEVEL_INFO, line};
}

bool LineFeeder::collect(LogService &service, int64_t)
{
    char piece[16384];
    const ssize_t got = read(file_.get(), piece, sizeof piece);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
        return true;
    }
    if (got <= 0) {
        finish(service);
        return false;
    }
    take({piece, static_cast<size_t>(got)}, service);
    return true;
}

void LineFeeder::take(std::string_view piece, LogService &service)
{
    while (!piece.empty()) {
        const size_t end = std::min(piece.find('\n'), piece.size());
        const size_t kept = std::min(end, line_.size() - length_);
        piece.copy(line_.data() + length_, kept);
        length_ += kept;
        begun_ = true;
        if (end == piece.size()) {
            return;
        }
        end_line(service);
        piece.remove_prefix(end + 1);
    }
}

void LineFeeder::finish(LogService &service)
{
    if (begun_) {
        end_line(service);
    }
}

void LineFeeder::end_line(LogService &service)
{
    std::string_view line(line_.data(), length_);
    if (ending_ == Ending::LINE_FEED && line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    const ParsedLine parsed = parse_line(line);
    const uint32_t module = module_of_priority(parsed.priority, service.modules());
    service.log(event_now(module, parsed.level, parsed.text, ending_));
    length_ = 0;
    begun_ = false;
}

} // namespace agentsim
