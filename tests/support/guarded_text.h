// A text whose terminator is the last byte of a page, with a page that can't be read behind it: a
// parser that reads ahead dies here without any sanitizer.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/mman.h>

namespace ruk_test
{

class GuardedText
{
public:
    static constexpr size_t k_page = 4096;

    GuardedText()
    {
        void *pages =
            mmap(nullptr, 2 * k_page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) {
            abort();
        }
        pages_ = static_cast<char *>(pages);
        if (mprotect(pages_ + k_page, k_page, PROT_NONE) != 0) {
            abort();
        }
    }

    ~GuardedText() { munmap(pages_, 2 * k_page); }
    GuardedText(const GuardedText &) = delete;
    GuardedText &operator=(const GuardedText &) = delete;

    // The text, ended at its first zero byte, until the next call.  It may have 4,095 characters.
    const char *put(std::string_view text)
    {
        text = text.substr(0, text.find('\0'));
        if (text.size() >= k_page) {
            abort();
        }
        char *at = pages_ + k_page - 1 - text.size();
        memcpy(at, text.data(), text.size());
        at[text.size()] = '\0';
        return at;
    }

private:
    char *pages_;
};

} // namespace ruk_test
