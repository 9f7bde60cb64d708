#pragma once

namespace tavaro {

/// Makes `Timeline` known to QML, in `Tavaro.Studio 1.0`, and its items to the accessibility tree. Once, before any is
/// made.
void registerTimelineTypes();

}
