#include <TavaroCapture/X11/Private/SharedPicture.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace tavaro::x11 {

SharedPicture::SharedPicture(Connection& connection, std::size_t bytes) : connection_(connection), bytes_(bytes) {
    if (attach()) return;
    void* const memory = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw CaptureError(CaptureError::Kind::unsupported, "There is not enough memory for a picture of the screen.");
    data_ = static_cast<std::uint8_t*>(memory);
}

SharedPicture::~SharedPicture() {
    if (segment_ != XCB_NONE) xcb_shm_detach(connection_.get(), segment_);
    if (data_) munmap(data_, bytes_);
}

/// Hands the server an anonymous file rather than a System V segment: it needs no shared namespace with the server and
/// vanishes with the last process, however that ends.
bool SharedPicture::attach() {
    if (!connection_.extension(xcb_shm_id)) return false;
    auto const version = connection_.ask<xcb_shm_query_version, xcb_shm_query_version_reply>();
    if (!version || version->major_version != 1 || version->minor_version < 2) return false;

    FileDescriptor file(memfd_create("tavaro-picture", MFD_CLOEXEC));
    if (!file.isOpen() || ftruncate(file.get(), static_cast<off_t>(bytes_)) != 0) return false;
    void* const memory = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (memory == MAP_FAILED) return false;
    xcb_shm_seg_t const segment = xcb_generate_id(connection_.get());
    auto const cookie = xcb_shm_attach_fd_checked(connection_.get(), segment, file.release(), false);
    if (auto const error = own(xcb_request_check(connection_.get(), cookie)); error || !connection_.isAlive()) {
        munmap(memory, bytes_);
        return false;
    }
    data_ = static_cast<std::uint8_t*>(memory);
    segment_ = segment;
    return true;
}

bool SharedPicture::fetch(xcb_drawable_t drawable, PixelRect const& rect, std::size_t offset) {
    auto const x = static_cast<std::int16_t>(rect.x);
    auto const y = static_cast<std::int16_t>(rect.y);
    auto const width = static_cast<std::uint16_t>(rect.width);
    auto const height = static_cast<std::uint16_t>(rect.height);
    std::size_t const wanted = std::size_t{4} * width * height;
    if (rect.isEmpty() || offset + wanted > bytes_) return false;
    if (segment_ != XCB_NONE)
        return connection_.ask<xcb_shm_get_image, xcb_shm_get_image_reply>(
                   drawable, x, y, width, height, ~0u, static_cast<std::uint8_t>(XCB_IMAGE_FORMAT_Z_PIXMAP), segment_,
                   static_cast<std::uint32_t>(offset)) != nullptr;
    auto const image = connection_.ask<xcb_get_image, xcb_get_image_reply>(
        static_cast<std::uint8_t>(XCB_IMAGE_FORMAT_Z_PIXMAP), drawable, x, y, width, height, ~0u);
    if (!image || static_cast<std::size_t>(xcb_get_image_data_length(image.get())) < wanted) return false;
    std::memcpy(data_ + offset, xcb_get_image_data(image.get()), wanted);
    return true;
}

}
