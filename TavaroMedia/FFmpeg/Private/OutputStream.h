#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>

#include <TavaroCore/Files/PendingFile.h>
#include <TavaroMedia/FFmpeg/Private/Handles.h>

namespace tavaro::ffmpeg {

/// Whether a container appears under its name when it is complete (`PendingFile`), or grows there, where a reader can
/// follow and a killed writer leaves what it wrote. What was recorded is for its owner alone to read, wherever it is
/// moved later.
enum class Place { beside, besideForOwner, growingForOwner };

/// A container being written, with the file's own errors kept: FFmpeg's would only say "I/O error".
class OutputStream {
public:
    /// `format` is a muxer's name: "mp4", "mov".
    OutputStream(std::filesystem::path file, Place place, char const* format);
    ~OutputStream();
    OutputStream(OutputStream const&) = delete;
    OutputStream& operator=(OutputStream const&) = delete;

    AVFormatContext& format() { return *format_; }
    std::filesystem::path const& file() const { return file_; }

    /// One more stream; call before `begin`.
    AVStream& addStream();

    /// `options` are the muxer's.
    void begin(Dictionary options);
    /// Takes the packet's contents. Its times are in `timeBase`. A packet of the only stream is written at once; those
    /// of several wait until each stream has one, so that they are written in the order of their times.
    void write(AVPacket& packet, AVRational timeBase, int stream = 0);
    /// Writes the index, brings the file to the disk and puts it under its name.
    void commit();
    /// The same for one that was begun `beside`, but under `wanted` or, when that is taken, the next free name of its
    /// kind, which it returns.
    std::filesystem::path commitUnderUnusedName(std::filesystem::path const& wanted);

    /// Throws the file's own failure if it has one, else `code`'s if it is one.
    void check(int code);

private:
    static int writeBytes(void* self, std::uint8_t* bytes, int count);
    static std::int64_t seekBytes(void* self, std::int64_t offset, int whence);
    struct FreeIO {
        void operator()(AVIOContext* io) const;
    };

    void open(Place place);
    void complete();
    int writeToFile(std::span<std::byte const> bytes);
    std::filesystem::path const& writtenPath() const { return pending_ ? pending_->path() : file_; }
    FileDescriptor const& descriptor() const { return pending_ ? pending_->descriptor() : grown_; }

    std::filesystem::path file_;
    std::optional<PendingFile> pending_;
    FileDescriptor grown_; // in place
    std::unique_ptr<AVIOContext, FreeIO> io_;
    Output format_;
    int fileError_ = 0; // errno
};

/// Options of a finished movie: the index in front, written by moving the pictures behind it at the end.
Dictionary indexInFront();

}
