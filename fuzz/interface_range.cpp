// Ranges of any values: count, lookup and next member answer what the plain model says.
//   bytes 0-3: first, 4-7: last, 8-11: current, 12-15: offset
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "tests/ifindex/range_model.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    uint32_t words[4];
    input.fill(words);
    fuzz::require(range_model::ranges_agree(words[0], words[1], words[2], words[3]));
    // Values of one type are too rare otherwise.
    const IfIndex type = words[0] & 0x7f000000;
    fuzz::require(range_model::ranges_agree(words[0], type | (words[1] & 0x80ffffff),
                                            type | (words[2] & 0x80ffffff), words[3]));
    return 0;
}
