#pragma once

#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCore/Records/FunctionRef.h>

#include <optional>
#include <vector>

namespace tavaro {

/// A screen's pictures as the encoder takes them. Each one that was lent is written again once the encoder has done
/// with it, and then only what changed since; while nothing changes, the last one is lent again. One thread.
class ScreenPictures {
public:
    ScreenPictures(int width, int height);

    /// After each grab: what is new.
    void note(ScreenSource const& screen, ScreenSource::Outcome outcome);
    /// The picture now. `fresh` gives one that was never filled, where the encoder still has all others.
    EncoderPicture current(ImageView pixels, FunctionRef<EncoderPicture()> fresh);

private:
    struct Kept {
        EncoderPicture picture;
        PictureChanges stale; // what of it is older than the screen
    };

    std::size_t writable(FunctionRef<EncoderPicture()> fresh);

    PictureChanges all_;
    std::vector<Kept> kept_;
    std::optional<std::size_t> newest_;
};

}
