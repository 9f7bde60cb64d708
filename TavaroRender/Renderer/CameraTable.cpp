#include <TavaroRender/Renderer/CameraTable.h>

#include <TavaroCore/Files/MappedFile.h>
#include <TavaroCore/Looks/CubeLUT.h>
#include <TavaroCore/Project/DemoProject.h>

#include <spdlog/spdlog.h>

namespace tavaro {

namespace {

constexpr std::uint64_t largestFile = 64 << 20; // bytes; the largest table takes a tenth of that

CubeLUT readTable(ProjectPackage const& package, std::string const& asset) {
    using Kind = CameraTableError::Kind;
    try {
        auto const file = MappedFile::open(package.assetURL(asset), largestFile);
        if (file) return CubeLUT::parse(file->bytes());
    } catch (Error const& error) {
        throw CameraTableError(Kind::unreadable, "The colour table '" + asset + "' cannot be used. " + error.what());
    }
    throw CameraTableError(Kind::missing, "The colour table '" + asset + "' is missing.");
}

}

CubeLUT const* CameraTable::ensure(DemoProject const& project) {
    auto const& camera = project.camera;
    if (camera.look != CameraLook::lut || !camera.lutAsset || camera.lookStrength <= 0) return nullptr;
    if (asset_ == camera.lutAsset) return table_.get();
    table_.reset();
    try {
        table_ = std::make_shared<CubeLUT const>(readTable(package_, *camera.lutAsset));
    } catch (CameraTableError const& error) {
        if (failure_ == EffectFailure::stop) throw;
        spdlog::warn("The camera is shown without its colours. {}", error.what());
    }
    asset_ = camera.lutAsset;
    return table_.get();
}

}
