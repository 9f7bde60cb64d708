#include <Tavaro/Studio/Recorder/Sentence.h>

namespace tavaro {

QString sentenceOf(std::exception_ptr const& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (std::exception const& error) {
        return QString::fromUtf8(error.what());
    }
}

}
