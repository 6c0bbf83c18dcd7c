// start, stop, resume, clear and debug: the commands that change the log.
#include "ruk/front_end.h"

#include <cstdlib>

#include "ruk/words.h"
#include "rukcmd/log_service.h"

namespace
{

constexpr uint32_t k_all_levels = 0xff;

uint64_t entries_of(const char *arguments)
{
    return arguments == nullptr ? 0 : strtoull(arguments, nullptr, 0);
}

int32_t set_and_report(LogSetOp operation, uint64_t value, const char *failure, const char *success)
{
    if (!log_service::set_log(operation, value)) {
        ruk_rcli_printf("%s", failure);
    }
    // Kept: success is reported in every case, after a failure too.
    ruk_rcli_printf("%s", success);
    return 0;
}

// The mask after one more word: "-" negates, the three keywords replace the mask, a letter adds
// its level or takes it away.
uint32_t apply_level_word(uint32_t mask, uint32_t default_mask, const char *word)
{
    const bool is_negated = *word == '-';
    if (is_negated) {
        ++word;
    }
    if (stris(word, "all") == 0) {
        return is_negated ? 0 : k_all_levels;
    }
    if (stris(word, "none") == 0) {
        return is_negated ? k_all_levels : 0;
    }
    if (stris(word, "default") == 0) {
        return is_negated ? 0 : default_mask;
    }
    const uint32_t bit = ruk_log_level_from_char(static_cast<unsigned char>(*word));
    return is_negated ? mask & ~bit : mask | bit;
}

uint32_t mask_of(const LogModule &module, const char *words)
{
    uint32_t mask = module.printing;
    for (; words != nullptr; words = kt_find_next_arg(words)) {
        mask = apply_level_word(mask, module.default_printing, words);
    }
    return mask;
}

void set_every_module(LogModule &module, uint32_t mask)
{
    module.index = log_service::k_before_first_module;
    while (log_service::next_module(module)) {
        log_service::set_module(module.index, mask);
    }
}

} // namespace

int32_t ruk_log_start(const char *arguments)
{
    return set_and_report(LOG_SET_START, entries_of(arguments), "Could not start log\n",
                          "Started log\n");
}

int32_t ruk_log_stop(const char *arguments)
{
    uint64_t value = entries_of(arguments);
    const auto entries = static_cast<uint32_t>(value);
    if (!log_service::set_log(LOG_SET_STOP, value)) {
        ruk_rcli_printf("Could not suspend log\n");
    }
    if (value != 0) {
        ruk_rcli_printf("Will suspend log after next %u entries\n", entries);
    } else {
        ruk_rcli_printf("Suspended log\n");
    }
    return 0;
}

int32_t ruk_log_resume(const char *)
{
    return set_and_report(LOG_SET_RESUME, 0, "Could not resume log\n", "Resumed log\n");
}

int32_t ruk_log_clear(const char *)
{
    return set_and_report(LOG_SET_CLEAR, 0, "Could not clear log\n", "Cleared log\n");
}

int32_t ruk_log_debug(const char *arguments)
{
    if (arguments == nullptr) {
        return 0;
    }
    char name[LOG_MODULE_NAME_SIZE];
    strncpy_until_space(name, sizeof name, arguments);
    LogModule module{};
    strncpy_until_space(module.name, sizeof module.name, name);
    // "all" is looked up too: its mask starts from the bits that the service gives for it.
    if (!log_service::find_module(module)) {
        ruk_rcli_printf("Module %s does not exist.\n", name);
        return 0;
    }
    const uint32_t mask = mask_of(module, kt_find_next_arg(arguments));
    if (stris(name, "all") == 0) {
        set_every_module(module, mask);
    } else {
        log_service::set_module(module.index, mask);
    }
    return 0;
}
