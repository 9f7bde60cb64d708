#pragma once

#include <TavaroCapture/Accessibility/BusConnection.h>
#include <TavaroCapture/Sources/Private/FrontTeller.h>

#include <memory>

namespace tavaro::atspi {

/// Which window has the keyboard, by what programs say of their windows. Of one whose program says nothing nobody
/// knows: then none is in front.
class ActiveWindow final : public FrontTeller {
public:
    /// Windows of the process `desktop` are the desktop's own, and no application's.
    ActiveWindow(Bus bus, int desktop);
    ~ActiveWindow() override;
    ActiveWindow(ActiveWindow const&) = delete;
    ActiveWindow& operator=(ActiveWindow const&) = delete;

    int descriptor() const override;
    short awaited() const override;
    int patience() const override;
    bool listen() override;
    FrontWindow window() const override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
