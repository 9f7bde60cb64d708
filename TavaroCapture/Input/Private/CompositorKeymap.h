#pragma once

#include <memory>
#include <optional>
#include <string>

namespace tavaro::input {

/// The layout of a Wayland desktop's keyboard, as it tells every program. Which of several layouts of one keymap is in
/// use it tells only the program in front. One thread.
class CompositorKeymap {
public:
    /// None where no desktop answers within a second, or it has no keyboard.
    static std::unique_ptr<CompositorKeymap> open();
    ~CompositorKeymap();
    CompositorKeymap(CompositorKeymap const&) = delete;
    CompositorKeymap& operator=(CompositorKeymap const&) = delete;

    /// To wait for news by `poll`.
    int descriptor() const;
    /// Takes in what the desktop has said since, without waiting; false once it is gone.
    bool listen();
    /// The newest keymap, as text; none when that was asked for before.
    std::optional<std::string> take();

private:
    struct State;
    explicit CompositorKeymap(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}
