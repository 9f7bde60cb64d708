#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroMedia/Frames/PictureSink.h>

namespace tavaro {

enum class MovieContainer { mp4, mov };
enum class MovieCodec { h264, hevc, proRes422 };

/// The movie's sound, 48 kHz stereo.
enum class MovieSound {
    none,
    aac, // 192 kbit/s
    pcm, // 24 bits a sample, in MOV files
};

/// What the movie is for.
enum class MovieIntent {
    /// A finished film: written beside its final name and renamed by `finish`, its index in front.
    finished,
    /// A take as it happens: the cheapest encoding that keeps text crisp, at constant quality, whatever `bitrate` says.
    /// Written in place in fragments of half a second, so it can be read nearly to its end when its writer dies.
    live,
};

/// Whether the machine's video hardware encodes, or its processors do. Hardware is chosen by trying it on a frame.
enum class EncoderChoice {
    automatic, // hardware that works, else software
    software,
    hardware, // or fail with `unsupported`
};

struct MovieWriterSettings {
    MovieContainer container = MovieContainer::mp4;
    MovieCodec codec = MovieCodec::h264;
    MovieIntent intent = MovieIntent::finished;
    int width = 0; // 4:2:0 has no half chroma sample, so an odd width or height is rounded down
    int height = 0;
    int fps = 60;             // expected source rate; frames may come at any times
    std::int64_t bitrate = 0; // average, bits a second; not for `proRes422`
    int keyFrameInterval = 0; // in frames; 0: two seconds' worth
    int threads = 0;          // of a software encoder; 0: one a core
    EncoderChoice encoder = EncoderChoice::software;
    MovieSound sound = MovieSound::none;
};

/// Encodes pictures into a movie file. H.264 is High profile without reordered frames, HEVC is Main, ProRes is the 422
/// profile; all are tagged BT.709, limited range. One thread at a time; the encoder's own threads run beside it.
/// All failures are `MediaError`: `notWritable`, `diskFull`, `refused`, `unsupported`.
class MovieWriter : public PictureSink {
public:
    MovieWriter(std::filesystem::path const& file, MovieWriterSettings const& settings);
    MovieWriter(MovieWriter&&) noexcept;
    MovieWriter& operator=(MovieWriter&&) noexcept;

    /// Without `finish` nothing is left under the final name, except of a `live` movie, which keeps what it has.
    ~MovieWriter() override;

    /// Size of the pictures, even on both sides.
    int width() const;
    int height() const;

    /// A free picture to fill and append; its pixels are undefined. Memory is taken from a pool that grows with the
    /// pictures lent out. May be called on another thread than the rest; a picture may go to another writer of its
    /// size.
    EncoderPicture picture() override;

    /// `presentationTime` is in seconds from the start of the movie, at least 0 and later than the one before, by a
    /// 1/90000 s at least; any other is `refused`, and the writer goes on as if it had not been offered.
    /// A `live` caller appends at least twice a second (the same picture again, if need be): a fragment is only closed
    /// by a frame after it.
    void append(EncoderPicture picture, double presentationTime) override;

    std::int64_t framesAppended() const;

    /// The movie's next samples; the first sounds at time 0. Pictures and sound are stored side by side, so what comes
    /// ahead of the other waits in memory: append them in step.
    void appendAudio(std::span<StereoSample const> samples);
    std::int64_t samplesAppended() const;

    /// Encodes what is under way, writes the index, and puts the movie under its name, synced to disk. The last frame
    /// lasts until `endTime`, or one frame of `fps`.
    void finish(std::optional<double> endTime = std::nullopt);
    /// The same for a `finished` movie, but never replaces a file: it gets the name `wanted` or, when that is taken,
    /// the first free one of "Name 2.mp4", "Name 3.mp4", …, which it returns.
    std::filesystem::path finishUnderUnusedName(std::filesystem::path const& wanted,
                                                std::optional<double> endTime = std::nullopt);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
