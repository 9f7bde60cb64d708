#include <TavaroCapture/Sources/Chord.h>

namespace tavaro {

std::vector<std::string> Chord::names() const {
    std::vector<std::string> result;
    if (control) result.push_back("⌃");
    if (option) result.push_back("⌥");
    if (shift) result.push_back("⇧");
    if (command) result.push_back("⌘");
    result.push_back(key);
    return result;
}

}
