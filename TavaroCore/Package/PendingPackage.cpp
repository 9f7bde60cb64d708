#include <TavaroCore/Package/PendingPackage.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/MoveUnlessTaken.h>

#include <fmt/format.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void failCreating(ProjectPackage const& package, std::string const& reason) {
    throw FileError(FileError::Kind::cannotWrite,
                    fmt::format("Could not create the project “{}”: {}.", package.url().string(), reason));
}

HiddenFolder hiddenFolderFor(ProjectPackage const& package) {
    std::error_code code;
    fs::create_directories(FileDescriptor::folderOf(package.url()), code);
    if (code) failCreating(package, systemReason(code.value()));
    try {
        return HiddenFolder(package.url());
    } catch (FileError const& error) {
        failCreating(package, systemReason(error.errorNumber));
    }
}

}

PendingPackage::PendingPackage(ProjectPackage const& wanted)
    : wanted_(wanted)
    , hidden_(hiddenFolderFor(wanted))
    , package_(hidden_.path() / wanted.url().filename()) {
    package_.createDirectories();
    // The log of what was typed and clicked is in many of its files, now and later; so is what was on the screen.
    std::error_code ignored; // disks without permissions
    fs::permissions(package_.url(), fs::perms::owner_all, ignored);
}

void PendingPackage::complete() {
    if (!moveUnlessTaken(package_.url(), wanted_.url()))
        failCreating(wanted_, "something with that name exists already");
    FileDescriptor::syncFolderOf(wanted_.url());
}

FileError PendingPackage::named(FileError const& failure) const {
    std::string sentence = failure.what();
    auto const hidden = package_.url().string();
    if (auto const at = sentence.find(hidden); at != sentence.npos)
        sentence.replace(at, hidden.size(), wanted_.url().string());
    return {failure.kind, sentence, failure.errorNumber};
}

}
