#include <Tavaro/Model/Privacy/FindingPicture.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace tavaro {

namespace {

using Ink = std::array<std::uint8_t, 4>;

constexpr Ink ofFinding{229, 72, 77, 255}, ofOthers{43, 49, 64, 255};
constexpr double around = 1.7, aboveAndBelow = 4; // times as large as the area
constexpr double mostEnlarged = 2;

/// Whole pixels, the last ones not included.
struct Box {
    int left = 0, top = 0, right = 0, bottom = 0;
    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

/// Every pixel that the area touches, and one more: it may have been scaled to get here.
Box touched(NormalizedRect const& area, ImageView frame) {
    auto const clamped = [](double value, int most) {
        return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(most)));
    };
    return {clamped(std::floor(area.x * frame.width) - 1, frame.width),
            clamped(std::floor(area.y * frame.height) - 1, frame.height),
            clamped(std::ceil(area.maxX() * frame.width) + 1, frame.width),
            clamped(std::ceil(area.maxY() * frame.height) + 1, frame.height)};
}

/// As long as `length` where there is room, around the middle.
std::array<int, 2> spanAround(double middle, double length, int room) {
    auto const whole = std::clamp(static_cast<int>(std::lround(length)), 1, room);
    auto const first = std::clamp(static_cast<int>(std::lround(middle - length / 2)), 0, room - whole);
    return {first, first + whole};
}

/// What of the frame is shown: in the shape of the picture, unless the frame is too small for it.
Box partAround(NormalizedRect const& area, ImageView frame, Size2 size) {
    auto const width = area.width * frame.width, height = area.height * frame.height;
    auto const high = std::max(
        {height * aboveAndBelow, width * around / size.aspect(), static_cast<double>(size.height) / mostEnlarged});
    auto const middle = area.center();
    auto const x = spanAround(middle.x * frame.width, high * size.aspect(), frame.width);
    auto const y = spanAround(middle.y * frame.height, high, frame.height);
    return {x[0], y[0], x[1], y[1]};
}

Image cut(ImageView frame, Box const& part) {
    Image picture(part.width(), part.height());
    for (int y = 0; y < picture.height(); ++y)
        std::memcpy(picture.row(y), frame.row(part.top + y) + std::ptrdiff_t{4} * part.left,
                    std::size_t{4} * static_cast<std::size_t>(picture.width()));
    return picture;
}

void fill(Image& picture, Box const& part, Box const& box, Ink const& ink) {
    for (int y = std::max(box.top, part.top); y < std::min(box.bottom, part.bottom); ++y)
        for (int x = std::max(box.left, part.left); x < std::min(box.right, part.right); ++x)
            std::ranges::copy(ink, picture.row(y - part.top) + std::ptrdiff_t{4} * (x - part.left));
}

/// The pixels of `length` that pixel `index` of `count` is made of.
std::array<int, 2> sources(int index, int count, int length) {
    auto const first = static_cast<int>(std::int64_t{index} * length / count);
    auto const last = static_cast<int>((std::int64_t{index + 1} * length + count - 1) / count);
    return {first, std::clamp(last, first + 1, length)};
}

Ink mean(Image const& picture, std::array<int, 2> const& columns, std::array<int, 2> const& rows) {
    std::array<std::uint64_t, 3> sums{};
    for (int y = rows[0]; y < rows[1]; ++y)
        for (int x = columns[0]; x < columns[1]; ++x)
            for (std::size_t i = 0; i < 3; ++i)
                sums[i] += picture.row(y)[std::size_t{4} * static_cast<unsigned>(x) + i];
    auto const count = static_cast<std::uint64_t>((columns[1] - columns[0]) * (rows[1] - rows[0]));
    Ink ink{0, 0, 0, 255};
    for (std::size_t i = 0; i < 3; ++i) ink[i] = static_cast<std::uint8_t>((sums[i] + count / 2) / count);
    return ink;
}

Image scaled(Image const& picture, Size2 size) {
    Image result(static_cast<int>(size.width), static_cast<int>(size.height));
    for (int y = 0; y < result.height(); ++y)
        for (int x = 0; x < result.width(); ++x)
            std::ranges::copy(mean(picture, sources(x, result.width(), picture.width()),
                                   sources(y, result.height(), picture.height())),
                              result.row(y) + std::ptrdiff_t{4} * x);
    return result;
}

/// The largest of that shape that fits, so that nothing is stretched.
Size2 sizeIn(Size2 room, Box const& part) {
    auto const aspect = static_cast<double>(part.width()) / part.height();
    auto const wide = static_cast<double>(room.width), high = static_cast<double>(room.height);
    return {std::max<std::int64_t>(1, std::llround(std::min(wide, high * aspect))),
            std::max<std::int64_t>(1, std::llround(std::min(high, wide / aspect)))};
}

}

std::optional<FindingScene> sceneOf(DemoProject const& project, UUID const& redaction) {
    auto const& tracks = *project.redactions;
    auto const found = std::ranges::find(tracks, redaction, &RedactionTrack::id);
    if (found == tracks.end() || found->keyframes.empty()) return std::nullopt;
    std::string const usual(recordingAsset(project));
    auto const time = found->start + found->duration() / 2;
    FindingScene scene{found->asset.value_or(usual), time, found->areaAt(time), {}};
    for (auto const& track : tracks) {
        bool const isThere = track.asset.value_or(usual) == scene.asset && track.start <= time && time <= track.end;
        if (isThere && track.id != redaction && !track.keyframes.empty()) scene.others.push_back(track.areaAt(time));
    }
    return scene;
}

Image findingPicture(ImageView frame, NormalizedRect const& area, std::span<NormalizedRect const> others, Size2 size) {
    if (frame.isEmpty() || size.width <= 0 || size.height <= 0) return {};
    auto const part = partAround(area, frame, size);
    auto picture = cut(frame, part);
    for (auto const& other : others) fill(picture, part, touched(other, frame), ofOthers);
    fill(picture, part, touched(area, frame), ofFinding);
    return scaled(picture, sizeIn(size, part));
}

}
