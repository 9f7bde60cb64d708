#include <Tavaro/Model/Application/ApplicationInstance.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <cerrno>

namespace tavaro {

std::filesystem::path ApplicationInstance::usualFile() {
    return folders::applicationSupport() / "Tavaro/application.lock";
}

std::optional<ApplicationInstance> ApplicationInstance::claim(std::filesystem::path const& file) {
    std::error_code code;
    std::filesystem::create_directories(file.parent_path(), code);
    if (code) throw FileError::writing(file, code.value());
    auto descriptor = FileDescriptor::open(file, FileDescriptor::Opening::lockFile);
    if (!descriptor.isOpen()) throw FileError::writing(file, errno);
    if (descriptor.tryLock(FileDescriptor::Sharing::exclusive)) return ApplicationInstance(std::move(descriptor));
    if (errno != EWOULDBLOCK) throw FileError::writing(file, errno);
    return std::nullopt;
}

}
