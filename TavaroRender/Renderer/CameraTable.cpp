#include <TavaroRender/Renderer/Private/CameraTable.h>

#include <TavaroCore/Files/FileBytes.h>
#include <TavaroCore/Looks/CubeLUT.h>
#include <TavaroCore/Project/DemoProject.h>

namespace tavaro {

namespace {

constexpr std::uint64_t largestFile = 64 << 20; // bytes; the largest table takes a tenth of that

CubeLUT readTable(ProjectPackage const& package, std::string const& asset) {
    using Kind = CameraTableError::Kind;
    try {
        auto const file = FileBytes::read(package.assetURL(asset), largestFile);
        if (file) return CubeLUT::parse(file->bytes());
    } catch (Error const& error) {
        throw CameraTableError(Kind::unreadable, "The colour table '" + asset + "' cannot be used. " + error.what());
    }
    throw CameraTableError(Kind::missing, "The colour table '" + asset + "' is missing.");
}

}

bool CameraTable::isUsed(DemoProject const& project) {
    auto const& camera = project.camera;
    return camera.look == CameraLook::lut && camera.lutAsset && camera.lookStrength > 0;
}

std::shared_ptr<CubeLUT const> CameraTable::ensure(DemoProject const& project) {
    if (!isUsed(project)) return nullptr;
    auto const& asset = *project.camera.lutAsset;
    if (asset_ != asset) {
        table_.reset();
        failure_.reset();
        try {
            table_ = std::make_shared<CubeLUT const>(readTable(package_, asset));
        } catch (CameraTableError const& error) {
            failure_ = error;
        }
        asset_ = asset;
    }
    if (failure_) throw *failure_;
    return table_;
}

void CameraTable::retry() {
    if (failure_) asset_.reset();
}

}
