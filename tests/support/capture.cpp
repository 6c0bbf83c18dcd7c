// Standard output into memory and back.
#include "tests/support/capture.h"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace ruk_test
{

std::string captured_stdout(const std::function<void()> &action)
{
    fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    const int file = memfd_create("captured", 0);
    if (saved < 0 || file < 0 || dup2(file, STDOUT_FILENO) < 0) {
        perror("captured_stdout");
        abort();
    }
    action();
    fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);

    std::string text;
    char piece[4096];
    lseek(file, 0, SEEK_SET);
    for (ssize_t got; (got = read(file, piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<size_t>(got));
    }
    close(file);
    return text;
}

} // namespace ruk_test
