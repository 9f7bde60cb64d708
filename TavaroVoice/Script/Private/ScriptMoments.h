#pragma once

#include <TavaroVoice/Script/AutoDirectorScript.h>

#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// Something that is done in a film, which may have a line: all of one click or of several close ones, of a stretch of
/// typing with the click before it, of one drag after the other.
struct ScriptMoment {
    AutoDirectorScript::Beat::Kind kind = AutoDirectorScript::Beat::Kind::click;
    double start = 0; // output seconds
    double end = 0;
    std::optional<UnitPoint2> position = {}; // of a click, on the picture as the film shows it
    std::vector<std::string> keys = {};      // of a shortcut
    std::string app = {};                    // in front, where that is known
    int keyCount = 0;                        // of typing
    bool hasTab = false;                     // it goes from field to field
    bool endsInEnter = false;
    bool isReturn = false; // of a switch to an application that was in front before
};

/// What the edit shows of what was recorded, ascending in start. Outside of what the crop keeps no click is seen.
std::vector<ScriptMoment> scriptMoments(DemoProject const& project);

/// The name of the application that the film shows longest, as far as it is one that somebody demonstrates: neither
/// part of the desktop, nor Tavaro, nor the browser or terminal in which something else is shown.
std::optional<std::string> demonstratedApp(DemoProject const& project);

/// The text on one line, without what cannot be said; empty when that is longer than any name.
std::string spokenName(std::string_view text);

}
