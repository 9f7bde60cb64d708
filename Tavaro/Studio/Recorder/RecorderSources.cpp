#include <Tavaro/Studio/Recorder/RecorderSources.h>

#include <Tavaro/Model/Recording/RecordingChoice.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCore/Errors/Error.h>

#include <QLoggingCategory>

#include <algorithm>
#include <map>
#include <unistd.h>
#include <utility>

namespace tavaro {

namespace {

constexpr QSize tile{320, 200};
constexpr QSize wholeDisplay{1280, 800};
QString const areaStillID = QStringLiteral("the area's display");

QString text(std::string const& value) { return QString::fromStdString(value); }

QString sizeText(PixelRect const& frame) {
    return frame.isEmpty() ? QString() : QStringLiteral("%1 × %2").arg(frame.width).arg(frame.height);
}

ListedSource listed(CaptureSource const& source, QString const& name, QString const& detail) {
    return {text(sourceText(source)), name, detail, source};
}

std::vector<ListedSource> displaysIn(SourceList const& list) {
    std::vector<ListedSource> result;
    for (auto const& display : list.displays) {
        auto const name = display.name.empty() ? display.id : display.name;
        auto const size = sizeText(display.frame);
        bool const isOneOfMany = display.isMain && list.displays.size() > 1;
        result.push_back(listed(DisplaySource{display.id}, text(name),
                                isOneOfMany ? RecorderSources::tr("%1, main display").arg(size) : size));
    }
    return result;
}

/// Not those of this program, nor those that show nothing now.
bool isOffered(WindowInfo const& window) { return !window.isMinimized && window.pid != ::getpid(); }

std::vector<ListedSource> windowsIn(SourceList const& list) {
    std::vector<ListedSource> result;
    for (auto const& window : list.windows) {
        if (!isOffered(window)) continue;
        auto const& name = window.title.empty() ? window.application : window.title;
        auto const size = sizeText(window.frame);
        bool const namesItself = window.application.empty() || name == window.application;
        result.push_back(listed(WindowSource{window.window}, text(name),
                                namesItself ? size : QStringLiteral("%1, %2").arg(text(window.application), size)));
    }
    return result;
}

/// Alphabetically, since the order of windows changes all the time.
std::vector<ListedSource> applicationsIn(SourceList const& list) {
    std::map<std::string, int> windows;
    for (auto const& window : list.windows)
        if (isOffered(window) && !window.application.empty()) ++windows[window.application];
    std::vector<ListedSource> result;
    for (auto const& [name, count] : windows)
        result.push_back(
            listed(ApplicationSource{name}, text(name),
                   count == 1 ? RecorderSources::tr("1 window") : RecorderSources::tr("%1 windows").arg(count)));
    return result;
}

}

RecorderSources::RecorderSources(MainQueue& queue, Preferences& preferences, Desktop desktop,
                                 LiveStills::Take const& take)
    : preferences_(preferences)
    , desktop_(desktop)
    , chosen_(text(preferences.get(sourceChosen)))
    , stills_(queue, take) {
    if (auto const source = sourceOfText(chosen_.toStdString()))
        if (auto const* const area = std::get_if<AreaSource>(&*source)) area_.setSource(*area);
    connect(&stills_, &LiveStills::taken, this, &RecorderSources::takeStill);
    connect(&area_, &AreaModel::settled, this, [this] {
        if (isArea()) chooseArea();
    });
}

QString RecorderSources::chosenName() const {
    if (isArea()) return tr("Area of %1 × %2").arg(area_.width()).arg(area_.height());
    for (auto const* const model : {&displays_, &windows_, &applications_})
        if (auto const* const source = model->find(chosen_)) return source->name;
    return {};
}

void RecorderSources::choose(QString const& id) {
    if (id == chosen_) return;
    chosen_ = id;
    keep(id);
    watchStills();
    Q_EMIT chosenChanged();
}

void RecorderSources::chooseArea() {
    if (!isArea()) beforeArea_ = chosen_;
    choose(text(sourceText(area_.source())));
}

bool RecorderSources::isThere(QString const& id) const {
    return displays_.find(id) || windows_.find(id) || applications_.find(id);
}

void RecorderSources::leaveArea() {
    if (!isArea()) return;
    auto const* const main = display({});
    choose(isThere(beforeArea_) ? beforeArea_ : text(sourceText(DisplaySource{main ? main->id : ""})));
}

void RecorderSources::keep(QString const& id) {
    try {
        preferences_.set(sourceChosen, id.toStdString());
    } catch (Error const& error) {
        qWarning("What is recorded next time could not be kept: %s", error.what());
    }
}

void RecorderSources::show(SourceList const& list) {
    known_ = list.displays;
    displays_.update(displaysIn(list));
    windows_.update(windowsIn(list));
    applications_.update(applicationsIn(list));
    area_.setDisplays(list.displays);
    QStringList limits;
    for (auto const& limit : list.limits) limits << text(limit);
    bool const isSame = limits == limits_ && problem_.isEmpty();
    limits_ = limits;
    problem_.clear();
    if (!isSame) Q_EMIT limitsChanged();
    chooseAtFirst();
    watchStills();
    Q_EMIT chosenChanged();
}

/// The main display, where nobody has chosen yet, or what was chosen in another session has gone with it.
void RecorderSources::chooseAtFirst() {
    auto const* const main = display({});
    if (!main || std::exchange(hasChosenAtFirst_, true)) return;
    auto const id = text(sourceText(DisplaySource{main->id}));
    if (chosen_.isEmpty())
        chosen_ = id;
    else if (chosenName().isEmpty())
        choose(id);
}

void RecorderSources::fail(QString const& sentence) {
    if (sentence == problem_) return;
    problem_ = sentence;
    for (auto* const model : {&displays_, &windows_, &applications_}) model->update({});
    watchStills();
    Q_EMIT limitsChanged();
    Q_EMIT chosenChanged();
}

void RecorderSources::watchStills() {
    std::vector<LiveStills::Wanted> wanted;
    if (isArea() && !problem_.size())
        wanted.push_back({areaStillID, DisplaySource{area_.source().display}, wholeDisplay});
    for (auto const* const model : {&displays_, &windows_, &applications_})
        for (auto const& source : model->sources()) wanted.push_back({source.id, source.source, tile});
    stills_.setWanted(std::move(wanted));
}

void RecorderSources::takeStill(QString const& id, QImage const& still) {
    for (auto* const model : {&displays_, &windows_, &applications_}) model->setStill(id, still);
    if (id != areaStillID) return;
    areaStill_ = still;
    Q_EMIT areaStillChanged();
}

DisplayInfo const* RecorderSources::display(std::string const& id) const {
    for (auto const& one : known_)
        if (id.empty() ? one.isMain : one.id == id) return &one;
    return nullptr;
}

std::optional<PixelRect> RecorderSources::placeOf(CaptureSource const& source) const {
    if (auto const* const whole = std::get_if<DisplaySource>(&source)) {
        auto const* const found = display(whole->id);
        return found ? std::optional(found->frame) : std::nullopt;
    }
    auto const* const area = std::get_if<AreaSource>(&source);
    if (!area) return std::nullopt;
    auto place = area->rect;
    if (auto const* const found = area->display.empty() ? nullptr : display(area->display)) {
        place.x += found->frame.x;
        place.y += found->frame.y;
    }
    return place;
}

}
