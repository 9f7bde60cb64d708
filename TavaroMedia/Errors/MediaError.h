#pragma once

#include <string>

#include <TavaroCore/Errors/Error.h>

namespace tavaro {

/// A movie, sound or picture file that could not be read or written.
class MediaError : public Error {
public:
    enum class Kind {
        missing,         // no such file
        unreadable,      // the file is there, but nothing can be made of it
        noVideoTrack,    // a media file without moving pictures
        noAudioTrack,    // a media file without sound
        emptyAudioTrack, // a track of sound without a sample
        notWritable,     // the folder or file may not be written
        diskFull,        // no room for another byte
        refused,         // the encoder or the container does not take what it was given
        unsupported,     // a codec, container or pixel format that this build has no code for
    };

    /// `sentence` is the whole message; `detail` is the bare reason, for callers that put their own words before it.
    MediaError(Kind kind, std::string const& sentence, std::string detail);
    MediaError(MediaError const&) = default;
    MediaError& operator=(MediaError const&) = default;
    ~MediaError() override;

    Kind kind() const { return kind_; }

    /// The reason alone, without a full stop: "the disk is full".
    std::string const& detail() const { return detail_; }

private:
    Kind kind_;
    std::string detail_;
};

}
