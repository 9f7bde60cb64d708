#include <TavaroRender/Renderer/Renderer.h>

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroPlatform/Queues/RowPool.h>
#include <TavaroRender/Composition/Private/FrameState.h>
#include <TavaroRender/Kernels/BlitUniforms.h>
#include <TavaroRender/Layers/Private/LayerError.h>
#include <TavaroRender/Layers/Private/LayerRasterizer.h>
#include <TavaroRender/Layers/Private/LayerSpec.h>
#include <TavaroRender/Places/Private/FindPlaces.h>
#include <TavaroRender/Renderer/Private/BackgroundImages.h>
#include <TavaroRender/Renderer/Private/CameraTable.h>
#include <TavaroRender/Renderer/Private/CanvasHistory.h>
#include <TavaroRender/Renderer/Private/DroppedEffects.h>
#include <TavaroRender/Renderer/Private/FrameUniforms.h>
#include <TavaroRender/Renderer/Private/MoviePicture.h>
#include <TavaroRender/Renderer/Private/Reach.h>
#include <TavaroRender/Renderer/Private/RegionPasses.h>

namespace tavaro {

namespace {

/// All that a canvas shows but for the movies' pictures.
struct Drawing {
    FrameUniforms uniforms;
    std::vector<RasterLayer> layers;
};

/// Where the drawing of a frame begins.
enum class Beginning { nothing, layers, pointer, camera, ground };

/// What a frame asks for, and what is said where it cannot be had.
struct WantedEffect {
    Effect effect;
    std::string_view subject;
    std::string_view loss;
};

}

struct Renderer::State {
    State(ProjectPackage const& package, RendererOptions const& options)
        : rows(options.threads)
        , compositor(options.backend, rows)
        , backgrounds(package)
        , table(package)
        , failure(options.failure) {}

    RowPool rows; // before the compositor, which draws with it
    Compositor compositor;
    BackgroundImages backgrounds;
    CameraTable table;
    EffectFailure const failure;
    DroppedEffects dropped;
    LayerRasterizer rasterizer;
    MoviePicture screen;
    std::vector<RegionUniforms> regions; // that the screen's picture was changed in
    MoviePicture camera;
    std::shared_ptr<Image const> matte;
    std::shared_ptr<CubeLUT const> tableInUse; // kept, so that another one is at another address
    Image canvas;
    std::optional<Drawing> drawn; // what the canvas shows
    CanvasHistory history;        // of the canvas, while `drawn` holds
    std::int64_t framesDrawn = 0;

    template<class Make> auto orDropped(WantedEffect const& wanted, Make const& make) -> decltype(make());
    std::shared_ptr<CubeLUT const> ensureTable(DemoProject const& project);
    void noteMatte(FramePictures const& pictures, DemoProject const& project);
    std::vector<RasterLayer> ensureLayers(FrameState const& frame, DemoProject const& project);
    bool showScreen(VideoFrame const& frame, std::vector<RegionUniforms> passes);
    bool showCamera(FramePictures const& pictures);
    bool sizeCanvas(Size2 size);
    ImageView background(DemoProject const& project, Size2 canvas);
    Beginning beginning(Drawing const& wanted, bool hasNewGround, bool hasNewCamera) const;
    void draw(Drawing const& wanted, Beginning from, ImageView background);
    void drawCamera(CameraUniforms const& pass);
    void drawPointer(CursorUniforms const& pass);
    void drawLayer(RasterLayer const& layer);
};

/// What `make` gives, or nothing where that fails and failures are no reason to stop.
template<class Make> auto Renderer::State::orDropped(WantedEffect const& wanted, Make const& make) -> decltype(make()) {
    try {
        auto made = make();
        dropped.use(wanted.effect, wanted.subject);
        return made;
    } catch (Error const& error) {
        if (failure == EffectFailure::stop) throw;
        dropped.drop(wanted.effect, wanted.subject, std::string(wanted.loss) + " " + error.what());
        return {};
    }
}

std::shared_ptr<CubeLUT const> Renderer::State::ensureTable(DemoProject const& project) {
    if (!CameraTable::isUsed(project)) return nullptr;
    return orDropped({Effect::colorTable, *project.camera.lutAsset, "The camera is shown without its colours."},
                     [&] { return table.ensure(project); });
}

/// A camera that nobody can be told from the room in is shown whole, also in an export.
void Renderer::State::noteMatte(FramePictures const& pictures, DemoProject const& project) {
    if (!project.camera.cutout || !project.cameraAsset) return;
    auto const& asset = *project.cameraAsset;
    if (pictures.matte) return dropped.use(Effect::matte, asset);
    dropped.drop(Effect::matte, asset,
                 "The camera's movie '" + asset + "' has no matte to cut the person out with, so all of it is shown.");
}

std::vector<RasterLayer> Renderer::State::ensureLayers(FrameState const& frame, DemoProject const& project) {
    return rasterizer.layers(frame, project, [&](LayerSpec const& look) {
        return orDropped({Effect::layer, kindName(look), "A text or graphic is left out."},
                         [&] { return rasterizer.drawn(look); });
    });
}

/// Whether the recording's picture, with what happens to its regions, is another one than before.
bool Renderer::State::showScreen(VideoFrame const& frame, std::vector<RegionUniforms> passes) {
    if (!screen.differs(frame) && passes == regions) return false;
    screen.show(frame, rows, [&](MutableImageView picture) {
        for (auto const& pass : passes) compositor.regionEffect(pass, picture, picture);
    });
    regions = std::move(passes);
    return true;
}

/// The same for the camera's.
bool Renderer::State::showCamera(FramePictures const& pictures) {
    bool const isSameMatte = matte == pictures.matte;
    matte = pictures.matte;
    if (!camera.differs(pictures.camera)) return !isSameMatte;
    camera.show(pictures.camera, rows, [](MutableImageView) {});
    return true;
}

bool Renderer::State::sizeCanvas(Size2 size) {
    if (canvas.width() == size.width && canvas.height() == size.height) return false;
    canvas = Image(static_cast<int>(size.width), static_cast<int>(size.height));
    return true;
}

ImageView Renderer::State::background(DemoProject const& project, Size2 size) {
    auto const* style = std::get_if<BackgroundStyle::ImageFile>(&project.background.content);
    if (!style) return {};
    int const before = backgrounds.generation();
    auto const image = orDropped({Effect::background, style->assetName, "The background is shown without its picture."},
                                 [&] { return backgrounds.ensure(*style, size); });
    if (backgrounds.generation() != before) {
        compositor.forgetBackground();
        drawn.reset();
    }
    return image;
}

Beginning Renderer::State::beginning(Drawing const& wanted, bool hasNewGround, bool hasNewCamera) const {
    if (!drawn || hasNewGround || drawn->uniforms.composite != wanted.uniforms.composite) return Beginning::ground;
    if (hasNewCamera || drawn->uniforms.camera != wanted.uniforms.camera) return Beginning::camera;
    if (!drawn->uniforms.hasSamePointer(wanted.uniforms)) return Beginning::pointer;
    return drawn->layers != wanted.layers ? Beginning::layers : Beginning::nothing;
}

void Renderer::State::drawCamera(CameraUniforms const& pass) {
    // A picture much finer than its box would shimmer; of its halved copies the one that is just fine enough serves.
    auto const& texture = camera.texture();
    double finer = cameraPixelsPerPixel(pass, texture.width(), texture.height());
    int level = 0;
    for (; finer >= 2 && level + 1 < texture.levelCount(); finer /= 2) ++level;
    if (auto const rect = reach(pass))
        history.keep(CanvasStage::camera, *rect, canvas.view());
    else
        history.lose(CanvasStage::camera);
    compositor.cameraOverlay(pass, texture.ensureLevel(level), matte ? std::as_const(*matte).view() : ImageView(),
                             tableInUse.get(), canvas.view());
}

void Renderer::State::drawPointer(CursorUniforms const& pass) {
    if (auto const rect = reach(pass))
        history.keep(CanvasStage::pointer, *rect, canvas.view());
    else
        history.lose(CanvasStage::pointer);
    compositor.cursorOverlay(pass, canvas.view());
}

void Renderer::State::drawLayer(RasterLayer const& layer) {
    if (!layer.texture || layer.rect.isEmpty() || layer.opacity <= 0) return;
    auto const number = [](double v) { return static_cast<float>(v); };
    BlitUniforms const pass{.canvasSize = {number(canvas.width()), number(canvas.height())},
                            .origin = {number(layer.rect.x), number(layer.rect.y)},
                            .size = {number(layer.rect.width), number(layer.rect.height)},
                            .opacity = number(std::min(layer.opacity, 1.0))};
    history.keep(CanvasStage::layers, reach(pass), canvas.view());
    compositor.blitLayer(pass, layer.texture->view(), canvas.view());
}

void Renderer::State::draw(Drawing const& wanted, Beginning from, ImageView background) {
    auto const& uniforms = wanted.uniforms;
    auto const returns = [&](CanvasStage stage) { return history.returnTo(stage, canvas.view()); };
    if (from == Beginning::layers && !returns(CanvasStage::layers)) from = Beginning::ground;
    if (from == Beginning::pointer && !returns(CanvasStage::pointer)) from = Beginning::ground;
    if (from == Beginning::camera && !returns(CanvasStage::camera)) from = Beginning::ground;
    if (from == Beginning::ground) {
        history.clear();
        compositor.composite(uniforms.composite, screen.texture(), background, canvas.view());
    }
    if (from >= Beginning::camera && uniforms.camera) drawCamera(*uniforms.camera);
    if (from >= Beginning::pointer) {
        for (int pass = 0; pass < uniforms.cursorPasses; ++pass) drawPointer(uniforms.cursor[pass]);
    }
    for (auto const& layer : wanted.layers) drawLayer(layer);
}

Renderer::Renderer(ProjectPackage const& package, RendererOptions const& options)
    : state_(std::make_unique<State>(package, options)) {}
Renderer::Renderer(Renderer&&) noexcept = default;
Renderer& Renderer::operator=(Renderer&&) noexcept = default;
Renderer::~Renderer() = default;

void Renderer::beginRevision(std::int64_t revision) {
    state_->dropped.beginRevision(revision);
    state_->table.retry();
    state_->backgrounds.retry();
}

void Renderer::prepare(DemoProject const& project, int canvasWidth, int canvasHeight) {
    state_->background(project, {canvasWidth, canvasHeight});
    if (project.usesCamera()) state_->ensureTable(project);
}

ImageView Renderer::render(FrameState const& frame, DemoProject const& project, FramePictures const& pictures) {
    auto& state = *state_;
    state.dropped.beginFrame();
    bool const hasCamera = frame.cameraSource && !pictures.camera.isEmpty();
    auto const table = hasCamera ? state.ensureTable(project) : nullptr;
    if (hasCamera) state.noteMatte(pictures, project);
    bool const hasNewTable = hasCamera && std::exchange(state.tableInUse, table) != table;
    CameraMeans means{.hasMatte = pictures.matte != nullptr, .hasTable = table != nullptr};
    if (hasCamera) {
        means.width = pictures.camera.width();
        means.height = pictures.camera.height();
    }
    Drawing wanted{frameUniforms(frame, project, means), state.ensureLayers(frame, project)};

    auto const background = state.background(project, frame.canvas);
    auto const& screen = pictures.screen;
    auto passes =
        screen.isEmpty() ? std::vector<RegionUniforms>() : regionPasses(frame, screen.width(), screen.height());
    bool const isScreenSeen = wanted.uniforms.composite.clipSize != Float2();
    bool const hasNewScreen = isScreenSeen && state.showScreen(screen, std::move(passes));
    bool const hasNewCamera = hasCamera && state.showCamera(pictures);
    bool const hasNewCanvas = state.sizeCanvas(frame.canvas);
    auto const from = state.beginning(wanted, hasNewScreen || hasNewCanvas, hasNewCamera || hasNewTable);
    if (from == Beginning::nothing) return state.canvas.view();

    state.drawn.reset(); // also where drawing throws half way
    state.draw(wanted, from, background);
    state.drawn = std::move(wanted);
    ++state.framesDrawn;
    return state.canvas.view();
}

FramePlaces Renderer::places(FrameState const& frame, DemoProject const& project) {
    return findPlaces(frame, project, [this](LayerSpec const& look) {
        try {
            return state_->rasterizer.drawn(look);
        } catch (LayerError const&) {
            return DrawnLayer{};
        }
    });
}

std::vector<DroppedEffect> Renderer::dropped() const { return state_->dropped.list(); }

std::int64_t Renderer::framesDrawn() const { return state_->framesDrawn; }

RowBands& Renderer::rows() { return state_->rows; }

}
