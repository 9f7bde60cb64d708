#include <Tavaro/Studio/Recorder/TrayFace.h>

namespace tavaro {

TrayFace::TrayFace(QObject& item, RecorderModel& recorder) : QDBusAbstractAdaptor(&item), recorder_(recorder) {
    connect(&recorder, &RecorderModel::changed, this, &TrayFace::follow);
}

QString TrayFace::title() const {
    switch (phase_) {
    case RecorderModel::Idle: return tr("Tavaro");
    case RecorderModel::Countdown: return tr("Tavaro: a take begins");
    case RecorderModel::Recording: return tr("Tavaro records");
    case RecorderModel::Paused: return tr("Tavaro: the take is paused");
    case RecorderModel::Finishing: return tr("Tavaro saves the take");
    case RecorderModel::ThrownAway: return tr("Tavaro: the take is thrown away");
    }
    return {};
}

QString TrayFace::iconName() const {
    if (phase_ == RecorderModel::Recording) return QStringLiteral("media-record");
    if (phase_ == RecorderModel::Paused) return QStringLiteral("media-playback-pause");
    return QStringLiteral("com.tavaro.Tavaro");
}

void TrayFace::Activate(int /*x*/, int /*y*/) {
    if (phase_ == RecorderModel::Countdown || recorder_.isTaking()) return recorder_.stop();
    Q_EMIT windowWanted();
}

void TrayFace::SecondaryActivate(int /*x*/, int /*y*/) {
    phase_ == RecorderModel::Idle ? recorder_.record() : recorder_.togglePause();
}

void TrayFace::ContextMenu(int /*x*/, int /*y*/) { Q_EMIT windowWanted(); }

void TrayFace::follow() {
    if (phase_ == recorder_.phase()) return;
    phase_ = recorder_.phase();
    Q_EMIT NewTitle();
    Q_EMIT NewIcon();
}

}
