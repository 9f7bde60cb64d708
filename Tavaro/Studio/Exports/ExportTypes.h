#pragma once

namespace tavaro {

/// Makes what exports are made of known to QML, in "Tavaro.Exports". Once, before the first page is loaded.
void registerExportTypes();

}
