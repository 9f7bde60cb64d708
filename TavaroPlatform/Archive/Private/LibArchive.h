#pragma once

#include <TavaroCore/Files/ReleaseWith.h>

#include <archive.h>
#include <archive_entry.h>

#include <clocale>
#include <memory>
#include <string>

/// The handles of libarchive; for sources of this folder only.
namespace tavaro {

using ArchiveWriter = std::unique_ptr<archive, ReleaseWith<archive_write_free>>;
using ArchiveReader = std::unique_ptr<archive, ReleaseWith<archive_read_free>>;
using ArchiveEntry = std::unique_ptr<archive_entry, ReleaseWith<archive_entry_free>>;

/// While it lives, this thread's names are UTF-8 for the library, whatever the user's locale is.
class UTF8Names {
public:
    UTF8Names() : names_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)), before_(names_ ? uselocale(names_) : nullptr) {}
    ~UTF8Names() {
        if (!names_) return;
        uselocale(before_);
        freelocale(names_);
    }
    UTF8Names(UTF8Names const&) = delete;
    UTF8Names& operator=(UTF8Names const&) = delete;

private:
    locale_t names_;
    locale_t before_;
};

/// What the library says went wrong, without white space around it.
inline std::string problemOf(archive* handle) {
    char const* const text = archive_error_string(handle);
    std::string problem = text ? text : "";
    auto const isSpace = [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; };
    while (!problem.empty() && isSpace(problem.back())) problem.pop_back();
    while (!problem.empty() && isSpace(problem.front())) problem.erase(problem.begin());
    return problem.empty() ? "the archive library failed" : problem;
}

}
