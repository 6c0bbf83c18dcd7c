// The level vocabulary: bits, names and letters.
#include "ruk/front_end.h"

#include "infra/utils/kttext.h"

const LogLevel ruk_log_levels[] = {
    {KT_LEVEL_ERROR, "Error", 'e'},
    {KT_LEVEL_NOTICE, "Notice", 'n'},
    {KT_LEVEL_WARNING, "Warning", 'w'},
    {KT_LEVEL_INFO, "Info", 'i'},
    {KT_LEVEL_DEBUG, "Debug", 'd'},
    {KT_LEVEL_TEMP, "Temp", 't'},
    {KT_LEVEL_PACKET, "Packet", 'p'},
    {KT_LEVEL_LOG, "Log", 'l'},
    {0, nullptr, '\0'},
};

const char *ruk_levelstring(int32_t level)
{
    for (const LogLevel *row = ruk_log_levels; row->name != nullptr; ++row) {
        if (row->bit == static_cast<uint32_t>(level)) {
            return row->name;
        }
    }
    return "";
}

uint32_t ruk_log_level_from_char(int32_t c)
{
    const int32_t letter = c >= 'A' && c <= 'Z' ? kttext::lower(static_cast<char>(c)) : c;
    for (const LogLevel *row = ruk_log_levels; row->name != nullptr; ++row) {
        if (row->letter == letter) {
            return row->bit;
        }
    }
    return 0;
}

void ruk_log_level_letters(char *out, uint32_t mask)
{
    for (const LogLevel *row = ruk_log_levels; row->name != nullptr; ++row) {
        const bool is_on = (mask & row->bit) != 0;
        // Not toupper: a Turkish locale has another letter for "i".
        *out++ = is_on ? static_cast<char>(row->letter - 'a' + 'A') : ' ';
    }
    *out = '\0';
}
