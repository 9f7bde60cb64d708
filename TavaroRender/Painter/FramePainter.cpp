#include <TavaroRender/Painter/FramePainter.h>

#include <algorithm>
#include <cassert>
#include <new>
#include <optional>
#include <variant>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Layers/Private/LayerError.h>
#include <TavaroRender/Painter/PaintError.h>
#include <TavaroRender/Painter/Private/FrameSources.h>
#include <TavaroRender/Painter/Private/PaintChecks.h>
#include <TavaroRender/Renderer/Private/CameraTable.h>

namespace tavaro {

struct FramePainter::State {
    State(ProjectPackage const& package, Size2 canvas, RendererOptions const& options)
        : canvas(canvas)
        , failure(options.failure)
        , sources(package)
        , renderer(package, options) {}

    Size2 canvas;
    EffectFailure const failure;
    FrameSources sources;
    Renderer renderer;
    std::optional<FrameComposer> shown;
    std::int64_t revision = 0;
    ZoomUse zooms = ZoomUse::zoomed;

    FrameComposer const& composer() const {
        assert(shown);
        return *shown;
    }
    std::optional<Size2> cameraSize(DemoProject const& project);
    void compose(DemoProject const& project);
    void prepare();
    template<class Work> auto inPaintTerms(Work const& work);
    [[noreturn]] void rethrow(MediaError const& error) const;
    [[noreturn]] void rethrow(CameraTableError const& error) const;
};

/// Of the camera's movie, where a frame depends on it. What cannot be opened fails where its pictures are asked for.
std::optional<Size2> FramePainter::State::cameraSize(DemoProject const& project) {
    return project.usesCamera() && project.camera.tracksFace ? sources.size(*project.cameraAsset) : std::nullopt;
}

void FramePainter::State::compose(DemoProject const& project) {
    auto const camera = cameraSize(project);
    shown = shown ? shown->revised(project, canvas, camera) : FrameComposer(project, canvas, camera);
}

void FramePainter::State::rethrow(MediaError const& error) const {
    auto const* image = std::get_if<BackgroundStyle::ImageFile>(&composer().project().background.content);
    if (!image) throw PaintError::unreadable(error.detail());
    if (error.kind() == MediaError::Kind::missing) throw PaintError::missingAsset(image->assetName);
    throw PaintError::effect("The background picture '" + image->assetName + "' cannot be used: " + error.detail() +
                             ".");
}

void FramePainter::State::rethrow(CameraTableError const& error) const {
    if (error.kind() == CameraTableError::Kind::missing)
        throw PaintError::missingAsset(composer().project().camera.lutAsset.value_or(""));
    throw PaintError::effect(error.what());
}

template<class Work> auto FramePainter::State::inPaintTerms(Work const& work) {
    try {
        return work();
    } catch (MediaError const& error) {
        rethrow(error);
    } catch (CameraTableError const& error) {
        rethrow(error);
    } catch (LayerError const& error) {
        throw PaintError::effect(error.what());
    } catch (std::bad_alloc const&) {
        throw PaintError::noMemory();
    }
}

void FramePainter::State::prepare() {
    inPaintTerms([&] {
        renderer.prepare(composer().project(), static_cast<int>(canvas.width), static_cast<int>(canvas.height));
    });
}

FramePainter::FramePainter(ProjectPackage const& package, Size2 canvas, RendererOptions const& options)
    : state_(std::make_unique<State>(package, canvas, options)) {}
FramePainter::FramePainter(FramePainter&&) noexcept = default;
FramePainter& FramePainter::operator=(FramePainter&&) noexcept = default;
FramePainter::~FramePainter() = default;

void FramePainter::show(DemoProject const& project) {
    state_->compose(project);
    state_->renderer.beginRevision(++state_->revision);
    state_->sources.retry();
}

void FramePainter::resize(Size2 canvas) {
    if (state_->canvas == canvas) return;
    state_->canvas = canvas;
    if (state_->shown) state_->compose(project());
}

DemoProject const& FramePainter::project() const { return state_->composer().project(); }

Size2 FramePainter::canvas() const { return state_->canvas; }

double FramePainter::duration() const { return state_->composer().duration(); }

std::int64_t FramePainter::revision() const { return state_->revision; }

void FramePainter::keepEarlier(std::size_t bytes) { state_->sources.keepEarlier(bytes); }

void FramePainter::open() {
    state_->sources.open(project());
    state_->prepare();
}

void FramePainter::expectFrames() const {
    requireDrawable(state_->canvas);
    requireSource(project(), duration());
}

ImageView FramePainter::frame(double at) {
    expectFrames();
    if (state_->failure == EffectFailure::stop) state_->prepare(); // also what this frame does not show
    return draw(at, pictures(at));
}

Image FramePainter::still(double at) {
    auto const canvas = frame(at);
    return state_->inPaintTerms([&] {
        Image still(canvas.width, canvas.height);
        for (int y = 0; y < canvas.height; ++y) std::copy_n(canvas.row(y), 4 * std::size_t(canvas.width), still.row(y));
        return still;
    });
}

FramePictures FramePainter::pictures(double at) {
    return state_->inPaintTerms([&] { return state_->sources.pictures(state_->composer(), at); });
}

ImageView FramePainter::draw(double at, FramePictures const& pictures) {
    auto const& composer = state_->composer();
    return state_->inPaintTerms(
        [&] { return state_->renderer.render(composer.state(at, state_->zooms), composer.project(), pictures); });
}

void FramePainter::useZooms(ZoomUse zooms) { state_->zooms = zooms; }

FramePlaces FramePainter::places(double at) {
    auto const& composer = state_->composer();
    return state_->inPaintTerms([&] {
        auto places = state_->renderer.places(composer.state(at, state_->zooms), composer.project());
        places.zooms = composer.zoomWindows(at);
        return places;
    });
}

std::vector<DroppedEffect> FramePainter::dropped() const { return state_->renderer.dropped(); }

RowBands& FramePainter::rows() { return state_->renderer.rows(); }

std::int64_t FramePainter::framesDrawn() const { return state_->renderer.framesDrawn(); }

}
