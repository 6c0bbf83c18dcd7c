// Lists the runs of a bit set:  bit_runs BIT...
//
// It shows how a C++ program owns a set, fills it, prints it as a list, and walks its runs of set
// and of free bits.
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "ruk/bitset.h"

namespace
{

constexpr uint32_t k_bytes = 32; // whole 32-bit words: searches look at nothing else
constexpr int32_t k_bits = k_bytes * 8;

// A set is one block: its size, then its bits.  calloc aligns it as the searches need it, and
// leaves all bits clear.
struct Free {
    void operator()(bitset *set) const { free(set); }
};
using Set = std::unique_ptr<bitset, Free>;

// The library ends the process on a bit that the set does not have, so what comes from outside is
// checked first.
bool set_bit(bitset *set, std::string_view text)
{
    const char *const end = text.data() + text.size();
    int32_t bit = 0;
    const auto [rest, error] = std::from_chars(text.data(), end, bit);
    if (error != std::errc() || rest != end || bit < 0 || bit >= k_bits) {
        return false;
    }
    bitset_set_bit(set, bit);
    return true;
}

// Prints the list in pieces of whole items that fit a small buffer.  The longest item here is
// "254-255", so every piece but the last holds something.
void print_list(const bitset *set)
{
    char piece[16];
    int32_t done = 0;
    for (int32_t restart = 1; done == 0; restart = 0) {
        const int32_t length = bitset_snprintf(piece, sizeof piece, set, restart, &done);
        printf("%s%s", restart == 0 && length > 0 ? "," : "", piece);
    }
    printf("\n");
}

// {1, 0} starts an enumeration; every call then fills in the run that follows.
void print_runs(const char *title, const bitset *set, decltype(bitset_next_range) next)
{
    printf("%s:", title);
    for (bitset_range run{.lower = 1, .upper = 0}; next(set, &run) == 0;) {
        printf(" [%d,%d]", run.lower, run.upper);
    }
    printf("\n");
}

} // namespace

int main(int argc, char **argv)
{
    const Set set(static_cast<bitset *>(calloc(1, sizeof(bitset) + k_bytes)));
    if (!set) {
        perror("bit_runs");
        return EXIT_FAILURE;
    }
    set->size = k_bytes;
    for (int i = 1; i < argc; ++i) {
        if (!set_bit(set.get(), argv[i])) {
            fprintf(stderr, "bit_runs: \"%s\" is no bit below %d\n", argv[i], k_bits);
            return EXIT_FAILURE;
        }
    }
    print_list(set.get());
    print_runs("set", set.get(), bitset_next_range);
    print_runs("free", set.get(), bitset_next_free_range);
    return EXIT_SUCCESS;
}
