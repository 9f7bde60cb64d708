#include <TavaroCore/Project/DemoProject.h>

#include <TavaroCore/Records/Hash.h>
#include <TavaroCore/Records/JSON.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

void DemoProject::clearAutomaticEdits() {
    auto const isAutomatic = [](auto const& item) { return item.isAutomatic; };
    std::erase_if(zoomEvents, isAutomatic);
    std::erase_if(overlays, isAutomatic);
    std::erase_if(cameraMoves, isAutomatic);
}

NormalizedRect DemoProject::effectiveCrop() const {
    if (!sourceCrop) return {0, 0, 1, 1};
    auto const inside = sourceCrop->inset(0, 0);
    return inside.area() > 0 ? inside : NormalizedRect{0, 0, 1, 1};
}

Size2 DemoProject::croppedSourceSize() const {
    auto const crop = effectiveCrop();
    auto const side = [](std::int64_t pixels, double share) {
        return std::max<std::int64_t>(std::llround(static_cast<double>(pixels) * share), pixels > 0 ? 1 : 0);
    };
    return {side(sourceSize.width, crop.width), side(sourceSize.height, crop.height)};
}

DemoProject decodeProject(std::string_view json) { return decodeJSON<DemoProject>(json); }

std::string encodeProject(DemoProject const& project) {
    constexpr std::size_t bytesASample = 128; // a pointer sample with full fractions takes about 110
    auto const& log = *project.metadata;
    JSONWriter writer;
    writer.expect(bytesASample *
                  (log.cursorSamples.size() + (log.rawCursorSamples ? log.rawCursorSamples->size() : 0)));
    writeJSON(writer, project);
    return writer.take();
}

std::size_t hashOf(DemoProject const& project) { return detail::hashValue(project); }

}
