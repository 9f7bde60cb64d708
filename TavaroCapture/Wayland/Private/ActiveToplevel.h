#pragma once

#include <TavaroCapture/Sources/Private/FrontTeller.h>

#include <memory>

namespace tavaro::wayland {

/// The window that the compositor has given the keyboard, by the wlroots protocol “foreign toplevel management”
/// (zwlr_foreign_toplevel_manager_v1). Of its program it tells the name only.
class ActiveToplevel final : public FrontTeller {
public:
    /// None where the compositor does not tell, or does not answer within a second.
    static std::unique_ptr<ActiveToplevel> open();
    ~ActiveToplevel() override;
    ActiveToplevel(ActiveToplevel const&) = delete;
    ActiveToplevel& operator=(ActiveToplevel const&) = delete;

    int descriptor() const override;
    short awaited() const override;
    int patience() const override { return -1; }
    bool listen() override;
    FrontWindow window() const override;

private:
    struct State;
    explicit ActiveToplevel(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}
