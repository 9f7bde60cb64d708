#pragma once

namespace tavaro {

class VoiceError;

namespace commands {

/// The failure with what helps against it at a terminal, where it is that there is no key.
VoiceError withKeyAdvice(VoiceError const& error);

}

}
