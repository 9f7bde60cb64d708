#pragma once

#include <Tavaro/Studio/Playback/FilmClock.h>
#include <Tavaro/Studio/Preview/PictureSlot.h>

#include <TavaroCore/History/ItemEdit.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroRender/Composition/ZoomUse.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

namespace tavaro {

/// Pictures of a film for a window: the newest moment that is wanted, at the size that there is room for, drawn by the
/// composition that exports use. What is wanted while another picture is drawn waits for that one only, and what nobody
/// wants any more is not drawn. It belongs to one thread, where nothing waits; it draws on its own, and only when there
/// is something new to be seen.
class PreviewPlayer {
public:
    enum class Pace {
        resting, // as fine as there is room for
        dragged, // another moment follows at once: coarser where that is needed to keep up
    };

    /// `clock` outlives this. `wake` is called on another thread when there is a picture to be taken, and not again
    /// before it was; it only passes that on.
    PreviewPlayer(ProjectPackage package, FilmClock const& clock, std::function<void()> wake);
    ~PreviewPlayer();
    PreviewPlayer(PreviewPlayer const&) = delete;
    PreviewPlayer& operator=(PreviewPlayer const&) = delete;

    /// The film is this revision's from now on.
    void show(DemoProject const& project, ZoomUse zooms = ZoomUse::zoomed);
    /// The same where the film differs from the one shown last in the inside of these items alone; costs by those.
    void show(DemoProject const& project, std::span<ItemPlace const> items);
    /// Room for the picture, in pixels; 0 × 0 while it is not to be seen.
    void fit(Size2 room);
    void seek(double at, Pace pace = Pace::resting);
    /// Follows the clock, until the next `seek`.
    void follow();

    /// The newest picture that was not taken yet.
    std::optional<PreviewPicture> take() { return slot_.take(); }
    /// How many pictures were drawn. Any thread.
    std::int64_t drawn() const { return drawn_; }

private:
    enum class Motion { resting, dragged, playing };
    struct Wanted {
        std::shared_ptr<DemoProject const> project;
        std::vector<ItemEdit> edits; // of it, since it was copied
        ZoomUse zooms = ZoomUse::zoomed;
        std::int64_t revision = 0; // names project, edits and zooms
        Size2 room;
        double at = 0;
        Motion motion = Motion::resting;

        bool operator==(Wanted const& other) const;
    };
    struct Easel;

    void want(std::function<void(Wanted&)> const& change);
    Wanted wanted() const;
    // The queue's:
    void draw();
    void drawAt(Wanted const& next);
    void keepTime(Wanted const& wanted);
    void tick();

    FilmClock const& clock_;
    std::function<void()> const wake_;
    PictureSlot slot_;
    std::atomic<std::int64_t> drawn_ = 0;

    mutable std::mutex mutex_;
    Wanted wanted_;          // from here on guarded by mutex_
    bool isDrawDue_ = false; // a task of the queue will look at it

    std::unique_ptr<Easel> const easel_; // the queue's
    SerialQueue queue_{"com.tavaro.preview.decode"};
};

}
