#pragma once

#include <Tavaro/Studio/Playback/FilmClock.h>
#include <Tavaro/Studio/Playback/Passage.h>
#include <Tavaro/Studio/Playback/SoundOutput.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

class FilmSound;
class PassageSamples;
struct DemoProject;

/// Plays the sound of a film, as an export mixes it, and keeps the film's clock by what is heard. Where nothing can be
/// heard, the clock runs by itself, and the sound joins it as soon as there is a device again. It belongs to one
/// thread; mixing and playing is done beside it, and only while the film plays.
class SoundPlayer {
public:
    /// What has come of what was asked for.
    struct Report {
        bool hasEnded = false;                  // the passage that was asked for last, by itself
        std::optional<std::string> noSound;     // why nothing is heard, as a sentence
        std::vector<std::string> soundProblems; // what of the film's sound cannot be heard, as sentences

        bool operator==(Report const&) const = default;
    };

    /// `clock` outlives this. `told` is called on another thread when there is another report; it only passes that on.
    SoundPlayer(ProjectPackage package, FilmClock& clock, std::unique_ptr<SoundOutput> output,
                std::function<void()> told);
    ~SoundPlayer();
    SoundPlayer(SoundPlayer const&) = delete;
    SoundPlayer& operator=(SoundPlayer const&) = delete;

    /// The film is this revision's from now on, also in the middle of playing; it then ends with it.
    void show(DemoProject const& project);
    /// Plays that instead of what it plays. The clock stays at its beginning until it is heard.
    void play(Passage const& passage);
    /// Returns at once; the clock stays where it is.
    void stop();
    /// The end of what plays has moved, without a break.
    void moveEnd(double end);
    /// Short sounds of the newest place while one follows another, a little after it; the clock stays. Ends what plays.
    void scrub(double at);
    /// Of all that is heard from now on, 0 to 1.
    void setVolume(double volume) { volume_ = static_cast<float>(volume); }

    Report report() const;

private:
    struct Shown {
        std::uint64_t number = 0;
        std::shared_ptr<DemoProject const> project;
    };
    struct Order {
        std::uint64_t number = 0;
        std::optional<Passage> passage; // none: silence
        bool isScrub = false;           // only its beginning is heard
    };
    struct Finished;
    enum class Lead { nobody, sound, clock };

    // The queue's, all of them.
    void run();
    void perform(Passage const& passage);
    void scrubAlong();
    void write(std::span<StereoSample> samples);
    void turn();
    bool goesOn();
    void takeRevision();
    void takeFinished();
    void finishBeside(Shown const& shown);
    void follow();
    void noteHeard(double sample);
    void lead();
    void feed();
    void reopenWhenDue();
    void beginSamples();
    void leadByClock(std::string const& reason);
    void runClock(double from);
    Order order() const;
    void say(std::function<void(Report&)> const& change);

    ProjectPackage const package_;
    FilmClock& clock_;
    std::function<void()> const told_;

    mutable std::mutex mutex_;
    Shown shown_; // from here on guarded by mutex_
    Order order_;
    Report report_;
    std::unique_ptr<Finished> finished_;
    bool isRunning_ = false; // a task of the queue looks at the order

    std::unique_ptr<SoundOutput> const output_; // from here on the queue's
    std::uint64_t performed_ = 0;               // the number of the order that it performs
    Passage passage_;                           // of it
    std::uint64_t soundOf_ = 0;                 // the number of the revision that `sound_` is of
    std::unique_ptr<FilmSound> sound_;
    std::unique_ptr<PassageSamples> samples_; // being fed
    Lead lead_ = Lead::nobody;
    double askedAt_ = 0;    // moments of the clock: when the device was asked for
    double tookAt_ = 0;     // when it last took samples
    double fedFrom_ = 0;    // when it took the first
    double startLag_ = 0.1; // seconds from the first sample written to when it is heard, as it was the last time

    std::atomic<float> volume_ = 1;
    float writtenVolume_ = 1;                  // of the latest sample; the queue's
    std::atomic<std::uint64_t> finishing_ = 0; // the revision whose sound is being finished; 0 when it need not be
    SerialQueue finisher_{"com.tavaro.preview.enhance"};
    SerialQueue queue_{"com.tavaro.preview.sound", SerialQueue::Urgency::prompt};
};

}
