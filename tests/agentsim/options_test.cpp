// The command line of the stand-in Agent.
#include "agentsim/options.h"

#include <iterator>
#include <sstream>
#include <vector>

using agentsim::Options;
using agentsim::parse_options;

namespace
{

std::string parse(const std::vector<const char *> &arguments, Options &options)
{
    return parse_options(arguments, options);
}

// The arguments stand in one line, apart by blanks.
void expect_error(const std::string &line, const std::string &error)
{
    SCOPED_TRACE(line);
    std::istringstream words(line);
    const std::vector<std::string> arguments{std::istream_iterator<std::string>(words), {}};
    std::vector<const char *> texts;
    for (const std::string &argument : arguments) {
        texts.push_back(argument.c_str());
    }
    Options options;
    EXPECT_EQ(parse(texts, options), error);
}

} // namespace

TEST(parse_options, defaults)
{
    Options options;
    EXPECT_EQ(parse({}, options), "");
    EXPECT_EQ(options.socket, "/var/tmp/brelovs_api_socket");
    EXPECT_EQ(options.capacity, 16384U);
    EXPECT_EQ(options.first_entry, 0U);
    EXPECT_EQ(options.modules, 0xFFFFFFFFFFFFFFFF);
    EXPECT_EQ(options.rate, 0U);
    EXPECT_EQ(options.preload, 0U);
    EXPECT_EQ(options.feed, "");
    EXPECT_FALSE(options.no_line_feed);
    EXPECT_FALSE(options.kmsg);
    EXPECT_FALSE(options.identity.version_mismatch);
    EXPECT_EQ(options.identity.management_ip, (std::array<uint8_t, 4>{127, 0, 0, 1}));
    EXPECT_EQ(options.pidfile, "");
    EXPECT_FALSE(options.help);
}

TEST(parse_options, every_option)
{
    Options options;
    EXPECT_EQ(parse({"--socket", "/run/a", "--capacity", "1", "--first-entry",
                     "18446744073709551615", "--modules=0", "--rate=1000000", "--preload", "7",
                     "--feed", "-", "--no-line-feed", "--kmsg", "--version-mismatch",
                     "--management-ip", "192.0.2.1", "--pidfile=/run/p", "--help"},
                    options),
              "");
    EXPECT_EQ(options.socket, "/run/a");
    EXPECT_EQ(options.capacity, 1U);
    EXPECT_EQ(options.first_entry, 0xFFFFFFFFFFFFFFFF);
    EXPECT_EQ(options.modules, 0U);
    EXPECT_EQ(options.rate, 1'000'000U);
    EXPECT_EQ(options.preload, 7U);
    EXPECT_EQ(options.feed, "-");
    EXPECT_TRUE(options.no_line_feed);
    EXPECT_TRUE(options.kmsg);
    EXPECT_TRUE(options.identity.version_mismatch);
    EXPECT_EQ(options.identity.management_ip, (std::array<uint8_t, 4>{192, 0, 2, 1}));
    EXPECT_EQ(options.pidfile, "/run/p");
    EXPECT_TRUE(options.help);
}

TEST(parse_options, says_what_is_wrong)
{
    expect_error("--bogus", "unknown option --bogus; --help lists the options");
    expect_error("--bogus=1", "unknown option --bogus; --help lists the options");
    expect_error("file", "unknown option file; --help lists the options");
    expect_error("-h", "unknown option -h; --help lists the options");
    expect_error("--kmsg=yes", "--kmsg takes no value");
    expect_error("--version-mismatch=", "--version-mismatch takes no value");
    expect_error("--socket", "--socket needs a value: a path");
    expect_error("--kmsg --rate", "--rate needs a value: a number from 0 to 1000000");
    expect_error("--socket=", "--socket takes a path, not \"\"");
    expect_error("--feed=", "--feed takes a file or -, not \"\"");
    expect_error("--capacity 0", "--capacity takes a number from 1 to 1048576, not \"0\"");
    expect_error("--capacity 1048577",
                 "--capacity takes a number from 1 to 1048576, not \"1048577\"");
    expect_error("--capacity=-1", "--capacity takes a number from 1 to 1048576, not \"-1\"");
    expect_error("--modules 65537", "--modules takes a number from 0 to 65536, not \"65537\"");
    expect_error("--rate 5x", "--rate takes a number from 0 to 1000000, not \"5x\"");
    expect_error("--rate 1000001", "--rate takes a number from 0 to 1000000, not \"1000001\"");
    expect_error("--preload 10000001",
                 "--preload takes a number from 0 to 10000000, not \"10000001\"");
    expect_error("--first-entry 18446744073709551616",
                 "--first-entry takes a number from 0 to 18446744073709551615, not "
                 "\"18446744073709551616\"");
    expect_error("--management-ip 1.2.3",
                 "--management-ip takes an address like 192.0.2.1, not \"1.2.3\"");
}

TEST(parse_options, stops_at_the_first_mistake)
{
    Options options;
    EXPECT_NE(parse({"--capacity", "9", "--bogus", "--rate", "5"}, options), "");
    EXPECT_EQ(options.capacity, 9U);
    EXPECT_EQ(options.rate, 0U);
}
