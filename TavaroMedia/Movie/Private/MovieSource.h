#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include <TavaroMedia/FFmpeg/Private/Handles.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroMedia/Movie/Private/FrameClock.h>

namespace tavaro {

/// An opened movie file and its stream of pictures, as packets. Only plain files of movie containers are opened: no
/// playlists, no network, no devices, no file that another file names.
class MovieSource {
public:
    /// Throws `MediaError` as `MovieReader` does.
    explicit MovieSource(std::filesystem::path const& file);

    std::filesystem::path const& file() const { return file_; }
    AVFormatContext& format() { return *input_; }
    /// Good until the next `rewind`.
    AVStream& stream() { return *stream_; }
    AVStream const& stream() const { return *stream_; }

    /// The next packet of the pictures; false at the end of what can be read. Packets that are damaged or lie beyond
    /// the end of the file are left out.
    bool read(AVPacket& packet);

    /// Goes to the last key frame at or before `ticks` of the stream's clock; false where the container cannot.
    bool seek(std::int64_t ticks);

    /// Opens the file anew, for containers that cannot go back.
    void rewind();

    bool hasOnlyPictures() const { return input_->nb_streams == 1; }

    /// Whether the container told the place of every frame when it was opened.
    bool hasWholeIndex() const;

    /// Decoding time of the key frame that `seek` would go to; none where that is not known.
    std::optional<std::int64_t> keyFrameBefore(std::int64_t ticks) const;

    double seconds(std::int64_t ticks) const;
    std::int64_t ticks(double seconds) const;

    /// When some frames at the movie's beginning and at its end are shown. Opens the file once more, and reads of it
    /// what there is from the last key frame on; all of it where the container has no list of those.
    FrameTimes frameTimes() const;

    /// The rate that the container claims.
    std::optional<AVRational> toldRate() const;

    /// All of the movie that does not need a decoder. Reads the file through only where no header tells its duration.
    MovieInfo describe(std::int64_t firstFrameTicks) const;

private:
    void open();
    void describeFromIndex(MovieInfo& info, std::int64_t firstFrameTicks) const;
    std::int64_t scannedEnd() const;
    bool seekEnd();

    std::filesystem::path file_;
    ffmpeg::Input input_;
    AVStream* stream_ = nullptr;
};

}
