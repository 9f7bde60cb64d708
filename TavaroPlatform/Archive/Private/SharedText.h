#pragma once

#include <TavaroPlatform/Archive/Private/PackageContents.h>

#include <TavaroCore/Files/FileBytes.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tavaro {

/// Whether the file is a text that could be a document or a log: it is called so, which a damaged one still is, or
/// begins like one.
bool couldBeLog(PackageItem const& file);

/// A text of a package without what was typed.
class SharedText {
public:
    explicit SharedText(std::filesystem::path const& file);

    std::string_view bytes() const { return masked_ ? *masked_ : original_.bytes(); }
    /// Why typed text could be left in it, as the end of a sentence; none when there is none.
    std::optional<std::string> const& problem() const { return problem_; }

private:
    FileBytes original_;
    std::optional<std::string> masked_;
    std::optional<std::string> problem_;
};

}
