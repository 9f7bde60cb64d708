#include <Tavaro/Studio/Editor/RecordedProgress.h>

#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroCore/Values/Timecode.h>

#include <QObject>

#include <algorithm>

namespace tavaro {

double RecordedProgress::share() const { return total > 0 ? std::clamp(seconds / total, 0.0, 1.0) : -1; }

QString RecordedProgress::words() const {
    auto const clock = [](double at) { return toQString(Timecode::format(at)); };
    return total > 0 ? QObject::tr("%1 of %2").arg(clock(seconds), clock(total)) : clock(seconds);
}

}
