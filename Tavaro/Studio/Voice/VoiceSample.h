#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Jobs/Job.h>
#include <Tavaro/Studio/Playback/SoundSample.h>
#endif
#include <Tavaro/Studio/Voice/VoiceMeans.h>

#include <QObject>
#include <QString>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

class MainQueue;
class VoiceOffer;

/// A voice heard before it is chosen: one sentence, made once for each voice and speed and then kept, since a service
/// is paid for it. So one that is not to be heard any more is made to its end.
class VoiceSample final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isMaking READ isMaking NOTIFY changed)
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY changed)
    Q_PROPERTY(QString failure READ failure NOTIFY changed)

public:
    VoiceSample(MainQueue& queue, VoiceOffer const& offer, VoiceMeans const& means);
    ~VoiceSample() override;

    /// The voice that is chosen, at its speed.
    Q_INVOKABLE void hear();
    Q_INVOKABLE void stop();
    bool isMaking() const { return wanted_.has_value(); }
    bool isPlaying() const { return isPlaying_; }
    QString failure() const { return failure_; }

Q_SIGNALS:
    void changed();

private:
    struct Made {
        std::filesystem::path file;
        std::string failure; // a sentence where there is none
    };

    struct Making {
        VoiceSettings voice;
        std::unique_ptr<Job<Made>> job;
    };

    void make(VoiceSettings const& voice);
    void finish(VoiceSettings const& voice);
    void play(Job<Made>& job);
    void end(std::uint64_t number, std::string const& problem);

    MainQueue& queue_;
    VoiceOffer const& offer_;
    VoiceMeans const& means_;
    std::vector<Making> making_;
    std::optional<VoiceSettings> wanted_; // is played when it is made
    QString failure_;
    bool isPlaying_ = false;
    std::uint64_t number_ = 0; // of what is heard; the main thread's
    std::unique_ptr<SoundSample> sound_;
};

}
