#include <Tavaro/Model/Operations/Perform.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>

#include <cstdlib>

using namespace tavaro;

static DemoProject document() {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
    project.zoomEvents = {{.start = 1, .duration = 2}, {.start = 4, .duration = 2}};
    project.overlays = {{.kind = {OverlayKind::Callout{"here"}}, .start = 1}};
    project.captions.cues = {{.start = 1, .duration = 1, .text = "a word", .words = {{"a", 1, 1.5}, {"word", 1.5, 2}}}};
    project.audioTracks = {{.role = AudioRole::music, .clips = {{.asset = "music.mp3", .duration = 10}}}};
    project.intro = TitleCard{.text = "Hello"};
    return project;
}

static void expectWhole(DemoProject const& project) {
    if (!(decodeProject(encodeProject(project)) == project)) std::abort();
}

// Any bytes are refused with a sentence and change nothing, or give a document that is written and read back equal.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static DemoProject const before = document();
    std::string const text(reinterpret_cast<char const*>(data), size);
    auto project = before;
    try {
        perform(project, operations::Patch{JSONValue::parse(text)});
        expectWhole(project);
    } catch (JSONError const&) {
    } catch (OperationError const&) {
        if (!(project == before)) std::abort();
    }
    try {
        perform(project, operations::SetFields{{text}});
        expectWhole(project);
    } catch (OperationError const&) {
    }
    return 0;
}
