#pragma once

#include <string>
#include <utility>

#include <TavaroCore/Errors/Error.h>

namespace tavaro {

class PaintError;

class ExportError : public Error {
public:
    enum class Kind {
        readerFailed,
        writerFailed,
        missingAsset,
        noVideoTrack,
        audioFailed,
        effectFailed,
        cancelled,
        gifFailed,
        alreadyExporting
    };

    /// `detail` is the reason alone, without a full stop.
    static ExportError readerFailed(std::string const& detail);
    static ExportError writerFailed(std::string const& detail);
    static ExportError missingAsset(std::string const& name);
    static ExportError noVideoTrack();
    /// Sound that cannot be read; the whole sentence.
    static ExportError audioFailed(std::string const& sentence);
    /// Something that frames ask for and that cannot be used; the whole sentence.
    static ExportError effectFailed(std::string const& sentence);
    static ExportError cancelled();
    /// `detail` is the reason alone, without a full stop.
    static ExportError gifFailed(std::string const& detail);
    static ExportError alreadyExporting();

    /// What a frame that could not be drawn means for the export that it belongs to.
    static ExportError of(PaintError const& error);

    Kind kind() const { return kind_; }

    /// Of a reader and a writer that failed, the reason alone.
    std::string const& detail() const { return detail_; }

private:
    ExportError(Kind kind, std::string const& sentence, std::string detail = {})
        : Error(sentence)
        , kind_(kind)
        , detail_(std::move(detail)) {}

    Kind kind_;
    std::string detail_;
};

}
