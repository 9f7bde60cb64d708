#pragma once

#include <TavaroCapture/Sources/SoundState.h>

#include <QObject>
#include <QString>

namespace tavaro {

/// How loud a sound is, as a bar shows it.
class SoundMeter : public QObject {
    Q_OBJECT
    Q_PROPERTY(double level READ level NOTIFY changed) // 0…1, of 60 dB
    Q_PROPERTY(double peak READ peak NOTIFY changed)   // the same, of the last moments
    Q_PROPERTY(bool isListening READ isListening NOTIFY changed)
    Q_PROPERTY(QString warning READ warning NOTIFY changed)         // a sentence; empty: all is well
    Q_PROPERTY(QString description READ description NOTIFY changed) // for who cannot see it

public:
    explicit SoundMeter(QObject* parent = nullptr) : QObject(parent) {}

    double level() const { return level_; }
    double peak() const { return peak_; }
    bool isListening() const { return isListening_; }
    QString const& warning() const { return warning_; }
    QString description() const;

    /// `now` is a moment of the media clock, in seconds.
    void show(SoundState const& state, double now);
    /// Why it cannot be heard.
    void fail(QString const& sentence);
    void clear();

Q_SIGNALS:
    void changed();

private:
    void set(double level, double peak, QString const& warning, bool isListening);

    double level_ = 0;
    double peak_ = 0;
    double peakAt_ = 0; // moment of the media clock
    bool isListening_ = false;
    QString warning_;
};

}
