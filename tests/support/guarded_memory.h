// Memory that ends with a page, with a page behind it that can't be touched: who goes too far dies
// here without any sanitizer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/mman.h>

namespace ruk_test
{

class GuardedMemory
{
public:
    explicit GuardedMemory(size_t room = 4096) : room_((room + k_page - 1) / k_page * k_page)
    {
        void *pages = mmap(nullptr, room_ + k_page, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) {
            abort();
        }
        pages_ = static_cast<uint8_t *>(pages);
        if (mprotect(pages_ + room_, k_page, PROT_NONE) != 0) {
            abort();
        }
    }

    ~GuardedMemory() { munmap(pages_, room_ + k_page); }
    GuardedMemory(const GuardedMemory &) = delete;
    GuardedMemory &operator=(const GuardedMemory &) = delete;

    // The last size bytes.
    uint8_t *last(size_t size) const
    {
        if (size > room_) {
            abort();
        }
        return pages_ + room_ - size;
    }

    // The text, ended at its first zero byte, until the next call.
    const char *put(std::string_view text) const
    {
        text = text.substr(0, text.find('\0'));
        auto *at = reinterpret_cast<char *>(last(text.size() + 1));
        memcpy(at, text.data(), text.size());
        at[text.size()] = '\0';
        return at;
    }

private:
    static constexpr size_t k_page = 4096;

    size_t room_;
    uint8_t *pages_;
};

} // namespace ruk_test
