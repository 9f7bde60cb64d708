#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Voice/VoiceoverListing.h>
#endif
#include <Tavaro/Studio/Voice/VoiceMeans.h>

#include <TavaroCore/Records/UUID.h>

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace tavaro {

class EditorSession;
class MainQueue;
class VoiceOffer;
struct VoiceoverSegment;

/// Speaks an editor's narration beside the window: what it would cost, which lines are still to come, why some failed.
/// All that comes of a run is one step, also of one that is cancelled, since its sound may have been paid for.
class VoiceoverRun final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY changed)
    Q_PROPERTY(bool isStopping READ isStopping NOTIFY changed)
    Q_PROPERTY(int done READ done NOTIFY changed) // lines, with those that failed
    Q_PROPERTY(int total READ total NOTIFY changed)
    Q_PROPERTY(QString failure READ failure NOTIFY changed) // why it ended before its end
    Q_PROPERTY(bool isCostKnown READ isCostKnown NOTIFY changed)
    Q_PROPERTY(int lines READ lines NOTIFY changed)           // to be spoken
    Q_PROPERTY(int characters READ characters NOTIFY changed) // of those that were never spoken before
    Q_PROPERTY(bool isPaid READ isPaid NOTIFY changed)
    Q_PROPERTY(QString cost READ cost NOTIFY changed) // in words
    Q_PROPERTY(bool makesCaptions READ makesCaptions WRITE setMakesCaptions NOTIFY changed)

public:
    VoiceoverRun(MainQueue& queue, EditorSession& session, VoiceOffer& offer, VoiceMeans const& means);
    ~VoiceoverRun() override;

    /// All lines that changed or were never spoken.
    Q_INVOKABLE void generate();
    /// One line, whatever sound it has.
    Q_INVOKABLE void generateLine(QString const& identity);
    /// Comes to its end soon; what was spoken until then stays.
    Q_INVOKABLE void cancel();
    /// Captions of what is spoken, in place of those that there are.
    Q_INVOKABLE void makeCaptions();

    bool isRunning() const { return job_ != nullptr; }
    bool isStopping() const { return isStopping_; }
    int done() const { return done_; }
    int total() const { return total_; }
    QString failure() const { return failure_; }
    bool isCostKnown() const { return cost_.has_value(); }
    int lines() const;
    int characters() const { return cost_ ? static_cast<int>(cost_->characters) : 0; }
    bool isPaid() const { return cost_ && cost_->isPaid; }
    QString cost() const;
    bool makesCaptions() const { return makesCaptions_; }
    void setMakesCaptions(bool makes);

    /// Whether it is still to be spoken in this run.
    bool isWaiting(UUID const& line) const { return waiting_.contains(line); }
    /// Why the last try of it failed; empty where it did not.
    QString failureOf(VoiceoverSegment const& line) const;

Q_SIGNALS:
    void changed();

private:
    using VoiceoverTask = Job<GeneratedVoiceover, VoiceoverProgress>;

    void begin(std::vector<UUID> only);
    void follow(VoiceoverProgress const& progress);
    void finish();
    void take(GeneratedVoiceover const& generated);
    void estimate();

    MainQueue& queue_;
    EditorSession& session_;
    VoiceOffer& offer_;
    VoiceMeans const& means_;
    std::unique_ptr<VoiceoverTask> job_;
    std::map<UUID, std::string> asked_; // the texts of the lines of this run
    std::set<UUID> waiting_;
    struct Failure {
        std::string text; // that was not spoken
        QString sentence;
    };
    std::map<UUID, Failure> failures_;
    QString failure_;
    int done_ = 0, total_ = 0;
    bool isStopping_ = false, makesCaptions_ = false;
    std::optional<VoiceoverCost> cost_;
    std::uint64_t estimates_ = 0; // that were asked for; the newest counts
    QTimer estimating_;
    SideQueue counting_;
};

}
