#pragma once

#include <cstdint>
#include <vector>

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// What is drawn over the recording, in order; each may cover what came before.
enum class CanvasStage { camera, pointer, layers };

/// Pixels of the canvas; may reach past it.
struct CanvasBounds {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

/// The canvas as it was beneath each thing drawn over the recording. While the recording's picture stays the same,
/// what changed above it is drawn anew over these pixels, instead of the whole frame.
class CanvasHistory {
public:
    /// The canvas is drawn from the ground up.
    void clear();

    /// Before something is drawn there: keeps what it will cover. Stages are kept in order.
    void keep(CanvasStage stage, CanvasBounds const& rect, ImageView canvas);

    /// Something is drawn that may touch all of the canvas: nothing beneath it can be brought back.
    void lose(CanvasStage stage);

    /// Puts back what was beneath that stage and all later ones, and forgets it. False where it is lost.
    bool returnTo(CanvasStage stage, MutableImageView canvas);

private:
    struct Patch {
        CanvasStage stage = CanvasStage::camera;
        bool isLost = false;
        int left = 0;
        int top = 0;
        int width = 0;
        int height = 0;
        std::vector<std::uint8_t> pixels; // kept for its memory when the patch is forgotten
    };
    Patch& add(CanvasStage stage);

    std::vector<Patch> patches_; // in drawing order; the first `count_` count
    std::size_t count_ = 0;
};

}
