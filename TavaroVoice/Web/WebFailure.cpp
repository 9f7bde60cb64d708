#include <TavaroVoice/Web/WebFailure.h>

namespace tavaro {

WebFailure::~WebFailure() = default;

}
