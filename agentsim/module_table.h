// The modules that log, with the levels that each can log, logs now, and logs by default.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "ruk/log.h"

namespace agentsim
{

class ModuleTable
{
public:
    // As a cursor: before the first module.  Also the index of "all", which is no module's.
    static constexpr uint32_t k_all_ones = UINT32_MAX;

    // The table that the stand-in Agent serves: the syslog facilities and some data-path modules.
    static ModuleTable standard();

    // count modules named "module0", "module1", ...
    static ModuleTable generated(uint32_t count);

    uint32_t size() const { return static_cast<uint32_t>(modules_.size()); }

    // The module with the lowest index above cursor, or null.
    const LogModule *after(uint32_t cursor) const;

    // The module of exactly this name, or null.
    const LogModule *find(std::string_view name) const;

    // The record that stands for all modules: named "all", its masks those of any module.
    LogModule all() const;

    // Sets what the module logs from now on, as far as it can log it.  False: no such module.
    bool set_printing(uint32_t index, uint32_t mask);

    // Whether an event of this level is to be logged.
    bool prints(uint32_t index, uint32_t level) const;

    // The index of the named module; in a table without it, the one that number falls on, so
    // that events spread over a generated table.
    uint32_t index_for(std::string_view name, uint32_t number) const;

private:
    void add(std::string_view name, uint32_t available, uint32_t printing);

    std::vector<LogModule> modules_; // each stands at its index
};

} // namespace agentsim
