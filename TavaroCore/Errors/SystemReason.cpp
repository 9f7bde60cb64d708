#include <TavaroCore/Errors/SystemReason.h>

#include <cerrno>
#include <system_error>

namespace tavaro {

std::string systemReason(int errorNumber) {
    switch (errorNumber) {
    case ENOENT: return "there is no such file or folder";
    case EEXIST: return "something with that name exists already";
    case ENOTDIR: return "a part of its path is not a folder";
    case EISDIR: return "it is a folder";
    case EACCES:
    case EPERM: return "permission denied";
    case EROFS: return "the disk is read-only";
    case ENOSPC: return "the disk is full";
    case EDQUOT: return "the disk quota is used up";
    case EFBIG: return "the file would be larger than this disk or user may write";
    case EIO: return "the disk reports a fault";
    case ENOMEM: return "it needs more memory than there is";
    case ENAMETOOLONG: return "the name is too long";
    default: return std::system_category().message(errorNumber);
    }
}

}
