#pragma once

namespace tavaro {

/// Makes what an editor is made of known to QML, in "Tavaro.Editor". Once, before the first page is loaded.
void registerDeskTypes();

}
