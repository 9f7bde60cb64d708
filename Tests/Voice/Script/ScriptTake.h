#pragma once

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroVoice/Script/AutoDirectorScript.h>

#include <string>
#include <string_view>

namespace tavaro {

/// A film of a take, written down as what is done in it.
class ScriptTake {
public:
    explicit ScriptTake(double seconds, DemoMode mode = DemoMode::desktopApp);

    ScriptTake& click(double t, UnitPoint2 position);
    ScriptTake& drag(double t, double end);
    /// A key a fifth of a second for each character; "\n" is Return, "\t" Tab.
    ScriptTake& type(double t, std::string_view text);
    /// "⌃ ⇧ P"
    ScriptTake& press(double t, std::string_view keys);
    ScriptTake& app(double t, double end, std::string const& name, std::string const& bundleID = "org.example.App");

    /// Lists kept in order.
    DemoProject film() const;

    DemoProject project;
};

/// The kinds and times of the beats: "opening@0 click@3 closing@17.1".
std::string drawn(std::vector<AutoDirectorScript::Beat> const& beats);

}
