#pragma once

class QQmlEngine;

namespace tavaro {

class Library;

/// Lets QML see the library, which outlives it, as `Library` of "Tavaro.Library", and gives it the stills.
void registerLibrary(QQmlEngine& engine, Library& library);

}
