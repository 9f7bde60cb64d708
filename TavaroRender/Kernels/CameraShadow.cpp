#include <TavaroRender/Kernels/Private/CameraShadow.h>

#include <TavaroRender/Kernels/Private/CameraRow.h>

namespace tavaro {

void CameraShadow::prepare(CameraPlan const& plan) {
    auto const& u = plan.uniforms();
    // Where the picture lets the shadow through, both are worked out together.
    if (plan.isCutOut() || !plan.hasShadow() || u.opacity < 1) {
        key_.reset();
        return;
    }
    Key const key{u.center, u.halfSize, u.cornerRadius, u.shadowOpacity * u.opacity, plan.columns(), plan.rows()};
    if (key_ == key) return;
    key_ = key;
    auto const width = static_cast<std::size_t>(key.columns.end - key.columns.begin);
    constexpr std::size_t longestVector = 64; // which reads past the end
    strengths_.resize(width * static_cast<std::size_t>(key.rows.end - key.rows.begin) + longestVector);
    for (int y = key.rows.begin; y < key.rows.end; ++y)
        shadowRow(plan, y, strengths_.data() + width * static_cast<std::size_t>(y - key.rows.begin));
}

std::uint16_t const* CameraShadow::row(int y) const {
    if (!key_) return nullptr;
    auto const width = static_cast<std::size_t>(key_->columns.end - key_->columns.begin);
    return strengths_.data() + width * static_cast<std::size_t>(y - key_->rows.begin);
}

}
