#pragma once

#include "TestSession.h"

#include <string>

namespace tavaro {

/// A real program with a window of two fields, of which the second is for a password. It belongs to the desktop that
/// this process belongs to, and goes with the object.
class TestForm {
public:
    /// What of itself it tells others on the bus for that.
    enum class Widgets { untold, told };
    TestForm(TestSession const& session, std::string const& name, Widgets widgets = Widgets::untold);

private:
    TestProcess process_;
};

}
