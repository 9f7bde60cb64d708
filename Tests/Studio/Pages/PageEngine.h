#pragma once

class QQmlEngine;

namespace tavaro {

/// What every page that a test shows is made by, with the style and the theme, which belongs to one engine: the first
/// that asks makes it, and it outlives every page.
QQmlEngine& pageEngine();

}
