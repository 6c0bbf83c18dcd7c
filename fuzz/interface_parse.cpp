// Interface names from anywhere: the parser answers what the plain model answers and reads no
// further than the terminator.  The first byte is the kind of a second call, which skips the name
// and takes its numbers from the input; the second one may set the device context.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "ruk/if_index_name.h"
#include "tests/ifindex/name_parse_model.h"

using fuzz::require;

namespace
{

constexpr IfIndex k_untouched = 0xdeadbeef;

void check_name(const std::string &text)
{
    // Of the exact length, so that a sanitizer sees a read too far.
    const auto exact = std::make_unique<char[]>(text.size() + 1);
    memcpy(exact.get(), text.c_str(), text.size() + 1);
    IfIndex expected = k_untouched;
    const int32_t result = name_model::parse(text, &expected);
    IfIndex value = k_untouched;
    require(ulx_interface_name_to_ifindex(exact.get(), &value) == result && value == expected);
}

void check_build(int32_t kind, fuzz::Input input)
{
    std::vector<int32_t> numbers(
        std::min<size_t>(input.size() / sizeof(int32_t), IF_INDEX_NAME_COORDINATES));
    for (int32_t &number : numbers) {
        input.fill(number);
    }
    IfIndex expected = k_untouched;
    const int32_t result = name_model::build(kind, numbers, &expected);
    IfIndex value = k_untouched;
    require(ulx_interface_coordinates_to_ifindex(
                kind, numbers.data(), static_cast<int32_t>(numbers.size()), &value) == result);
    require(value == expected);
}

void set_context(uint8_t context)
{
    if (context < 128) {
        unsetenv("SYSMGR_VDC_ID");
    } else {
        setenv("SYSMGR_VDC_ID", std::to_string((context - 128) * 5).c_str(), 1);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const int32_t kind = input.byte();
    set_context(input.byte());
    check_build(kind, input);
    check_name(input.text_until('\0'));
    return 0;
}
