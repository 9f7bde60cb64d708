#pragma once

#include <TavaroCapture/X11/Connection.h>

#include <cstddef>
#include <cstdint>
#include <xcb/shm.h>

namespace tavaro::x11 {

/// Memory for BGRX pixels that the server writes into directly; where it cannot (another machine's display), pictures
/// come through the connection. Rows are packed: four bytes a pixel and no gap.
class SharedPicture {
public:
    SharedPicture(Connection& connection, std::size_t bytes);
    ~SharedPicture();
    SharedPicture(SharedPicture const&) = delete;
    SharedPicture& operator=(SharedPicture const&) = delete;

    std::uint8_t* data() { return data_; }
    std::uint8_t const* data() const { return data_; }
    std::size_t bytes() const { return bytes_; }

    /// Reads a rectangle of the drawable, packed, to `offset`. False when the server refuses: the rectangle leaves the
    /// drawable, or the drawable is gone.
    bool fetch(xcb_drawable_t drawable, PixelRect const& rect, std::size_t offset);

private:
    bool attach();

    Connection& connection_;
    std::size_t bytes_;
    std::uint8_t* data_ = nullptr;
    xcb_shm_seg_t segment_ = XCB_NONE; // none: not shared
};

}
