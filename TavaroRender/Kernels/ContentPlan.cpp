#include <TavaroRender/Kernels/Private/ContentPlan.h>

#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>
#include <TavaroRender/Kernels/Private/Sampling.h>
#include <TavaroRender/Kernels/Private/ScreenLayer.h>

namespace tavaro {

namespace {

AxisPosition axisPosition(float normalised, int size) {
    auto const position = texelPosition(normalised, size);
    auto texel = static_cast<int>(position);
    if (static_cast<float>(texel) > position) --texel;
    return {texel, position - static_cast<float>(texel)};
}

std::int16_t fixed15(float v) { return static_cast<std::int16_t>(std::min(v * 32768.0f + 0.5f, 32767.0f)); }

/// Canvas point of a pixel centre, through the lens if there is one. One axis at a time, as the formula rounds.
float mapped(LensMapping const& mapping, float center, float pixel) {
    return mapping.isIdentity ? pixel : center + (pixel - center) / mapping.magnification;
}

/// A column as the kernel takes it.
void fillColumn(ColumnTable& table, std::size_t i, AxisPosition position, int base, bool sharpens) {
    auto const distance = static_cast<std::uint16_t>(position.texel - base);
    auto const fraction = static_cast<std::uint16_t>(fixed15(position.fraction));
    if (sharpens) {
        table.index[i] = distance;
        table.weight[i] = fraction;
        return;
    }
    auto const right = (fraction * 255u + 0x4000u) >> 15;
    table.index[i] = static_cast<std::uint16_t>(distance | (distance + 1u) << 8);
    table.weight[i] = static_cast<std::uint16_t>((255u - right) | right << 8);
}

/// How far the texels of `window` columns reach from that of the first.
int reachOf(std::vector<AxisPosition> const& positions, std::size_t first, std::size_t window) {
    return positions[first + window - 1].texel - positions[first].texel;
}

/// Whether columns reach no further than every vector unit can read at once, so that all of them draw the same areas.
/// Of enlarged, sharpened ones no two lie further apart than their texels.
bool isWithinReach(std::vector<AxisPosition> const& positions, bool sharpens) {
    for (std::size_t const window : resampleWindows) {
        int const limit = static_cast<int>(sharpens ? window : 2 * window - 1);
        for (std::size_t i = 0; i < positions.size(); i += window)
            if (reachOf(positions, i, window) >= limit) return false;
    }
    return true;
}

void fillWindow(ColumnTable& table, std::size_t first, std::vector<AxisPosition> const& positions, std::size_t window,
                bool sharpens) {
    auto const lowest = positions[first].texel;
    table.reach = std::max(table.reach, reachOf(positions, first, window));
    table.base.push_back(lowest);
    for (std::size_t i = first; i < first + window; ++i) fillColumn(table, i, positions[i], lowest, sharpens);
}

bool fillColumns(ColumnTable& table, std::vector<AxisPosition>& positions, bool sharpens) {
    table.base.clear();
    table.tiles.clear();
    table.reach = 0;
    auto const isBefore = [](AxisPosition const& a, AxisPosition const& b) { return a.texel < b.texel; };
    if (!std::is_sorted(positions.begin(), positions.end(), isBefore)) return false;
    for (std::size_t i = 0; i < positions.size(); i += ContentPlan::tileWidth) {
        auto const end = std::min(positions.size(), i + ContentPlan::tileWidth);
        table.tiles.push_back({positions[i].texel, positions[end - 1].texel + 1});
    }
    constexpr auto widest = static_cast<std::size_t>(resampleWindows.back());
    positions.resize((positions.size() + widest - 1) / widest * widest, positions.back());
    table.index.resize(positions.size());
    table.weight.resize(positions.size());
    if (!isWithinReach(positions, sharpens)) return false;
    auto const window = static_cast<std::size_t>(resampleWindow());
    for (std::size_t i = 0; i < positions.size(); i += window) fillWindow(table, i, positions, window, sharpens);
    return true;
}

}

void ContentPlan::prepare(CompositeUniforms const& u, ScreenSampler const& sampler, CanvasArea area) {
    start(sampler, area, {}, blursMotion(u) ? 0.0f : sampler.sharpenAmount());
    if (area.isEmpty()) return;
    if (!blursMotion(u)) return addTap(sampler, {}, sampler.levelOfFrame(), 1);
    auto const taps = motionBlurTaps(u);
    float total = 0;
    for (int i = 0; i < taps; ++i) total += motionBlurWeight(i, taps);
    for (int i = 0; i < taps; ++i)
        addTap(sampler, motionBlurShift(u, i, taps), sampler.levelOfFrame(), motionBlurWeight(i, taps) / total);
}

void ContentPlan::prepareLens(CompositeUniforms const&, ScreenSampler const& sampler, CanvasArea area, Float2 center,
                              float magnification) {
    start(sampler, area, {center, magnification, false}, sampler.sharpenAmount());
    if (!area.isEmpty()) addTap(sampler, {}, sampler.level(sampler.coverage() / magnification), 1);
}

void ContentPlan::start(ScreenSampler const& sampler, CanvasArea area, LensMapping mapping, float sharpen) {
    area_ = area;
    tapCount_ = 0;
    sharpens_ = sharpen > 0.001f;
    isUsable_ = sharpen < 3.9f && resampleWindow() > 0;
    sharpenQuarter_ = fixed15(std::clamp(sharpen / 4, 0.0f, 1.0f));
    cropX_.clear();
    cropY_.clear();
    for (int x = area_.left; x < area_.right; ++x)
        cropX_.push_back(sampler.cropPoint({mapped(mapping, mapping.center.x, pixelCenter(x, 0).x), 0}).x);
    for (int y = area_.top; y < area_.bottom; ++y)
        cropY_.push_back(sampler.cropPoint({0, mapped(mapping, mapping.center.y, pixelCenter(0, y).y)}).y);
}

void ContentPlan::addTap(ScreenSampler const& sampler, Float2 shift, float level, float weight) {
    auto const lower = static_cast<int>(level);
    auto const blend = level - static_cast<float>(lower);
    if (sharpens_ && level > 0) isUsable_ = false;
    addLevelTap(sampler, shift, lower, weight * (1 - blend));
    if (blend > 0) addLevelTap(sampler, shift, lower + 1, weight * blend);
}

void ContentPlan::addLevelTap(ScreenSampler const& sampler, Float2 shift, int level, float weight) {
    if (!isUsable_) return;
    if (static_cast<std::size_t>(tapCount_) == taps_.size()) taps_.emplace_back();
    auto& tap = taps_[static_cast<std::size_t>(tapCount_++)];
    tap.image = sampler.image(level);
    tap.rows.clear();
    for (auto const y : cropY_) {
        auto const position = axisPosition(sampler.textureUV({0, y + shift.y}).y, tap.image.height);
        auto const share = weight * 128 / 255;
        tap.rows.push_back({position.texel, fixed15(position.fraction), fixed15((1 - position.fraction) * share),
                            fixed15(position.fraction * share)});
    }
    positions_.clear();
    for (auto const x : cropX_)
        positions_.push_back(axisPosition(sampler.textureUV({x + shift.x, 0}).x, tap.image.width));
    isUsable_ = fillColumns(tap.columns, positions_, sharpens_) && isUsable_;
}

std::int16_t* ContentScratch::ensure(std::size_t count) {
    if (capacity < count) {
        memory = hwy::AllocateAligned<std::int16_t>(count);
        if (!memory) throw std::bad_alloc();
        capacity = count;
    }
    return memory.get();
}

}
