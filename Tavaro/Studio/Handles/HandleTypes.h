#pragma once

namespace tavaro {

/// Makes the handles on the film known to QML, in "Tavaro.Editor". Once.
void registerHandleTypes();

}
