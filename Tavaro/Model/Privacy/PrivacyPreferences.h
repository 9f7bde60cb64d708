#pragma once

#include <TavaroPlatform/Preferences/Preferences.h>

namespace tavaro {

/// Whether every new take is looked at for private text, once it is saved and polished.
inline Preference<bool> const newTakesScanned{"com.tavaro.privacy.scanNewTakes", false};

}
