#include <TavaroVoice/Web/Private/WebFailure.h>

namespace tavaro {

WebFailure::~WebFailure() = default;

}
