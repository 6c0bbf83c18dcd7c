// A host program in a locale of its own: words, numbers and names are read and printed as in the C
// locale.  in_locale.sh runs this once for each locale.
#include "ruk/address.h"
#include "ruk/command_table.h"
#include "ruk/front_end.h"
#include "ruk/if_index_name.h"
#include "ruk/words.h"

#include <cctype>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

// Without this the rest would show nothing.
TEST(locale, is_in_force)
{
    const struct {
        std::string name;
        const char *half; // 0.5 as printf has it
        int letter;
        int lower;
    } rows[] = {
        {"tr_TR.ISO-8859-9", "0,5", 'I', 0xFD}, // the dotless i
        {"tr_TR.UTF-8", "0,5", 'I', 'I'},       // whose lower case takes two bytes
        {"de_DE.ISO-8859-1", "0,5", 0xC4, 0xE4},
        {"de_DE.UTF-8", "0,5", 0xC4, 0xC4},
    };
    const char *name = getenv("LC_ALL");
    for (const auto &row : rows) {
        if (name != nullptr && row.name == name) {
            ASSERT_STREQ(setlocale(LC_ALL, nullptr), name);
            char half[8];
            snprintf(half, sizeof half, "%.1f", 0.5);
            EXPECT_STREQ(half, row.half);
            EXPECT_EQ(tolower(row.letter), row.lower);
            return;
        }
    }
    FAIL() << "the locale is none of these";
}

TEST(stris, ignores_the_case_of_ascii_letters_alone)
{
    EXPECT_EQ(stris("INFO", "info"), 0);
    EXPECT_EQ(stris("info", "INFO"), 0);
    // What other locales take for one letter in two cases, or for white space.
    EXPECT_NE(stris("\xC4", "\xE4"), 0);
    EXPECT_NE(stris("\xDD", "i"), 0);
    EXPECT_NE(stris("I", "\xFD"), 0);
    EXPECT_NE(stris("show\xA0", "show"), 0);
    EXPECT_NE(stris("show\x85", "show"), 0);
}

TEST(kt_strncasecmp, ignores_the_case_of_ascii_letters_alone)
{
    EXPECT_EQ(kt_strncasecmp("ITALIC", "italic", 6), 0);
    for (int c = 0x80; c <= 0xFF; ++c) {
        for (int other = 0; other <= 0xFF; ++other) {
            const char a = static_cast<char>(c);
            const char b = static_cast<char>(other);
            EXPECT_EQ(kt_strncasecmp(&a, &b, 1) == 0, c == other) << c << " and " << other;
        }
    }
}

TEST(ktcmd_validate_data, reports_every_byte_above_ascii)
{
    const uint32_t word = kt_debug_print_ktcmd;
    kt_debug_print_ktcmd = 0x04;
    testing::internal::CaptureStdout();
    EXPECT_EQ(ktcmd_validate_data("\xC4 \xA0", 10), 3);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ktcmd invalid character ffffffc4\n"
                                                      "ktcmd invalid character ffffffa0\n");
    kt_debug_print_ktcmd = word;
}

TEST(ruk_log_level_from_char, knows_ascii_letters_alone)
{
    EXPECT_EQ(ruk_log_level_from_char('I'), KT_LEVEL_INFO);
    EXPECT_EQ(ruk_log_level_from_char(0xDD), 0U);
    EXPECT_EQ(ruk_log_level_from_char(0xFD), 0U);
    char letters[9];
    ruk_log_level_letters(letters, 0xFF);
    EXPECT_STREQ(letters, "ENWIDTPL");
}

TEST(addresses, have_no_separators_of_the_locale)
{
    uint32_t address = 0;
    EXPECT_EQ(kt_parse_ip_address(&address, "10.1.2.3"), 0);
    EXPECT_EQ(address, 0x0302010AU);
    EXPECT_EQ(kt_parse_ip_address(&address, "10,1,2,3"), -1);
    char text[16];
    EXPECT_EQ(snprintf_ip_address(text, sizeof text, 0x0302010A), 8);
    EXPECT_STREQ(text, "10.1.2.3");
}

TEST(interface_names, have_no_separators_of_the_locale)
{
    IfIndex value = 0;
    EXPECT_EQ(ulx_interface_name_to_ifindex("VLAN1234", &value), 1);
    char text[32];
    EXPECT_EQ(snprintf_if_index(text, sizeof text, value), 8);
    EXPECT_STREQ(text, "Vlan1234");
}
