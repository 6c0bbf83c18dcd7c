// A host that links an interface database of its own: the definitions here take the place of the
// library's, which are weak.
#include <cstdio>
#include <cstring>
#include <string>

#include "ruk/if_index_name.h"
#include "tests/ifindex/guarded_buffer.h"

namespace
{

// What the database does when it is asked, and what it was asked.
struct {
    int32_t result;
    const char *name;
    bool fills_without_terminator;
    int asked;
    std::string last_name;
} g_db;

void answer(int32_t result, const char *name)
{
    g_db = {result, name, false, 0, ""};
}

} // namespace

int32_t if_db_ifindex2str_wrapper(char *buffer, int32_t size, IfIndex)
{
    ++g_db.asked;
    if (g_db.fills_without_terminator) {
        memset(buffer, 'x', static_cast<size_t>(size));
    } else {
        snprintf(buffer, static_cast<size_t>(size), "%s", g_db.name);
    }
    return g_db.result;
}

int32_t if_db_str2ifindex_wrapper(const char *name, IfIndex *out)
{
    ++g_db.asked;
    g_db.last_name = name;
    if (g_db.result == IF_DB_OK) {
        *out = 0x01f80000;
    }
    return g_db.result;
}

TEST(snprintf_if_index, prefers_the_name_of_the_database_for_fibre_channel_ports)
{
    answer(IF_DB_OK, "bay7");
    guarded_buffer buffer;
    EXPECT_EQ(snprintf_if_index(buffer.at(), 32, 0x01000000), 4);
    buffer.expect("bay7", 32);
    EXPECT_EQ(snprintf_if_index_short(buffer.at(), 32, 0x81000000), 4);
    buffer.expect("bay7", 32);
    EXPECT_EQ(snprintf_if_index_internal(buffer.at(), 32, 0x01000000), 4);
    buffer.expect("bay7", 32);
    EXPECT_EQ(g_db.asked, 3);
    const IfIndex pair[2] = {0x01000000, 0x01002000};
    EXPECT_EQ(snprintf_if_index_range(buffer.at(), 32, pair), 6);
    buffer.expect("bay7-3", 32);
}

TEST(snprintf_if_index, asks_the_database_for_nothing_else)
{
    answer(IF_DB_OK, "bay7");
    guarded_buffer buffer;
    EXPECT_EQ(snprintf_if_index_native(buffer.at(), 32, 0x01000000), 5);
    buffer.expect("fc1/1", 32);
    EXPECT_EQ(snprintf_if_index_short_native(buffer.at(), 32, 0x01000000), 5);
    for (IfIndex type = 0; type < 128; ++type) {
        if (type != 1) {
            snprintf_if_index(buffer.at(), 32, type << 24);
            snprintf_if_index_short(buffer.at(), 32, type << 24);
        }
    }
    EXPECT_EQ(snprintf_if_index(buffer.at(), 0, 0x01000000), 5);
    EXPECT_EQ(g_db.asked, 0);
}

TEST(snprintf_if_index, takes_the_fixed_name_when_the_database_has_none)
{
    const std::pair<int32_t, const char *> rows[] = {
        {IF_DB_FAILED, "bay7"},
        {1, "bay7"},
        {-1, "bay7"},
        {IF_DB_OK, ""},
    };
    for (const auto &[result, name] : rows) {
        answer(result, name);
        guarded_buffer buffer;
        EXPECT_EQ(snprintf_if_index(buffer.at(), 32, 0x01000000), 5);
        buffer.expect("fc1/1", 32);
        EXPECT_EQ(g_db.asked, 1);
    }
}

TEST(snprintf_if_index_from_if_db, counts_the_text_up_to_the_size)
{
    answer(IF_DB_OK, "bay7");
    guarded_buffer cut;
    EXPECT_EQ(snprintf_if_index_from_if_db(cut.at(), 3, 0x01000000), 2);
    cut.expect("ba", 3);

    g_db.fills_without_terminator = true;
    guarded_buffer full;
    EXPECT_EQ(snprintf_if_index_from_if_db(full.at(), 3, 0x01000000), 3);
    full.at()[2] = '\0';
    full.expect("xx", 3);

    const IfIndex pair[2] = {0x01000000, 0x01000000};
    guarded_buffer range;
    EXPECT_EQ(snprintf_if_index_range(range.at(), 3, pair), 0);
    range.expect("", 3);
}

TEST(ulx_interface_name_to_ifindex, asks_the_database_for_bays_and_extensions)
{
    struct {
        const char *name;
        const char *asked;
    } const rows[] = {
        {"bay3", "bay3"},   {"Bay 3/4", "bay3"},           {"bay", "bay0"},
        {"EXT17", "ext17"}, {"external port 17", "ext17"}, {"bay2147483648", "bay-2147483648"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        answer(IF_DB_OK, "");
        IfIndex out = 0xdeadbeef;
        EXPECT_EQ(ulx_interface_name_to_ifindex(row.name, &out), 1);
        EXPECT_EQ(out, 0x01f80000u);
        EXPECT_EQ(g_db.last_name, row.asked);
        EXPECT_EQ(g_db.asked, 1);
    }
}

TEST(ulx_interface_name_to_ifindex, ignores_what_the_database_answers)
{
    for (const int32_t result : {IF_DB_FAILED + 0, 1, -1}) {
        answer(result, "");
        IfIndex out = 0xdeadbeef;
        EXPECT_EQ(ulx_interface_name_to_ifindex("bay3", &out), 1);
        EXPECT_EQ(out, 0xdeadbeefu);
    }
}
