#pragma once

namespace tavaro {

/// Makes the recorder's types known to QML, in "Tavaro.Studio". Once, before the first page is loaded.
void registerRecorderTypes();

}
