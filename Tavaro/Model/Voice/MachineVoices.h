#pragma once

#include <Tavaro/Model/Voice/VoiceoverJob.h>

namespace tavaro {

/// All voices of this machine and its user. The main thread asks for it, as it reads the preferences; the keychain is
/// asked only where a voice of the service may speak.
VoiceService machineVoices();

}
