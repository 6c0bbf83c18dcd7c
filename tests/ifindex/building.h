// Checks a constructor against rows of arguments: the value it builds, or its refusal, which leaves
// the output alone.
#ifndef TESTS_IFINDEX_BUILDING_H
#define TESTS_IFINDEX_BUILDING_H

#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "ruk/if_index_types.h"

namespace building
{

template <typename... Arguments> std::string show(const std::tuple<Arguments...> &arguments)
{
    std::string text;
    std::apply([&](auto... argument) { ((text += std::to_string(argument) + ' '), ...); },
               arguments);
    return text;
}

template <typename... Arguments>
uint32_t call(uint32_t (*init)(IfIndex *, Arguments...), IfIndex *out,
              const std::tuple<Arguments...> &arguments)
{
    return std::apply([&](auto... argument) { return init(out, argument...); }, arguments);
}

// Rows of arguments and the value built of them.
template <typename... Arguments>
void builds(
    uint32_t (*init)(IfIndex *, Arguments...),
    const std::vector<std::pair<std::type_identity_t<std::tuple<Arguments...>>, IfIndex>> &rows)
{
    for (const auto &[arguments, value] : rows) {
        SCOPED_TRACE("arguments " + show(arguments));
        IfIndex built = ~value;
        EXPECT_EQ(call(init, &built, arguments), 0U);
        EXPECT_EQ(built, value) << std::hex << built << " for " << value;
        EXPECT_EQ(call(init, nullptr, arguments), 14U);
    }
}

// Rows of arguments that are refused.
template <typename... Arguments>
void refuses(uint32_t (*init)(IfIndex *, Arguments...),
             const std::vector<std::type_identity_t<std::tuple<Arguments...>>> &rows)
{
    for (const auto &arguments : rows) {
        SCOPED_TRACE("arguments " + show(arguments));
        IfIndex untouched = 0xdeadbeef;
        EXPECT_EQ(call(init, &untouched, arguments), 14U);
        EXPECT_EQ(untouched, 0xdeadbeef);
    }
}

} // namespace building

#endif // TESTS_IFINDEX_BUILDING_H
