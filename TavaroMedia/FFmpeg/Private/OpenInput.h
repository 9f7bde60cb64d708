#pragma once

#include <filesystem>

#include <TavaroMedia/FFmpeg/Private/Handles.h>

namespace tavaro::ffmpeg {

/// Opens a media file and finds its streams. Only plain files of movie and sound containers are opened: no playlists,
/// no network, no devices, no file that another file names. Throws `MediaError` in words about the file.
Input openInput(std::filesystem::path const& file);

/// A stream of moving pictures, not a cover.
bool isPicture(AVStream const& stream);

}
