#include <Tavaro/Commands/Checks.h>

#include <Tavaro/Model/Operations/Parameter.h>
#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Package/ProjectPackage.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace tavaro::commands {

std::string notEmpty(std::string const& text) { return text.empty() ? "the name is empty" : ""; }

std::string projectName(std::string const& text) {
    if (text.empty()) return notEmpty(text);
    auto const name = packagePath(text).stem().string();
    bool const isNone = name.empty() || name == "/" || std::ranges::all_of(name, [](char c) { return c == '.'; });
    return isNone || name == ProjectPackage::directoryExtension ? fmt::format("“{}” is no name for a project", text)
                                                                : "";
}

std::string endingOf(std::filesystem::path const& file) {
    auto ending = file.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending;
}

Check secondsFrom(double least, double most) {
    return [range = NumberRange{least, most}](std::string const& text) { return numberProblem(range, text); };
}

void addOverwriting(CLI::App& command, PendingFile::IfTaken& ifTaken) {
    command.add_flag_callback(
        "--overwrite", [&ifTaken] { ifTaken = PendingFile::IfTaken::replace; },
        "replace a file that has the name already; else it is refused");
}

void expectWritable(std::filesystem::path const& file, PendingFile::IfTaken ifTaken) {
    std::error_code ignored;
    bool const isTaken = std::filesystem::exists(std::filesystem::symlink_status(file, ignored));
    if (ifTaken == PendingFile::IfTaken::replace || !isTaken) return;
    throw FileError(
        FileError::Kind::cannotWrite,
        fmt::format("Could not write “{}”: something with that name exists already. --overwrite replaces it.",
                    file.string()));
}

Check readableBy(std::function<void(std::string const&)> read) {
    return [read = std::move(read)](std::string const& text) -> std::string {
        try {
            read(text);
            return "";
        } catch (Error const& failure) {
            return failure.what();
        }
    };
}

}
