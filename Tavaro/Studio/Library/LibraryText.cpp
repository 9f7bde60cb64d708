#include <Tavaro/Studio/Library/LibraryText.h>

#include <TavaroCore/Values/Timecode.h>

#include <QLocale>
#include <QTimeZone>

namespace tavaro::libraryText {

namespace {

QString counted(qint64 count, char const* one, char const* many) {
    return count == 1 ? QLatin1String(one) : QStringLiteral("%1 %2").arg(count).arg(QLatin1String(many));
}

}

QString age(Date const& moment, QDateTime const& now) {
    constexpr qint64 minute = 60, hour = 60 * minute;
    auto const then = QDateTime::fromMSecsSinceEpoch(moment.milliseconds, now.timeZone());
    auto const seconds = then.secsTo(now);
    auto const days = then.date().daysTo(now.date());
    if (seconds < minute) return QStringLiteral("Just now");
    if (seconds < hour) return counted(seconds / minute, "A minute ago", "minutes ago");
    if (days == 0 || seconds < 6 * hour) return counted(seconds / hour, "An hour ago", "hours ago");
    if (days == 1) return QStringLiteral("Yesterday");
    if (days < 7) return counted(days, "", "days ago");
    return QLocale(QLocale::English).toString(then.date(), QStringLiteral("d MMMM yyyy"));
}

QString length(double seconds) { return QString::fromStdString(Timecode::format(seconds)); }

QString text(std::filesystem::path const& path) { return QString::fromStdString(path.string()); }

std::filesystem::path path(QString const& text) { return text.toStdString(); }

}
