#include <Tavaro/Model/Project/MovedProject.h>

#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/HiddenFolder.h>
#include <TavaroCore/Files/MoveUnlessTaken.h>

#include <cerrno>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

bool copyUnlessTaken(fs::path const& from, fs::path const& to) {
    HiddenFolder const building(to);
    auto const copy = building.path() / to.filename();
    std::error_code code;
    fs::copy(from, copy, fs::copy_options::recursive | fs::copy_options::copy_symlinks, code);
    if (code) throw FileError::writing(to, code.value());
    if (!moveUnlessTaken(copy, to)) return false;
    fs::remove_all(from, code); // what cannot be removed is a project still
    return true;
}

bool movedUnlessTaken(fs::path const& from, fs::path const& to) {
    try {
        return moveUnlessTaken(from, to);
    } catch (FileError const& failure) {
        if (failure.errorNumber != EXDEV) throw;
        return copyUnlessTaken(from, to);
    }
}

}

void moveProject(fs::path const& from, fs::path const& to) {
    expectPlaceFor(to);
    std::error_code ignored;
    fs::create_directories(fs::absolute(to).parent_path(), ignored);
    {
        auto const lock = lockForEditing(from);
        if (!movedUnlessTaken(from, to)) expectPlaceFor(to); // taken meanwhile
    }
    OpenProject(to).commit("Rename", [&](DemoProject& project) { project.name = to.stem().string(); });
}

}
