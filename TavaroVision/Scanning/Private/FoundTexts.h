#pragma once

#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroVision/Tracking/Private/ColumnSearch.h>
#include <TavaroVision/Tracking/Private/TextPatch.h>

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tavaro {

class ChangedTiles;

/// A text that was found to be private: how it looks, and what is known of it.
struct FoundText {
    std::shared_ptr<TextPatch const> patch;
    SensitiveKind kind = SensitiveKind::custom;
    std::string label;
    std::string masked;
    std::string textHash;
};

/// What was found on the screen, the latest first, to know it again when it comes back, before anything is read.
class FoundTexts {
public:
    /// Its left edge is at x.
    void keep(FoundText const& text, int x);
    /// Calls `look` where any of them may be seen on what changed with the picture.
    void find(GrayView const& picture, ChangedTiles const& tiles,
              std::function<void(FoundText const&, int x, int y)> const& look) const;

private:
    struct Known {
        FoundText text;
        ColumnSearch search;
        std::vector<int> lefts; // where it was, the latest first
    };
    std::deque<Known> known_;
};

}
