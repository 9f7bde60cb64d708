#include "TestForm.h"

namespace tavaro {

TestForm::TestForm(TestSession const& session, std::string const& name, Widgets widgets)
    : process_({"env", "GDK_BACKEND=wayland", widgets == Widgets::told ? "NO_AT_BRIDGE=0" : "NO_AT_BRIDGE=1",
                "/usr/bin/python3", TAVARO_TESTS "/Capture/form.py", name, "The window of " + name},
               session.folder() / (name + ".log")) {}

}
