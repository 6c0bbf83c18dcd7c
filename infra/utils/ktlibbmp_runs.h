// All runs of set bits, many at a time.
#pragma once

#include "infra/utils/ktlibbmp.h"
#include "infra/utils/ktlibbmp_kernels.h"

namespace ktlibbmp
{

// Yields what bitset_next_range yields one by one, but that the last run ends with the whole words.
// It looks for edges, the bits that differ from the one before: a run begins with every other edge
// and ends before the next one.
class run_reader
{
public:
    // Begins with a bit, which may be within a run.
    run_reader(std::span<const uint8_t> words, size_t from) : words_(words), byte_(from / 32 * 4)
    {
        if (byte_ < words.size()) {
            read_one_word(0, from % 32);
        }
    }

    // The edges of the next runs, two for each; none when there are no more runs.  They stay until
    // the next call.
    std::span<const uint32_t> read()
    {
        // The edge of a run that was not known to end.
        if (count_ > taken_) {
            edges_[0] = edges_[taken_];
        }
        count_ -= taken_;
        while (count_ < 2 && byte_ < words_.size()) {
            read_words();
        }
        if (byte_ >= words_.size() && is_within_run()) {
            edges_[count_++] = static_cast<uint32_t>(words_.size() * 8);
        }
        taken_ = count_ - count_ % 2;
        return {edges_, taken_};
    }

private:
    static constexpr size_t k_word = sizeof(uint64_t);
    // So many that a leap costs little, so few that little is read in vain for a short text.
    static constexpr size_t k_words_at_once = 64;

    // Whether the bit before byte_ is set.
    bool is_within_run() const { return count_ % 2 != 0; }

    void read_words()
    {
        const size_t whole = (words_.size() - byte_) / k_word;
        if (whole == 0) {
            read_one_word(words_[byte_ - 1], 0);
            return;
        }
        const size_t words = whole < k_words_at_once ? whole : k_words_at_once;
        const size_t found = find_edges(&words_[byte_], words);
        byte_ += words * k_word;
        if (found == 0) {
            leap();
        }
    }

    // Leaves a long stretch of equal bits to the search.
    void leap()
    {
        const auto find = is_within_run() ? active_kernels().find_clear : active_kernels().find_set;
        const int32_t bit = find(words_.data(), words_.size(), byte_ * 8);
        byte_ = bit < 0 ? words_.size() : static_cast<size_t>(bit) / 32 * 4;
    }

    // Reads the next 8 bytes, or the last 4, as if other bytes were around them: before, and one
    // whose first bits are clear.
    void read_one_word(uint8_t before, size_t clear)
    {
        uint8_t bytes[2 * k_word] = {};
        const size_t left = words_.size() - byte_;
        bytes[k_word - 1] = before;
        memcpy(bytes + k_word, &words_[byte_], left < k_word ? left : k_word);
        memset(bytes + k_word, 0x00, clear / 8);
        uint8_t &first = bytes[k_word + clear / 8];
        first = static_cast<uint8_t>(first & 0xff >> clear % 8);
        find_edges(bytes + k_word, 1);
        byte_ += left < k_word ? left : k_word;
    }

    size_t find_edges(const uint8_t *p, size_t words)
    {
        const size_t found = active_kernels().find_edges(p, words, static_cast<uint32_t>(byte_ * 8),
                                                         edges_ + count_);
        count_ += found;
        return found;
    }

    std::span<const uint8_t> words_;
    size_t byte_; // where the words that were not read yet begin
    size_t count_ = 0;
    size_t taken_ = 0; // edges that the last call gave
    uint32_t edges_[(k_words_at_once + 1) * 64 + kernels::k_edges_beyond];
};

} // namespace ktlibbmp
