#pragma once

#include <TavaroCore/Errors/Error.h>

#include <filesystem>

namespace tavaro {

class FileError : public Error {
public:
    enum class Kind { cannotRead, notPlain, cannotWrite, diskFull, tooLarge };
    FileError(Kind kind, std::string const& sentence, int errorNumber = 0)
        : Error(sentence)
        , kind(kind)
        , errorNumber(errorNumber) {}

    /// "Could not read “…”: …", "Could not write “…”: …", of an error number of the operating system.
    static FileError reading(std::filesystem::path const& file, int errorNumber);
    static FileError writing(std::filesystem::path const& file, int errorNumber);

    Kind const kind;
    int const errorNumber; // for who puts it into words of his own; 0 where the system had no part in it
};

}
