#pragma once

#include <memory>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroPlatform/Queues/RowBands.h>

namespace tavaro {

class ScreenTexture;
struct BlitUniforms;
struct CameraUniforms;
struct CompositeUniforms;
struct CubeLUT;
struct CursorUniforms;
struct RegionUniforms;

enum class CompositorBackend {
    reference, // the formulas, pixel by pixel, in plain arithmetic: what correct means, and slow
    cpu,       // the same picture within 1/255, as fast as the machine's vector units allow
};

/// Draws frames on 8-bit RGBA canvases of straight alpha. Keeps what does not change from frame to frame (still
/// background, shadow, device frame), so a renderer owns one for as long as it draws one project.
/// One thread at a time; several compositors are independent.
class Compositor {
public:
    /// `rows` shares the rows of every pass and must outlive the compositor.
    explicit Compositor(CompositorBackend backend = CompositorBackend::cpu, RowBands& rows = oneBand);
    Compositor(Compositor&&) noexcept;
    Compositor& operator=(Compositor&&) noexcept;
    ~Compositor();

    CompositorBackend backend() const;

    /// Background, drop shadow, device frame, recording and loupe; overwrites the whole canvas. `background` is the
    /// picture of background mode 6 and may be empty. The layers kept between frames know it by its address and size:
    /// after other pixels were put in the same place, call `forgetBackground`.
    void composite(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background,
                   MutableImageView canvas);

    /// Click effect and pointer, drawn over the canvas.
    void cursorOverlay(CursorUniforms const& uniforms, MutableImageView canvas);

    /// The camera's picture in its box, or the person that the matte cuts out of it. The matte is the red channel of
    /// `matte`, stretched over the camera's picture whatever its own size; without one the whole box is shown. `lut`
    /// may be null. Both count only when the uniforms ask for them.
    void cameraOverlay(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut,
                       MutableImageView canvas);

    /// A bitmap of premultiplied alpha, stretched to its rectangle.
    void blitLayer(BlitUniforms const& uniforms, ImageView layer, MutableImageView canvas);

    /// The source with one region changed. Both pictures have one size. `target` may be the source itself, and then
    /// only what changes is touched: several effects need one copy.
    void regionEffect(RegionUniforms const& uniforms, ImageView source, MutableImageView target);

    void forgetBackground();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
