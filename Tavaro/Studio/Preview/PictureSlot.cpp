#include <Tavaro/Studio/Preview/PictureSlot.h>

#include <mutex>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t mostIdle = 3;

bool hasSize(Image const& image, Size2 size) { return image.width() == size.width && image.height() == size.height; }

}

struct PictureSlot::Pool {
    std::mutex mutex;
    std::vector<std::unique_ptr<Image>> idle; // guarded by mutex
    Size2 size;                               // the one asked for last; guarded by mutex

    std::unique_ptr<Image> taken(Size2 wanted) {
        std::lock_guard const lock(mutex);
        if (size != wanted) idle.clear();
        size = wanted;
        if (idle.empty()) return nullptr;
        auto image = std::move(idle.back());
        idle.pop_back();
        return image;
    }
    void giveBack(std::unique_ptr<Image> image) {
        std::lock_guard const lock(mutex);
        if (hasSize(*image, size) && idle.size() < mostIdle) idle.push_back(std::move(image));
    }
};

struct PictureSlot::Waiting {
    std::mutex mutex;
    std::optional<PreviewPicture> picture; // guarded by mutex
};

PictureSlot::PictureSlot() : pool_(std::make_shared<Pool>()), waiting_(std::make_unique<Waiting>()) {}
PictureSlot::~PictureSlot() = default;

std::shared_ptr<Image> PictureSlot::canvas(Size2 size) {
    auto image = pool_->taken(size);
    if (!image) image = std::make_unique<Image>(static_cast<int>(size.width), static_cast<int>(size.height));
    return {image.release(), [pool = pool_](Image* canvas) { pool->giveBack(std::unique_ptr<Image>(canvas)); }};
}

bool PictureSlot::put(PreviewPicture picture) {
    std::lock_guard const lock(waiting_->mutex);
    std::optional<PreviewPicture> before(std::move(picture));
    waiting_->picture.swap(before);
    return !before;
}

std::optional<PreviewPicture> PictureSlot::take() {
    std::lock_guard const lock(waiting_->mutex);
    return std::exchange(waiting_->picture, std::nullopt);
}

}
