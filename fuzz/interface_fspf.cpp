// FSPF numbers of any interface, and interfaces of any number: both are what the plain model says.
//   bytes 0-3: the value, 4-7: the word, as it is in memory
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "tests/ifindex/range_model.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    IfIndex value = 0;
    uint32_t word = 0;
    input.fill(value);
    input.fill(word);
    fuzz::require(range_model::fspf_agrees(value, word));
    return 0;
}
