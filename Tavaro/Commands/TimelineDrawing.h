#pragma once

#include <string>

namespace tavaro {

struct DemoProject;

namespace commands {

/// The edit as lanes of characters over a ruler, `columns` wide: clips, zooms, overlays, captions, silences, sound,
/// camera scenes, clicks and keys. A lane without items is left out; an item shorter than a column still shows. Each
/// line ends with a line break; nothing for an edit without length.
///
///              0:00                0:10                0:20
///     clips    ██████████▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓██████████
///     zooms        ━━━━━━    ━━━━
///     silences                 ░░░░
std::string timelineDrawing(DemoProject const& project, int columns);

}

}
