#pragma once

#include <filesystem>

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// Writes 8-bit RGBA (RGB where every pixel is opaque), tagged sRGB. The file appears under its name only when it is
/// complete. Throws `MediaError` (`notWritable`, `diskFull`).
void writePNG(std::filesystem::path const& file, ImageView image);

/// Reads any PNG as 8-bit RGBA. Throws `MediaError` (`missing`, `unreadable`).
Image readPNG(std::filesystem::path const& file);

}
