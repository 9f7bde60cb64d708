#pragma once

#include <TavaroCapture/Sources/Asking.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <cstdint>
#include <memory>
#include <string>

namespace tavaro::wayland {

/// What the user chooses from when asked what to share.
enum class ShareKind : std::uint32_t { monitor = 1, window = 2 };

/// How a shared picture has the pointer: not at all, drawn into it, or told beside it.
enum class PointerMode : std::uint32_t { hidden = 1, embedded = 2, metadata = 4 };

/// What the desktop lets others share.
struct PortalAbilities {
    std::uint32_t version = 0;
    std::uint32_t kinds = 0;        // bits of `ShareKind`
    std::uint32_t pointerModes = 0; // bits of `PointerMode`

    bool has(ShareKind kind) const { return (kinds & static_cast<std::uint32_t>(kind)) != 0; }
    bool has(PointerMode mode) const { return (pointerModes & static_cast<std::uint32_t>(mode)) != 0; }
    /// The one that a film can do most with: where the pointer is told, else as a part of the picture, since nothing
    /// else here tells where it is, and a film without any is hard to follow.
    PointerMode bestPointerMode() const;
};

struct ShareRequest {
    ShareKind kind = ShareKind::monitor;
    PointerMode pointer = PointerMode::metadata;
    std::string token; // of an earlier answer, which then counts again; empty: the user is asked
    Asking asking;
};

/// The user's answer.
struct SharedSource {
    std::uint32_t node = 0;  // of the PipeWire server at the other end of the socket
    std::uint32_t kind = 0;  // bits of `ShareKind`; 0: the desktop does not say
    double logicalWidth = 0; // in the desktop's units; 0: it does not say. Some desktops give pixels.
    std::string token;       // for the next time; good once; empty: none
    FileDescriptor socket;
};

/// The part of a Wayland desktop that asks the user what a program may see of the screen, over the session's bus. What
/// was shared ends with the object. One thread at a time.
class ScreenCastPortal {
public:
    /// Throws `CaptureError` where there is no such desktop: no bus, no portal, or one that shares no screens.
    ScreenCastPortal();
    ~ScreenCastPortal();
    ScreenCastPortal(ScreenCastPortal const&) = delete;
    ScreenCastPortal& operator=(ScreenCastPortal const&) = delete;

    PortalAbilities const& abilities() const;
    /// Once. Waits for the user, two minutes at most. Throws `CaptureError`: `refused` where the answer is no, and
    /// where it is given up.
    SharedSource share(ShareRequest const& request);
    /// Whether the desktop still shares it; lets the bus's news in.
    bool isOpen();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
