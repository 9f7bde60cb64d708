#pragma once

#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroVision/Scanning/Private/ScreenText.h>

#include <cstddef>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

/// Something private in one of the lines.
struct PrivateText {
    std::size_t line = 0;
    SensitiveKind kind = SensitiveKind::custom;
    std::string label;
    std::string value;
    int left = 0; // pixels beside the line's corner
    int right = 0;
};

/// Finds what is private on a screen. Lines of a column are read together, so that a value below its label and all of
/// one that wraps are found, and so is a value beside its label in another column. Spaces that were read where there is
/// no room for one hide nothing, nor do letters that a reader confuses.
class ScreenClassifier {
public:
    explicit ScreenClassifier(RedactionSettings const& settings) : classifier_(settings), kinds_(settings.kinds) {}

    /// By their lines and from left to right; none lies over another.
    std::vector<PrivateText> privateTexts(std::span<PlacedLine const> lines);
    std::vector<std::string> const& warnings() const { return classifier_.warnings(); }

private:
    SensitiveTextClassifier classifier_;
    std::set<SensitiveKind> kinds_;
};

}
