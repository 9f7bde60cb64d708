#include <Tavaro/Studio/Exports/ExportText.h>

#include <TavaroCore/Export/ExportFile.h>

#include <algorithm>
#include <cmath>

namespace tavaro::exportText {

namespace {

QString text(std::string_view value) { return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size())); }

/// To a step that is small for the number, as people tell guesses.
double rounded(double value, double step) { return std::max(std::round(value / step), 1.0) * step; }

/// "12–20 MB" of "12 MB" and "20 MB", or both as they are.
QString span(QString const& least, QString const& most) {
    if (least == most) return least;
    auto const unit = most.section(QLatin1Char(' '), -1);
    bool const hasOneUnit = least.count(QLatin1Char(' ')) == 1 && least.section(QLatin1Char(' '), -1) == unit;
    return (hasOneUnit ? least.section(QLatin1Char(' '), 0, 0) : least) + QStringLiteral("–") + most;
}

}

QString picture(ExportSettings const& settings) {
    return QStringLiteral("%1 × %2 · %3 fps").arg(settings.size.width).arg(settings.size.height).arg(settings.fps);
}

QString all(ExportSettings const& settings) {
    auto const container = text(displayName(settings.container));
    if (settings.container == ExportContainer::gif) return picture(settings) + QStringLiteral(" · ") + container;
    return picture(settings) + QStringLiteral(" · %1, %2").arg(container, text(displayName(settings.codec)));
}

QString size(ExportEstimate::Span const& bytes) {
    auto const shown = [](double value) {
        return QString::fromStdString(fileSizeText(static_cast<std::int64_t>(std::clamp(value, 1000.0, 1e18))));
    };
    return span(shown(bytes.least), shown(bytes.most));
}

QString about(double seconds) {
    constexpr double aMinute = 60, anHour = 3600;
    if (seconds < aMinute - 2.5) return QStringLiteral("%1 s").arg(rounded(seconds, seconds < 10 ? 1 : 5));
    constexpr double most = 1e12; // minutes of films that documents may ask for
    auto const minutes = static_cast<qint64>(std::min(rounded(seconds / aMinute, 1), most));
    if (seconds < anHour - aMinute / 2) return QStringLiteral("%1 min").arg(minutes);
    return QStringLiteral("%1 h %2 min").arg(minutes / 60).arg(minutes % 60);
}

QString time(std::optional<ExportEstimate::Span> const& seconds) {
    return seconds ? span(about(seconds->least), about(seconds->most)) : QString();
}

}
