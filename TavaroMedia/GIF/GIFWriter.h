#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include <TavaroMedia/Frames/PictureSink.h>
#include <TavaroMedia/GIF/GIFPalette.h>

namespace tavaro {

/// Writes a GIF that plays for ever, in the colours of one palette. Every picture stores the rectangle that changed,
/// with unchanged pixels inside it left to show through; one that equals the picture before only makes that one last
/// longer. Pixels less than half opaque are transparent.
///
/// A GIF counts hundredths of a second: each picture lasts to the nearest one, and the errors do not add up. Players
/// slow down pictures of less than two hundredths, so more than `fastestRate` make no sense.
///
/// One thread at a time, as for `MovieWriter`. Failures are `MediaError`: `notWritable`, `diskFull`, `refused`.
class GIFWriter : public PictureSink {
public:
    static constexpr int fastestRate = 50; // pictures a second

    GIFWriter(std::filesystem::path const& file, int width, int height, GIFPalette const& palette);

    /// Without `finish` nothing is left under the final name.
    ~GIFWriter() override;

    EncoderPicture picture() override;

    /// Times rise by a hundredth of a second at least; any other is `refused`.
    void append(EncoderPicture picture, double presentationTime) override;

    /// The last picture lasts until `endTime`; then the GIF begins again.
    void finish(double endTime);
    /// The same, but never replaces a file: the GIF gets the name `wanted` or, when that is taken, the first free one
    /// of "Name 2.gif", "Name 3.gif", …, which it returns.
    std::filesystem::path finishUnderUnusedName(std::filesystem::path const& wanted, double endTime);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
