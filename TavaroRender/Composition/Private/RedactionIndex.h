#pragma once

#include <string_view>
#include <vector>

#include <TavaroRender/Composition/Private/SpanIndex.h>

namespace tavaro {

struct ActiveRedaction;
struct RedactionTrack;

/// What is to be hidden in a recording at a time. A region hides what it hid a moment before as well: the frame on show
/// may be a little older than the time asked for, and nothing may look out at the edge of a region that moves.
class RedactionIndex {
public:
    /// `tracks` must stay where they are.
    explicit RedactionIndex(std::vector<RedactionTrack> const& tracks);

    /// At that many seconds of the asset.
    std::vector<ActiveRedaction> active(std::string_view asset, double seconds) const;

private:
    std::vector<RedactionTrack> const& tracks_;
    SpanIndex index_;
};

}
