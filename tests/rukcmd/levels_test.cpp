// The level vocabulary.
#include "ruk/front_end.h"

#include <string>

namespace
{

struct {
    uint32_t bit;
    const char *name;
    char letter;
    const char *letters; // of the bit alone
} const k_levels[] = {
    {0x01, "Error", 'e', "E       "},   {0x02, "Notice", 'n', " N      "},
    {0x04, "Warning", 'w', "  W     "}, {0x08, "Info", 'i', "   I    "},
    {0x10, "Debug", 'd', "    D   "},   {0x20, "Temp", 't', "     T  "},
    {0x40, "Packet", 'p', "      P "},  {0x80, "Log", 'l', "       L"},
};

} // namespace

TEST(ruk_log_levels_, hold_eight_rows_and_an_end)
{
    for (size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(ruk_log_levels[i].bit, k_levels[i].bit);
        EXPECT_STREQ(ruk_log_levels[i].name, k_levels[i].name);
        EXPECT_EQ(ruk_log_levels[i].letter, k_levels[i].letter);
    }
    EXPECT_EQ(ruk_log_levels[8].name, nullptr);
}

TEST(ruk_levelstring, names_single_bits_only)
{
    for (const auto &level : k_levels) {
        EXPECT_STREQ(ruk_levelstring(static_cast<int32_t>(level.bit)), level.name);
    }
    for (const int32_t other : {0, 3, 0x87, 0xff, 0x100, 0x101, -1, INT32_MIN}) {
        EXPECT_STREQ(ruk_levelstring(other), "") << other;
    }
}

TEST(ruk_log_level_from_char, knows_each_letter_in_both_cases)
{
    for (const auto &level : k_levels) {
        EXPECT_EQ(ruk_log_level_from_char(level.letter), level.bit);
        EXPECT_EQ(ruk_log_level_from_char(level.letter - 'a' + 'A'), level.bit);
    }
    for (int32_t c = -2; c < 600; ++c) {
        const bool is_letter =
            c > 0 && c < 128 &&
            std::string("enwidtplENWIDTPL").find(static_cast<char>(c)) != std::string::npos;
        EXPECT_EQ(ruk_log_level_from_char(c) != 0, is_letter) << c;
    }
    for (const int32_t other : {INT32_MIN, INT32_MAX, 'e' - 256, 0x10065}) {
        EXPECT_EQ(ruk_log_level_from_char(other), 0U) << other;
    }
}

TEST(ruk_log_level_letters, writes_eight_characters_and_a_terminator)
{
    const auto letters = [](uint32_t mask) {
        char out[12];
        memset(out, '#', sizeof out);
        ruk_log_level_letters(out, mask);
        EXPECT_EQ(std::string(out + 8, 4), std::string("\0###", 4));
        return std::string(out, 8);
    };
    for (const auto &level : k_levels) {
        EXPECT_EQ(letters(level.bit), level.letters);
    }
    EXPECT_EQ(letters(0), "        ");
    EXPECT_EQ(letters(0x87), "ENW    L");
    EXPECT_EQ(letters(0xff), "ENWIDTPL");
    EXPECT_EQ(letters(0xffffff00), "        ");
    EXPECT_EQ(letters(0x101), "E       ");
    EXPECT_EQ(letters(UINT32_MAX), "ENWIDTPL");
}
