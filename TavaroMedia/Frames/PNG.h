#pragma once

#include <filesystem>
#include <string>

#include <TavaroCore/Files/PendingFile.h>
#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// `quick` takes half the time and for a frame of a film as many bytes; a page of flat areas whose shapes repeat takes
/// up to half as many again.
enum class PNGPacking { small, quick };

/// Writes 8-bit RGBA (RGB where every pixel is opaque), tagged sRGB. The file appears under its name only when it is
/// complete. Throws `MediaError` (`notWritable`, `diskFull`).
void writePNG(std::filesystem::path const& file, ImageView image, PNGPacking packing = PNGPacking::small,
              PendingFile::IfTaken = PendingFile::IfTaken::replace);

/// The bytes of such a file. Throws `MediaError` (`refused`).
std::string encodePNG(ImageView image, PNGPacking packing = PNGPacking::small);

/// Reads any PNG as 8-bit RGBA. Throws `MediaError` (`missing`, `unreadable`).
Image readPNG(std::filesystem::path const& file);

}
