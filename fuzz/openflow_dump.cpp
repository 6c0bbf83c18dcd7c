// OpenFlow dump: any bytes may be a features reply, a port, a word with a label or counters.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/target.h"
#include "ruk/openflow.h"

namespace
{

// Blocks of the exact size, so that a sanitizer sees any access outside.
std::unique_ptr<uint8_t[]> copy(const uint8_t *data, size_t size)
{
    auto block = std::make_unique<uint8_t[]>(size);
    memcpy(block.get(), data, size);
    return block;
}

// A message that says it is longer than the input is made to say the truth; a shorter one ends
// where it says, but not before its header does.
void dump_features(const uint8_t *data, size_t size)
{
    if (size < 8) {
        return;
    }
    const size_t claimed = static_cast<size_t>(data[2]) << 8 | data[3];
    const size_t length = std::min(claimed, size);
    const auto message = copy(data, std::max<size_t>(length, 8));
    message[2] = static_cast<uint8_t>(length >> 8);
    message[3] = static_cast<uint8_t>(length);
    brel_dump_feat_reply(message.get());
}

void dump_words(const uint8_t *data, size_t size)
{
    uint32_t word = 0;
    if (size < sizeof word) {
        return;
    }
    memcpy(&word, data, sizeof word);
    const std::string label(data + sizeof word, data + size);
    brel_dump_phy_port_features(word, label.c_str());
    brel_dump_ofp_actions(word);
    brel_dump_ofp_cap(word);
}

void dump_records(const uint8_t *data, size_t size)
{
    if (size >= 48) {
        brel_dump_phy_port(copy(data, 48).get());
    }
    brel_ofp_stats stats;
    if (size >= sizeof stats) {
        memcpy(&stats, data, sizeof stats);
        brel_ofp_dump_stats(&stats);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static FILE *const nowhere = freopen("/dev/null", "w", stdout);
    if (nowhere == nullptr) {
        return -1;
    }
    dump_features(data, size);
    dump_words(data, size);
    dump_records(data, size);
    return 0;
}
