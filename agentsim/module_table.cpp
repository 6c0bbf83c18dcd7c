// The module table: what each module can log and what it logs now.
#include "agentsim/module_table.h"

#include <algorithm>
#include <string>

#include "agentsim/text.h"

namespace agentsim
{

namespace
{

constexpr uint32_t k_every_level = 0xFF;

// Error, Notice, Warning, Info, Debug and Log: all but the two that flood (Temp, Packet).
constexpr uint32_t k_usual_levels = 0x9F;

struct ModuleRow {
    std::string_view name;
    uint32_t available;
    uint32_t printing; // now and by default
};

// One row per module, in the order of their indexes.
constexpr ModuleRow k_modules[] = {
    {"kern", k_every_level, k_usual_levels},
    {"user", k_every_level, k_usual_levels},
    {"daemon", k_every_level, k_usual_levels},
    {"auth", k_every_level, k_usual_levels},
    {"syslog", k_every_level, k_usual_levels},
    {"cron", k_every_level, k_usual_levels},
    {"local", k_every_level, k_usual_levels},
    {"flow", k_every_level, k_usual_levels},
    {"port", k_every_level, k_usual_levels},
    {"bridge", k_every_level, k_usual_levels},
    {"vxlan", k_every_level, k_usual_levels},
    {"mirror", 0x5F, 0x1F},
    {"timer", 0x87, 0x87},
};

} // namespace

ModuleTable ModuleTable::standard()
{
    ModuleTable table;
    for (const ModuleRow &row : k_modules) {
        table.add(row.name, row.available, row.printing);
    }
    return table;
}

ModuleTable ModuleTable::generated(uint32_t count)
{
    ModuleTable table;
    table.modules_.reserve(count);
    for (uint32_t index = 0; index < count; ++index) {
        table.add("module" + std::to_string(index), k_every_level, k_usual_levels);
    }
    return table;
}

const LogModule *ModuleTable::after(uint32_t cursor) const
{
    // All ones wrap to the first module.
    const uint32_t next = cursor + 1;
    return next < size() ? &modules_[next] : nullptr;
}

const LogModule *ModuleTable::find(std::string_view name) const
{
    const auto found =
        std::find_if(modules_.begin(), modules_.end(),
                     [name](const LogModule &module) { return bounded_text(module.name) == name; });
    return found != modules_.end() ? &*found : nullptr;
}

LogModule ModuleTable::all() const
{
    LogModule all{
        .index = k_all_ones, .available = 0, .printing = 0, .default_printing = 0, .name = "all"};
    for (const LogModule &module : modules_) {
        all.available |= module.available;
        all.printing |= module.printing;
        all.default_printing |= module.default_printing;
    }
    return all;
}

bool ModuleTable::set_printing(uint32_t index, uint32_t mask)
{
    if (index >= size()) {
        return false;
    }
    modules_[index].printing = mask & modules_[index].available;
    return true;
}

bool ModuleTable::prints(uint32_t index, uint32_t level) const
{
    return index < size() && (modules_[index].printing & level) != 0;
}

uint32_t ModuleTable::index_for(std::string_view name, uint32_t number) const
{
    if (const LogModule *module = find(name)) {
        return module->index;
    }
    return size() != 0 ? number % size() : k_all_ones;
}

void ModuleTable::add(std::string_view name, uint32_t available, uint32_t printing)
{
    LogModule module{.index = size(),
                     .available = available,
                     .printing = printing,
                     .default_printing = printing,
                     .name = {}};
    name.copy(module.name, sizeof module.name - 1);
    modules_.push_back(module);
}

} // namespace agentsim
