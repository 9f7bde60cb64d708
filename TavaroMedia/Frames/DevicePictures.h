#pragma once

#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Frames/VideoFrame.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <variant>
#include <vector>

namespace tavaro {

/// How a device lays out the pixels of a picture.
enum class DeviceLayout {
    yuyv,   // 4:2:2, Y Cb Y Cr
    uyvy,   // 4:2:2, Cb Y Cr Y
    nv12,   // 4:2:0, a plane of Y and one of Cb Cr
    yuv420, // 4:2:0, planes of Y, Cb and Cr
    bgrx,
    rgbx,
    jpeg, // each picture a file of its own
};

enum class DeviceMatrix { bt601, bt709 };
enum class DeviceRange { limited, full };

/// What a device says of its pictures. A JPEG says the colours itself.
struct DeviceFormat {
    DeviceLayout layout = DeviceLayout::yuyv;
    int width = 0;
    int height = 0;
    std::ptrdiff_t stride = 0; // bytes a row of the first plane; 0: no more than its pixels need
    DeviceMatrix matrix = DeviceMatrix::bt601;
    DeviceRange range = DeviceRange::limited;
    bool operator==(DeviceFormat const&) const = default;
};

struct PackedPixels {
    ImageView view;
    PixelOrder order = PixelOrder::rgba;
};

/// Interleaved luma and chroma in 4:2:2.
struct Packed422 {
    std::uint8_t const* bytes = nullptr;
    DeviceFormat format; // `yuyv` or `uyvy`
};

/// A device's picture as it is nearest to what the device gave: its pixels, or its luma and chroma in 8-bit 4:2:2 or
/// 4:2:0.
using DevicePicture = std::variant<PackedPixels, Packed422, VideoFrame>;

/// Converts it to the encoder's colours, as `fillPicture` does pixels; luma and chroma never become pixels on the way.
void fillPicture(EncoderPicture& picture, DevicePicture const& from);

/// Pixels of devices' pictures, for who wants to look at them. Keeps its memory; one thread at a time.
class DevicePixels {
public:
    /// Good as long as the picture, and until the next call.
    PackedPixels of(DevicePicture const& picture);

private:
    FrameConverter converter_;
    Image image_;
    std::vector<std::uint8_t> planes_; // of what comes in 4:2:2
};

/// Reads the pictures that a camera or another device hands over. Takes 4:2:2 as 4:2:0, as films are. Keeps its memory,
/// so one of these serves one device, on one thread at a time. A JPEG of 720p takes two to five milliseconds, anything
/// else less than one.
class DevicePictures {
public:
    explicit DevicePictures(DeviceFormat const& format);
    ~DevicePictures();
    DevicePictures(DevicePictures const&) = delete;
    DevicePictures& operator=(DevicePictures const&) = delete;

    DeviceFormat const& format() const;
    /// Good as long as the bytes, and until the next call. None where they hold no whole picture of the format: too few
    /// of them, a JPEG of another size or one that is damaged anywhere. `stride` is this picture's; 0: the format's.
    std::optional<DevicePicture> read(std::span<std::uint8_t const> bytes, std::ptrdiff_t stride = 0);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
