// Runs a fuzz target over the files of a folder: its corpus as an ordinary test.
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

#include "fuzz/target.h"

namespace
{

std::string current; // the input that runs

// A target that finds something aborts: says on which input, and lets it.
void tell(int)
{
    static_cast<void>(!write(STDERR_FILENO, current.data(), current.size()));
}

} // namespace

int main(int argc, char **argv)
{
    signal(SIGABRT, tell);
    size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::directory_iterator folder(argv[i]);
        // In the same order in every run.
        const std::set<std::filesystem::path> paths(begin(folder), end(folder));
        for (const std::filesystem::path &path : paths) {
            current = path.string() + "\n";
            std::ifstream file(path, std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
            const std::vector<uint8_t> input(bytes.begin(), bytes.end());
            LLVMFuzzerTestOneInput(input.data(), input.size());
            ++count;
        }
    }
    fprintf(stderr, "%zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
