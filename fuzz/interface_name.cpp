// Names of arbitrary values in buffers of arbitrary size: what stands in the buffer and the result
// are what the plain model says, and nothing is written outside.
//   bytes 0-3: first value, 4-7: last value of the range, 8: buffer size
#include <cstring>
#include <memory>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "tests/ifindex/name_model.h"

using fuzz::require;
using name_model::Form;

namespace
{

constexpr char k_mark = '#';

// What format writes into a block of exactly the size.
template <typename Format>
void check(const name_model::Written &expected, int32_t size, Format format)
{
    const size_t room = size > 0 ? static_cast<size_t>(size) : 0;
    const auto buffer = std::make_unique<char[]>(room);
    memset(buffer.get(), k_mark, room);
    require(format(buffer.get(), size) == expected.result);
    if (!expected.text) {
        require(std::string(buffer.get(), room) == std::string(room, k_mark));
    } else if (room > 0) {
        require(buffer.get() == expected.text->substr(0, room - 1));
    }
}

void check_name(const std::string &name, int32_t (*format)(char *, int32_t, IfIndex), int32_t size,
                IfIndex value)
{
    // The forms without a size take every name to fit.
    require(name.size() < IF_INDEX_NAME_SIZE);
    const name_model::Written expected{static_cast<int32_t>(name.size()), name};
    for (const int32_t room : {size, int32_t{IF_INDEX_NAME_SIZE}}) {
        check(expected, room,
              [&](char *buffer, int32_t whole) { return format(buffer, whole, value); });
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    IfIndex pair[2];
    input.fill(pair);
    const int32_t room = input.byte() % 66 - 1;
    const IfIndex value = pair[0];
    const std::string long_name = name_model::name(value, Form::long_name);
    const std::string short_name = name_model::name(value, Form::short_name);
    check_name(long_name, snprintf_if_index, room, value);
    check_name(long_name, snprintf_if_index_native, room, value);
    check_name(short_name, snprintf_if_index_short, room, value);
    check_name(short_name, snprintf_if_index_short_native, room, value);
    check_name(name_model::internal_name(value), snprintf_if_index_internal, room, value);
    check(name_model::range(pair, room, Form::long_name), room, [&](char *buffer, int32_t whole) {
        return snprintf_if_index_range(buffer, whole, pair);
    });
    check(name_model::range(pair, room, Form::short_name), room, [&](char *buffer, int32_t whole) {
        return snprintf_if_index_range_short(buffer, whole, pair);
    });
    return 0;
}
