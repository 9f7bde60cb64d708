#pragma once

class QQmlApplicationEngine;

namespace tavaro {

class Studio;
class Theme;

/// Lets QML see everything of the program, and loads its window. False where it cannot be loaded, which Qt logs.
bool showWindow(QQmlApplicationEngine& engine, Studio& studio, Theme& theme);

}
