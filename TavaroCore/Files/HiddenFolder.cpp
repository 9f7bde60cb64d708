#include <TavaroCore/Files/HiddenFolder.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/Private/HiddenNeighbour.h>

#include <cerrno>
#include <sys/stat.h>

namespace tavaro {

HiddenFolder::HiddenFolder(std::filesystem::path const& beside) {
    constexpr mode_t ownerOnly = 0700; // what is built in it gets its own permissions at the end at the earliest
    hidden::removeAbandoned(beside);
    do {
        auto const path = hidden::neighbour(beside);
        if (::mkdir(path.c_str(), ownerOnly) == 0) {
            path_ = path;
            descriptor_ = FileDescriptor::open(path, FileDescriptor::Opening::folder);
        } else if (errno != EEXIST) {
            throw FileError::writing(beside, errno);
        }
    } while (path_.empty() || !hidden::hold(descriptor_, path_));
}

HiddenFolder::~HiddenFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}
