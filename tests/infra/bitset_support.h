// What the tests of the bit sets share: records of exactly the allocated size at a chosen
// alignment, and the variants of the loops.
#pragma once

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <vector>

#include "infra/utils/ktlibbmp_kernels.h"
#include "ruk/bitset.h"

namespace ruk_test
{

// A record of size bytes of bits in a heap block that ends with it, so that the sanitizer sees
// every byte read or written beyond.  misalign moves the record off its 4-byte boundary.
class set_of
{
public:
    explicit set_of(uint32_t size, std::initializer_list<int> bits = {}, size_t misalign = 0)
        : block_(static_cast<uint8_t *>(malloc(misalign + 4 + size))), misalign_(misalign),
          size_(size)
    {
        memcpy(block_.get() + misalign_, &size, sizeof size);
        memset(data(), 0, size);
        for (const int bit : bits) {
            data()[bit / 8] = static_cast<uint8_t>(data()[bit / 8] | 0x80 >> bit % 8);
        }
    }

    // The record holds these bytes.
    set_of(const std::vector<uint8_t> &bytes, size_t misalign)
        : set_of(static_cast<uint32_t>(bytes.size()), {}, misalign)
    {
        assign(bytes);
    }

    void assign(const std::vector<uint8_t> &bytes)
    {
        if (!bytes.empty()) {
            memcpy(data(), bytes.data(), bytes.size());
        }
    }

    bitset *get() { return reinterpret_cast<bitset *>(block_.get() + misalign_); }
    operator bitset *() { return get(); }
    operator const bitset *() const
    {
        return reinterpret_cast<const bitset *>(block_.get() + misalign_);
    }
    uint8_t *data() { return block_.get() + misalign_ + 4; }
    std::vector<uint8_t> bytes() { return {data(), data() + size_}; }

private:
    struct release {
        void operator()(uint8_t *block) const { free(block); }
    };
    std::unique_ptr<uint8_t, release> block_;
    size_t misalign_;
    uint32_t size_;
};

// Runs check once with each variant of the loops that this processor can run.
template <class Check> void with_each_variant(const Check &check)
{
    for (const ktlibbmp::kernels *variant : ktlibbmp::all_kernels()) {
        if (!variant->runs_here()) {
            continue;
        }
        SCOPED_TRACE(variant->name);
        ktlibbmp::force_kernels(variant);
        check();
    }
    ktlibbmp::force_kernels(nullptr);
}

} // namespace ruk_test
