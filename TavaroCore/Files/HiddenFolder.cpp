#include <TavaroCore/Files/HiddenFolder.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/Private/HiddenNeighbour.h>

#include <cerrno>
#include <sys/stat.h>

namespace tavaro {

HiddenFolder::HiddenFolder(std::filesystem::path const& beside) {
    hidden::removeAbandoned(beside);
    do {
        auto const path = hidden::neighbour(beside);
        if (::mkdir(path.c_str(), 0777) == 0) {
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
