#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace tavaro {

/// A regular expression as ICU has them, which searches UTF-8 and gives up on what takes it too long. One thread at a
/// time.
class Expression {
public:
    struct Match {
        std::size_t start = 0; // bytes
        std::size_t length = 0;
        std::size_t wholeStart = 0; // of the whole match, where only a group is asked for
        std::size_t end() const { return start + length; }
    };

    explicit Expression(std::string_view pattern);
    ~Expression();

    bool isValid() const;

    /// Steps from here on, over several texts, after which it gives up.
    void allow(int steps);

    /// Calls `visit` for every match, from left to right. False when it gave up.
    bool forEachMatch(std::string_view text, int group, std::function<void(Match const&)> const& visit);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
