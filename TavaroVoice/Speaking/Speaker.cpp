#include <TavaroVoice/Speaking/Speaker.h>

namespace tavaro {

Speaker::~Speaker() = default;

}
