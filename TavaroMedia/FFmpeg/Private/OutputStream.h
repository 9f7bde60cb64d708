#pragma once

#include <filesystem>
#include <memory>

#include <TavaroMedia/FFmpeg/Private/Handles.h>
#include <TavaroMedia/Files/OutputFile.h>

namespace tavaro::ffmpeg {

/// A container being written to an `OutputFile`, with the file's own errors kept: FFmpeg's would only say "I/O error".
class OutputStream {
public:
    /// `format` is a muxer's name: "mp4", "mov".
    OutputStream(std::filesystem::path const& file, OutputFile::Place place, char const* format);
    ~OutputStream();
    OutputStream(OutputStream const&) = delete;
    OutputStream& operator=(OutputStream const&) = delete;

    AVFormatContext& format() { return *format_; }
    std::filesystem::path const& file() const { return output_.file(); }

    /// One more stream; call before `begin`.
    AVStream& addStream();

    /// `options` are the muxer's.
    void begin(Dictionary options);
    /// Takes the packet's contents. Its times are in `timeBase`. A packet of the only stream is written at once; those
    /// of several wait until each stream has one, so that they are written in the order of their times.
    void write(AVPacket& packet, AVRational timeBase, int stream = 0);
    /// Writes the index and puts the file under its name.
    void commit();

    /// Throws the file's own failure if it has one, else `code`'s if it is one.
    void check(int code);

private:
    static int writeBytes(void* self, std::uint8_t* bytes, int count);
    static std::int64_t seekBytes(void* self, std::int64_t offset, int whence);
    struct FreeIO {
        void operator()(AVIOContext* io) const;
    };

    OutputFile output_;
    std::unique_ptr<AVIOContext, FreeIO> io_;
    Output format_;
    int fileError_ = 0; // errno
};

/// Options of a finished movie: the index in front, written by moving the pictures behind it at the end.
Dictionary indexInFront();

}
