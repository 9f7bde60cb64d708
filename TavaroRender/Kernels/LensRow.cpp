#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/LensRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/LensVectors-inl.h>

#include <TavaroRender/Kernels/Private/LensRow.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

/// Pixels `begin` … `end` − 1 of the lens's middle that show the background; false where the vectors cannot draw them.
bool seeBackgroundRow(LoupeScene const& scene, BackgroundRows const& rows, int y, int begin, int end,
                      std::uint8_t* seen) {
    LensBackground const background(rows);
    if (!background.isUsable()) return false;
    auto const& u = scene.uniforms;
    auto const magnification = set(std::max(u.loupeMag, 0.0001f));
    auto const qy = add(set(u.loupeCenter.y), over(set(pixelCenter(0, y).y - u.loupeCenter.y), magnification));
    forSeen(begin, end, seen, [&](Vec px) HWY_ATTR {
        return background.at(add(set(u.loupeCenter.x), over(sub(px, set(u.loupeCenter.x)), magnification)), qy);
    });
    return true;
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(seeBackgroundRow);

bool seeBackground(LensRow const& row, LoupeScene const& scene, BackgroundRows const& background, std::uint8_t* seen) {
    return HWY_DYNAMIC_DISPATCH(seeBackgroundRow)(scene, background, row.y, row.begin, row.end, seen);
}

}
#endif
