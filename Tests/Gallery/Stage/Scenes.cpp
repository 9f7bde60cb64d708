#include "Scenes.h"

#include <algorithm>

#include <TavaroCore/Style/BackgroundPreset.h>
#include <TavaroRender/Export/FilmPainter.h>

#include "Stage.h"

namespace tavaro::gallery {

namespace {

using Change = std::function<void(DemoProject&)>;

constexpr UnitPoint2 button{0.925, 0.063};
constexpr double clickTime = 4;

/// Scenes of one family, listed one after the other.
class Family {
public:
    Family(std::vector<Scene>& scenes, std::string name) : scenes_(scenes), name_(std::move(name)) {}

    Scene& add(std::string const& name, Change change) {
        return scenes_.emplace_back(Scene{name_, name_ + "-" + name, std::move(change)});
    }

private:
    std::vector<Scene>& scenes_;
    std::string name_;
};

void zoomTo(DemoProject& p, UnitPoint2 center, double scale) {
    p.zoomEvents = {{.start = 0, .duration = 12, .center = center, .scale = scale}};
}

void addBackgrounds(std::vector<Scene>& all) {
    Family family(all, "background");
    for (auto const* id : {"midnight", "daybreak", "ember", "graphite", "northern-lights", "sand"})
        family.add(id, [id](DemoProject& p) { p.background = BackgroundPreset::withID(id)->style; });
    family.add("image", [](DemoProject& p) { p.background.content = BackgroundStyle::ImageFile{"wall.png", 40}; });
    family.add("none", [](DemoProject& p) { p.background.content = BackgroundStyle::None{}; });
}

void addFrames(std::vector<Scene>& all) {
    Family family(all, "frame");
    family.add("plain", [](DemoProject& p) { p.screen = {}; });
    family.add("border", [](DemoProject& p) {
        p.screen.borderWidth = 6;
        p.screen.borderColor = {1, 1, 1, 0.8};
    });
    family.add("inset", [](DemoProject& p) {
        p.screen.inset = 0.02;
        p.screen.insetColor = RGBAColor::rgb(0xF1F5F9);
        p.screen.cornerRadius = 32;
    });
    for (auto const frame : {DeviceFrame::browserLight, DeviceFrame::browserDark, DeviceFrame::macbook,
                             DeviceFrame::imac, DeviceFrame::ipad})
        family.add(std::string(nameOf(frame)), [frame](DemoProject& p) { p.screen.frame = frame; });
    family.add("iphone", [](DemoProject& p) {
        p.screen.frame = DeviceFrame::iphone;
        p.sourceCrop = NormalizedRect{0.185, 0, 0.30, 1};
    });
    family.add("tinted", [](DemoProject& p) {
        p.screen.frame = DeviceFrame::imac;
        p.screen.frameTint = RGBAColor::rgb(0x2563EB, 0.8);
    });
}

void addPointers(std::vector<Scene>& all) {
    Family cursors(all, "cursor");
    for (int i = 0; i < static_cast<int>(namesOf(CursorStyle()).size()); ++i) {
        auto const style = static_cast<CursorStyle>(i);
        cursors.add(std::string(nameOf(style)), [style](DemoProject& p) {
            p.cursor.style = style;
            zoomTo(p, button, 3);
        });
    }
    cursors.add("blurred", [](DemoProject& p) { p.cursor.motionBlur = 1; }).time = 1.2;
    Family clicks(all, "click");
    for (int i = 1; i < static_cast<int>(namesOf(ClickEffect()).size()); ++i) {
        auto const effect = static_cast<ClickEffect>(i);
        clicks
            .add(std::string(nameOf(effect)),
                 [effect](DemoProject& p) {
                     p.cursor.clickEffect = effect;
                     zoomTo(p, button, 3);
                 })
            .time = clickTime + 0.2;
    }
}

void addZooms(std::vector<Scene>& all) {
    Family family(all, "zoom");
    family.add("camera", [](DemoProject& p) { zoomTo(p, {0.45, 0.5}, 2); });
    family
        .add("blurred",
             [](DemoProject& p) {
                 zoomTo(p, {0.2, 0.8}, 2.4);
                 p.zoomEvents[0].motionBlur = 1;
             })
        .time = 0.3;
    family.add("loupe", [](DemoProject& p) {
        p.zoomEvents = {{.start = 0, .duration = 12, .center = {0.45, 0.2}, .style = ZoomStyle::loupe}};
        p.zoomEvents[0].scale = 2;
        p.zoomEvents[0].loupeSize = 0.26;
    });
    family.add("crop", [](DemoProject& p) { p.sourceCrop = NormalizedRect{0.165, 0.12, 0.835, 0.6}; });
    auto const redact = [](RedactionStyle style) {
        return [style](DemoProject& p) {
            NormalizedRect const rect{0.27, 0.79, 0.15, 0.19};
            p.redactions.edit() = {{.kind = SensitiveKind::name, .start = 0, .end = 12, .style = style}};
            p.redactions.edit()[0].keyframes = {{0, rect}, {12, rect}};
            zoomTo(p, {0.4, 0.85}, 1.8);
        };
    };
    family.add("redaction-mask", redact(RedactionStyle::mask));
    family.add("redaction-blur", redact(RedactionStyle::blur));
}

/// The camera's bubble, large enough to be looked at.
Change camera(Change change) {
    return [change = std::move(change)](DemoProject& p) {
        p.camera.isEnabled = true;
        p.camera.size = 0.4;
        change(p);
    };
}

void addCameras(std::vector<Scene>& all) {
    Family shapes(all, "camera");
    for (int i = 0; i < static_cast<int>(namesOf(CameraShape()).size()); ++i) {
        auto const shape = static_cast<CameraShape>(i);
        shapes.add(std::string(nameOf(shape)), camera([shape](DemoProject& p) { p.camera.shape = shape; }));
    }
    for (auto const placement : {CameraPlacement::topLeft, CameraPlacement::left, CameraPlacement::bottom})
        shapes.add(std::string(nameOf(placement)),
                   camera([placement](DemoProject& p) { p.camera.placement = placement; }));
    shapes.add("face", camera([](DemoProject& p) {
                   p.camera.tracksFace = true;
                   p.camera.faceZoom = 1.8;
                   p.cameraFaces.edit() = {{0, {0.4, 0.22, 0.2, 0.46}, {}, {}}, {12, {0.4, 0.22, 0.2, 0.46}, {}, {}}};
               }));
    shapes.add("cutout", camera([](DemoProject& p) {
                   p.camera.cutout = true;
                   p.camera.size = 0.6;
                   p.camera.shape = CameraShape::wide;
                   p.camera.padding = 0;
               }));

    Family looks(all, "look");
    for (int i = 0; i < static_cast<int>(namesOf(CameraLook()).size()); ++i) {
        auto const look = static_cast<CameraLook>(i);
        looks.add(std::string(nameOf(look)), [look](DemoProject& p) {
            p.camera.isEnabled = true;
            p.camera.look = look;
            p.camera.lutAsset = "warm.cube";
            p.layoutCues = {{.time = 0, .scene = SceneLayout::cameraOnly}};
        });
    }
}

void addLayouts(std::vector<Scene>& all) {
    Family family(all, "layout");
    for (int i = 0; i < static_cast<int>(namesOf(SplitArrangement()).size()); ++i) {
        auto const arrangement = static_cast<SplitArrangement>(i);
        bool const isStacked =
            arrangement == SplitArrangement::cameraTop || arrangement == SplitArrangement::cameraBottom;
        family
            .add(std::string(nameOf(arrangement)),
                 [arrangement](DemoProject& p) {
                     p.camera.isEnabled = true;
                     p.layout.content = CanvasLayout::Split{arrangement, 0.4};
                 })
            .shape = isStacked ? Size2{9, 16} : Size2{16, 9};
    }
    family.add("camera-only", [](DemoProject& p) {
        p.camera.isEnabled = true;
        p.layoutCues = {{.time = 0, .scene = SceneLayout::cameraOnly}};
    });
    family
        .add("blend",
             [](DemoProject& p) {
                 p.camera.isEnabled = true;
                 p.layoutCues = {{.time = 5, .scene = SceneLayout::split}};
             })
        .time = 5.2;
    family.add("vertical", [](DemoProject&) {}).shape = {9, 16};
    family.add("square", [](DemoProject&) {}).shape = {1, 1};
    family.add("filled", [](DemoProject& p) { p.exportSettings.fit = ContentFit::fill; }).shape = {9, 16};
    family
        .add("filled-framed",
             [](DemoProject& p) {
                 p.exportSettings.fit = ContentFit::fill;
                 p.screen.frame = DeviceFrame::iphone;
             })
        .shape = {9, 16};
}

Overlay overlay(OverlayKind kind, UnitPoint2 position = {0.5, 0.5}, double fontSize = 44) {
    return {.kind = std::move(kind), .start = 0, .duration = 12, .position = position, .fontSize = fontSize};
}

void addOverlays(std::vector<Scene>& all) {
    Family family(all, "overlay");
    auto const shows = [&](char const* name, Overlay const& item) -> Scene& {
        return family.add(name, [item](DemoProject& p) { p.overlays = {item}; });
    };
    shows("title", overlay({OverlayKind::Title{"Orders at a glance", "A tour in two minutes"}}, {0.5, 0.5}, 72));
    shows("callout", overlay({OverlayKind::Callout{"Revenue is up again"}}, {0.45, 0.5}));
    shows("keycap", overlay({OverlayKind::Keycap{{"⌘", "⇧", "P"}}}, {0.5, 0.82}, 48));
    shows("command", overlay({OverlayKind::Command{"npm run deploy"}}, {0.5, 0.8}));
    shows("code",
          overlay({OverlayKind::Code{"const total = orders\n  .filter(o => o.paid)\n  .reduce((sum, o) => sum + "
                                     "o.price, 0); // euros\nreturn `€ ${total}`;",
                                     "javascript"}},
                  {0.5, 0.5}, 34));
    auto const coral = [](Overlay item) {
        item.color = RGBAColor::rgb(0xF43F5E);
        return item;
    };
    shows("arrow", coral(overlay({OverlayKind::Arrow{{0.62, 0.42}, {0.85, 0.16}}})));
    shows("box", coral(overlay({OverlayKind::Box{{0.385, 0.145, 0.19, 0.14}}})));
    shows("highlight", overlay({OverlayKind::Highlight{{0.385, 0.145, 0.19, 0.14}}}));
    shows("blur", overlay({OverlayKind::Blur{{0.27, 0.79, 0.15, 0.19}}}));
    shows("mask", overlay({OverlayKind::Mask{{0.27, 0.79, 0.15, 0.19}}}));
    shows("scripts", overlay({OverlayKind::Callout{"こんにちは · مرحبا · 🎉"}}, {0.5, 0.5}, 60));
    auto entering = overlay({OverlayKind::Callout{"Sliding in"}}, {0.5, 0.5}, 60);
    entering.start = 2.9;
    entering.animationIn = OverlayAnimation::slideUp;
    shows("entering", entering);
    auto typed = overlay({OverlayKind::Command{"git push --force-with-lease"}}, {0.5, 0.8});
    typed.start = 2.5;
    typed.animationIn = OverlayAnimation::typewriter;
    typed.animationDuration = 1;
    shows("typed", typed);
}

void addText(std::vector<Scene>& all) {
    Family captions(all, "caption");
    CaptionCue const cue{.start = 2, .duration = 3, .text = "Every number on this page updates by itself"};
    for (int i = 0; i < static_cast<int>(namesOf(CaptionStyle()).size()); ++i)
        for (auto const reveal : {CaptionReveal::line, CaptionReveal::word}) {
            auto const style = static_cast<CaptionStyle>(i);
            captions.add(std::string(nameOf(style)) + "-" + std::string(nameOf(reveal)), [=](DemoProject& p) {
                p.captions.isEnabled = true;
                p.captions.style = style;
                p.captions.reveal = reveal;
                p.captions.cues = {cue};
            });
        }
    captions
        .add("vertical",
             [cue](DemoProject& p) {
                 p.captions.isEnabled = true;
                 p.captions.style = CaptionStyle::creator;
                 p.captions.cues = {cue};
             })
        .shape = {9, 16};
    Family cards(all, "card");
    cards
        .add("intro",
             [](DemoProject& p) { p.intro = TitleCard{.text = "Harbor 2.0", .subtitle = "What is new this spring"}; })
        .time = 1.2;
    cards
        .add("outro",
             [](DemoProject& p) {
                 p.outro = TitleCard{.text = "harbor.example", .background = RGBAColor::rgb(0x4F46E5)};
             })
        .time = 13.2;
    cards.add("watermark", [](DemoProject& p) { p.exportSettings.includeWatermark = true; });
}

std::vector<Scene> listed() {
    std::vector<Scene> all;
    addBackgrounds(all);
    addFrames(all);
    addPointers(all);
    addZooms(all);
    addCameras(all);
    addLayouts(all);
    addOverlays(all);
    addText(all);
    return all;
}

}

Size2 Scene::canvas(int longerSide) const {
    auto const longer = std::max(shape.width, shape.height);
    return Size2{shape.width * longerSide / longer, shape.height * longerSide / longer}.evened();
}

std::vector<Scene> const& scenes() {
    static auto const all = listed();
    return all;
}

std::vector<std::string> families() {
    std::vector<std::string> names;
    for (auto const& scene : scenes())
        if (names.empty() || names.back() != scene.family) names.push_back(scene.family);
    return names;
}

Image drawn(Scene const& scene, Stage const& stage, Size2 canvas, CompositorBackend backend) {
    auto project = stage.project();
    scene.change(project);
    auto settings = project.exportSettings;
    settings.size = canvas;
    return filmPainter(project, stage.package(), settings, {.backend = backend}).still(scene.time);
}

}
