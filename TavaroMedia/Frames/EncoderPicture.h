#pragma once

#include <memory>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Frames/PictureChanges.h>
#include <TavaroPlatform/Queues/RowBands.h>

namespace tavaro {

/// Writable picture in the form that an encoder takes, lent by a `PictureSink` from its pool and given back
/// with `append`, or dropped.
class EncoderPicture {
public:
    EncoderPicture(EncoderPicture&&) noexcept;
    EncoderPicture& operator=(EncoderPicture&&) noexcept;
    ~EncoderPicture();

    int width() const;
    int height() const;

    /// The same memory, in other hands too. Nobody writes to it until it is in one pair of hands again.
    EncoderPicture shared() const;
    bool isShared() const;

    struct Planes; // the encoder's own form
    explicit EncoderPicture(std::unique_ptr<Planes> planes);
    Planes& planes() { return *planes_; }

private:
    std::unique_ptr<Planes> planes_;
};

/// Order of the four bytes of a pixel. The fourth, alpha or padding, is looked at for GIF only.
enum class PixelOrder { rgba, bgra };

/// Converts `image` to the encoder's colours: BT.709 in limited range, chroma sited left; for GIF, RGB as it is. The
/// image may be larger than the picture by the odd column and row that 4:2:0 has no place for; a smaller one is a
/// mistake of the caller. Never allocates; the rows may be shared over threads.
void fillPicture(EncoderPicture& picture, ImageView image, PixelOrder order = PixelOrder::rgba,
                 RowBands& rows = oneBand);

/// The same for a picture that was filled before, of which only `changes` are to be converted; they are those of the
/// image. Pictures in 4:2:0 only.
void fillPicture(EncoderPicture& picture, ImageView image, PixelOrder order, PictureChanges const& changes);

}
