// Lists the runs of a bit set:  bit_runs BIT|FIRST-LAST...
//
// It shows how a C++ program owns a set, fills it, walks its runs of set and of free bits, and
// prints it as a list.
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

Set make_set()
{
    Set set(static_cast<bitset *>(calloc(1, sizeof(bitset) + k_bytes)));
    if (set) {
        set->size = k_bytes;
    }
    return set;
}

// Sets "5" or "3-9".  False when the text is neither, or reaches beyond the set: the library ends
// the process on such bits, so what comes from outside is checked first.
bool set_bits(bitset *set, std::string_view text)
{
    const char *const end = text.data() + text.size();
    int32_t first = 0;
    std::from_chars_result read = std::from_chars(text.data(), end, first);
    int32_t last = first;
    if (read.ec == std::errc() && read.ptr != end && *read.ptr == '-') {
        read = std::from_chars(read.ptr + 1, end, last);
    }
    if (read.ec != std::errc() || read.ptr != end || first < 0 || last < first || last >= k_bits) {
        return false;
    }
    bitset_set_range(set, first, last - first + 1);
    return true;
}

// {1, 0} starts an enumeration; every call then fills in the run that follows.
void print_runs(const char *title, const bitset *set,
                int32_t (*next)(const bitset *, bitset_range *))
{
    printf("%s:", title);
    for (bitset_range run{.lower = 1, .upper = 0}; next(set, &run) == 0;) {
        printf(" [%d,%d]", run.lower, run.upper);
    }
    printf("\n");
}

// The list in pieces that fit a small buffer.  A piece of length 0 that is not the last would be an
// item longer than the buffer; "254-255" is the longest here.
void print_list(const bitset *set)
{
    char piece[16];
    int32_t done = 0;
    for (int32_t restart = 1; done == 0; restart = 0) {
        bitset_snprintf(piece, sizeof piece, set, restart, &done);
        printf("%s%s", restart == 1 || piece[0] == '\0' ? "" : ",", piece);
    }
    printf("\n");
}

} // namespace

int main(int argc, char **argv)
{
    const Set set = make_set();
    if (!set) {
        perror("bit_runs");
        return EXIT_FAILURE;
    }
    for (int i = 1; i < argc; ++i) {
        if (!set_bits(set.get(), argv[i])) {
            fprintf(stderr, "bit_runs: \"%s\" is no bit or run below %d\n", argv[i], k_bits);
            return EXIT_FAILURE;
        }
    }
    print_list(set.get());
    print_runs("set", set.get(), bitset_next_range);
    print_runs("free", set.get(), bitset_next_free_range);
    return EXIT_SUCCESS;
}
