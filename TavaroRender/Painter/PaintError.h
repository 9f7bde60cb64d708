#pragma once

#include <string>

#include <TavaroCore/Errors/Error.h>

namespace tavaro {

/// Why a frame could not be drawn.
class PaintError : public Error {
public:
    enum class Kind {
        missingAsset,   // a file that the project names is not in its package
        unreadable,     // it is there, but nothing can be made of it
        noVideoTrack,   // a media file without moving pictures
        nothingToShow,  // a project without a moment that could be drawn
        undrawableSize, // no canvas is that small or that large
        noMemory,       // for frames of this size
        effect,         // one that cannot be used, where such stop: a colour table, a background picture, a text
    };

    static PaintError missingAsset(std::string const& name);
    /// `detail` is the reason alone, without a full stop.
    static PaintError unreadable(std::string const& detail);
    static PaintError noVideoTrack();
    static PaintError nothingToShow(std::string const& detail);
    static PaintError undrawableSize(std::string const& detail);
    static PaintError noMemory();
    /// The whole sentence.
    static PaintError effect(std::string const& sentence);

    Kind kind() const { return kind_; }

    /// The reason alone; of a missing asset its name, of an effect the whole sentence.
    std::string const& detail() const { return detail_; }

private:
    PaintError(Kind kind, std::string const& sentence, std::string detail)
        : Error(sentence)
        , kind_(kind)
        , detail_(std::move(detail)) {}

    Kind kind_;
    std::string detail_;
};

}
