#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tavaro {

/// A text that nobody is to find. It is in a page of its own, which is in no core image, in no child and, where the
/// system allows it, in no swap file; the page is overwritten before it is given back. Who copies the text out of it
/// gives all that up.
class Secret {
public:
    static constexpr std::size_t mostBytes = 1000;

    Secret();
    /// Of at most `mostBytes`; what is longer is cut.
    explicit Secret(std::string_view text);
    Secret(Secret&& other) noexcept;
    Secret& operator=(Secret&& other) noexcept;
    ~Secret();

    std::string_view text() const { return {page_, size_}; }
    /// The same, with a zero at its end.
    char const* c_str() const { return page_; }
    bool isEmpty() const { return size_ == 0; }

    /// False where it is full.
    bool append(char c);
    void removeLast();
    void clear();

    Secret copy() const { return Secret(text()); }

private:
    char* page_ = nullptr;
    std::size_t size_ = 0;
};

/// Overwrites what libraries that read a secret may have left of it: on the stack below the caller, and in the
/// processor's vectors.
void wipeTraces();

/// Takes a variable out of the process's environment, for good: neither children nor who reads /proc sees it from then
/// on. None where it is not set, is empty or longer than a secret. Before other threads are started.
std::optional<Secret> takeFromEnvironment(char const* variable);

}
