#pragma once

#include <memory>
#include <string>

namespace tavaro {

/// A Wayland desktop with a keyboard and nothing else, which `$WAYLAND_DISPLAY` names for as long as it lives.
class TestCompositor {
public:
    /// By the layout's name: "de".
    explicit TestCompositor(std::string const& layout);
    static TestCompositor withKeymap(std::string const& keymap);
    TestCompositor(TestCompositor&& other) noexcept;
    ~TestCompositor();

    /// Once it returns, every client has been told.
    void use(std::string const& layout);
    void end();

private:
    struct State;
    explicit TestCompositor(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}
