#include <TavaroCapture/PipeWire/Private/GraphicsMemory.h>

#include <cerrno>
#include <linux/dma-buf.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tavaro::pipewire {

namespace {

/// False where the device could not be waited for. Memory that needs no waiting does not know the order.
bool synchronize(int descriptor, std::uint64_t flags) {
    dma_buf_sync order{.flags = flags};
    int result = 0;
    do result = ::ioctl(descriptor, DMA_BUF_IOCTL_SYNC, &order);
    while (result != 0 && (errno == EINTR || errno == EAGAIN));
    return result == 0 || errno == ENOTTY;
}

}

std::unique_ptr<GraphicsMemory> GraphicsMemory::map(int descriptor, std::size_t offset) {
    auto const end = ::lseek(descriptor, 0, SEEK_END);
    if (end < 0) return nullptr;
    auto const size = static_cast<std::size_t>(end);
    if (offset >= size) {
        errno = EINVAL;
        return nullptr;
    }
    void* const pages = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (pages == MAP_FAILED) return nullptr;
    return std::unique_ptr<GraphicsMemory>(new GraphicsMemory(descriptor, pages, size, offset));
}

GraphicsMemory::GraphicsMemory(int descriptor, void* pages, std::size_t size, std::size_t offset)
    : descriptor_(descriptor)
    , pages_(pages)
    , size_(size)
    , offset_(offset) {}

GraphicsMemory::~GraphicsMemory() { ::munmap(pages_, size_); }

std::span<std::uint8_t const> GraphicsMemory::bytes() const {
    return std::span(static_cast<std::uint8_t const*>(pages_), size_).subspan(offset_);
}

GraphicsMemory::Reading::Reading(GraphicsMemory const& memory)
    : descriptor_(memory.descriptor_)
    , isWhole_(synchronize(descriptor_, DMA_BUF_SYNC_START | DMA_BUF_SYNC_READ)) {}

GraphicsMemory::Reading::~Reading() { synchronize(descriptor_, DMA_BUF_SYNC_END | DMA_BUF_SYNC_READ); }

}
