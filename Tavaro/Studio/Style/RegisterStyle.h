#pragma once

namespace tavaro {

class Theme;

/// Lets QML see the theme, which outlives it, as `Theme` of "Tavaro.Theme", and gives QtQuick.Controls the controls of
/// this style. Before the first QML is loaded.
void registerStyle(Theme& theme);

}
