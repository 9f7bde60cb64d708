#pragma once

namespace tavaro {

/// Makes the recorder's types known to QML, in "Tavaro.Recorder". Once, before the first page is loaded.
void registerRecorderTypes();

}
