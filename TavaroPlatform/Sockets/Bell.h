#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <sys/eventfd.h>

namespace tavaro {

/// Wakes a thread that waits for descriptors: its own is readable from a ring until it is hushed.
class Bell {
public:
    Bell() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

    int descriptor() const { return descriptor_.get(); }
    /// Any thread.
    void ring() const { ::eventfd_write(descriptor_.get(), 1); }
    void hush() const {
        eventfd_t rings = 0;
        ::eventfd_read(descriptor_.get(), &rings);
    }

private:
    FileDescriptor descriptor_;
};

}
