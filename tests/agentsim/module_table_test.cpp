// The module table: cursor, names, masks.
#include "agentsim/module_table.h"

#include "tests/agentsim/records.h"

using agentsim::ModuleTable;
using namespace ruk_test;

TEST(ModuleTable, standard_modules_in_order)
{
    struct {
        const char *name;
        uint32_t available;
        uint32_t printing;
    } const rows[] = {
        {"kern", 0xFF, 0x9F},   {"user", 0xFF, 0x9F},   {"daemon", 0xFF, 0x9F},
        {"auth", 0xFF, 0x9F},   {"syslog", 0xFF, 0x9F}, {"cron", 0xFF, 0x9F},
        {"local", 0xFF, 0x9F},  {"flow", 0xFF, 0x9F},   {"port", 0xFF, 0x9F},
        {"bridge", 0xFF, 0x9F}, {"vxlan", 0xFF, 0x9F},  {"mirror", 0x5F, 0x1F},
        {"timer", 0x87, 0x87},
    };
    const ModuleTable table = ModuleTable::standard();
    uint32_t cursor = 0xFFFFFFFF;
    uint32_t index = 0;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const LogModule *module = table.after(cursor);
        ASSERT_NE(module, nullptr);
        EXPECT_EQ(module->index, index++);
        EXPECT_EQ(module->available, row.available);
        EXPECT_EQ(module->printing, row.printing);
        EXPECT_EQ(module->default_printing, row.printing);
        EXPECT_STREQ(module->name, row.name);
        EXPECT_EQ(table.find(row.name), module);
        cursor = module->index;
    }
    EXPECT_EQ(table.after(cursor), nullptr);
    EXPECT_EQ(table.after(0x80000000), nullptr);
    EXPECT_EQ(table.after(0xFFFFFFFE), nullptr);
}

TEST(ModuleTable, find_wants_the_exact_name)
{
    const ModuleTable table = ModuleTable::standard();
    for (const char *name : {"", "ker", "kernel", "Kern", "all", "module0"}) {
        EXPECT_EQ(table.find(name), nullptr) << name;
    }
}

TEST(ModuleTable, generated_modules_are_numbered)
{
    const ModuleTable none = ModuleTable::generated(0);
    EXPECT_EQ(none.size(), 0U);
    EXPECT_EQ(none.after(0xFFFFFFFF), nullptr);
    EXPECT_FALSE(none.prints(0, 8));
    EXPECT_EQ(none.index_for("kern", 3), 0xFFFFFFFF);

    const ModuleTable table = ModuleTable::generated(12);
    EXPECT_EQ(table.size(), 12U);
    EXPECT_STREQ(table.after(0xFFFFFFFF)->name, "module0");
    EXPECT_STREQ(table.after(10)->name, "module11");
    EXPECT_EQ(table.after(11), nullptr);
    EXPECT_EQ(table.find("module7")->index, 7U);
    EXPECT_EQ(table.find("module12"), nullptr);
}

TEST(ModuleTable, index_for_falls_back_to_the_number)
{
    const ModuleTable standard = ModuleTable::standard();
    EXPECT_EQ(standard.index_for("vxlan", 2), 10U);
    EXPECT_EQ(standard.index_for("nothing", 15), 2U);
    EXPECT_EQ(ModuleTable::generated(5).index_for("vxlan", 12), 2U);
}

TEST(ModuleTable, set_printing_is_cut_to_what_is_available)
{
    struct {
        uint32_t index;
        uint32_t mask;
        bool known;
        uint32_t printing;
    } const rows[] = {
        {0, 0xFF, true, 0xFF},        {0, 0, true, 0},     {0, 0xFFFFFFFF, true, 0xFF},
        {11, 0xFF, true, 0x5F},       {12, 0x18, true, 0}, {13, 0xFF, false, 0},
        {0xFFFFFFFF, 0xFF, false, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.index);
        ModuleTable table = ModuleTable::standard();
        EXPECT_EQ(table.set_printing(row.index, row.mask), row.known);
        if (row.known) {
            EXPECT_EQ(table.after(row.index - 1)->printing, row.printing);
        }
    }
}

TEST(ModuleTable, set_printing_leaves_the_default_alone)
{
    ModuleTable table = ModuleTable::standard();
    table.set_printing(3, 0x01);
    EXPECT_EQ(table.after(2)->printing, 0x01U);
    EXPECT_EQ(table.after(2)->default_printing, 0x9FU);
    EXPECT_EQ(table.after(1)->printing, 0x9FU);
    EXPECT_EQ(table.after(3)->printing, 0x9FU);
}

TEST(ModuleTable, prints_follows_the_mask)
{
    ModuleTable table = ModuleTable::standard();
    EXPECT_TRUE(table.prints(0, 0x10));
    EXPECT_FALSE(table.prints(0, 0x40));
    EXPECT_FALSE(table.prints(0, 0));
    EXPECT_FALSE(table.prints(13, 0x01));
    EXPECT_FALSE(table.prints(0xFFFFFFFF, 0x01));
    table.set_printing(0, 0x40);
    EXPECT_FALSE(table.prints(0, 0x10));
    EXPECT_TRUE(table.prints(0, 0x40));
}

TEST(ModuleTable, all_has_the_masks_of_any)
{
    ModuleTable table = ModuleTable::generated(3);
    table.set_printing(0, 0x01);
    table.set_printing(1, 0x40);
    table.set_printing(2, 0);
    const LogModule all = table.all();
    EXPECT_EQ(all.index, 0xFFFFFFFF);
    EXPECT_EQ(all.available, 0xFFU);
    EXPECT_EQ(all.printing, 0x41U);
    EXPECT_EQ(all.default_printing, 0x9FU);
    EXPECT_STREQ(all.name, "all");

    const LogModule none = ModuleTable::generated(0).all();
    EXPECT_EQ(none.available, 0U);
    EXPECT_EQ(none.printing, 0U);
    EXPECT_EQ(none.default_printing, 0U);
}
