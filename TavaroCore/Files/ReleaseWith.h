#pragma once

namespace tavaro {

/// Deletes what a C library made by the library's own function:
/// `std::unique_ptr<archive, ReleaseWith<archive_read_free>>`.
template<auto release> struct ReleaseWith {
    void operator()(auto* handle) const { release(handle); }
};

}
