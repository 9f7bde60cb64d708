#include <TavaroPlatform/Keychain/Secret.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t pageBytes = 4096;
static_assert(Secret::mostBytes < pageBytes);

char* newPage() {
    auto* const page = ::mmap(nullptr, pageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) throw std::bad_alloc();
    // What the system refuses of these is not worth failing for.
    ::madvise(page, pageBytes, MADV_DONTDUMP);
    ::madvise(page, pageBytes, MADV_WIPEONFORK);
    ::mlock(page, pageBytes);
    return static_cast<char*>(page);
}

/// What was copied or compared last stays in the processor's vectors, from where it comes to the stack again and again,
/// as whenever a function is first called. Copies of nothing, of each length that is copied in its own way, take its
/// place.
void wipeVectors() {
    static void* (*const volatile copy)(void*, void const*, std::size_t) = std::memcpy;
    std::array<char, 2048> const nothing{};
    std::array<char, 2048> to;
    for (std::size_t length = 16; length <= to.size(); length *= 2) copy(to.data(), nothing.data(), length - 1);
}

}

Secret::Secret() : page_(newPage()) {}

Secret::Secret(std::string_view text) : Secret() {
    size_ = std::min(text.size(), mostBytes);
    std::copy_n(text.data(), size_, page_);
}

Secret::Secret(Secret&& other) noexcept
    : page_(std::exchange(other.page_, nullptr))
    , size_(std::exchange(other.size_, 0)) {}

Secret& Secret::operator=(Secret&& other) noexcept {
    std::swap(page_, other.page_);
    std::swap(size_, other.size_);
    return *this;
}

Secret::~Secret() {
    if (!page_) return;
    clear();
    ::munmap(page_, pageBytes);
}

bool Secret::append(char c) {
    if (size_ == mostBytes) return false;
    page_[size_++] = c;
    return true;
}

void Secret::removeLast() {
    if (size_ > 0) page_[--size_] = 0;
}

void Secret::clear() {
    ::explicit_bzero(page_, pageBytes);
    size_ = 0;
}

[[gnu::noinline]] void wipeTraces() {
    wipeVectors();
    std::array<char, 128 << 10> below;
    ::explicit_bzero(below.data(), below.size());
}

std::optional<Secret> takeFromEnvironment(char const* variable) {
    auto* const value = std::getenv(variable);
    if (!value) return std::nullopt;
    auto const length = std::strlen(value);
    std::optional<Secret> secret;
    if (length > 0 && length <= Secret::mostBytes) secret.emplace(std::string_view(value, length));
    // The system shows a process's first environment as it is in memory, whatever was unset of it.
    ::explicit_bzero(value, length);
    ::unsetenv(variable);
    return secret;
}

}
