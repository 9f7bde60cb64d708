#include <Tavaro/Studio/Editor/StepList.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <algorithm>

namespace tavaro {

namespace {

enum Role { name, maker, agent, when, isUndone, isCurrent };
constexpr std::array<char const*, 6> roleTexts{"name", "maker", "agent", "when", "isUndone", "isCurrent"};

QString makerName(StepMaker maker) {
    switch (maker) {
    case StepMaker::person: return QStringLiteral("person");
    case StepMaker::agent: return QStringLiteral("agent");
    case StepMaker::otherProgram: return QStringLiteral("otherProgram");
    }
    return {};
}

}

StepList::StepList(EditorSession& session) : session_(session) {
    QObject::connect(&session, &EditorSession::stepsChanged, this, [this] {
        noteTimes();
        update();
    });
    for (auto const& step : session.project().steps()) times_[step.number]; // nobody saw when
    update();
}

int StepList::doneSteps() const { return static_cast<int>(std::ranges::count(steps_, false, &ListedStep::isUndone)); }

/// The history does not say when; here each is seen as soon as it is made.
void StepList::noteTimes() {
    auto const now = QTime::currentTime();
    for (auto const& step : session_.project().steps()) times_.try_emplace(step.number, now);
}

void StepList::update() {
    steps_ = session_.project().steps();
    auto const current = static_cast<std::size_t>(doneSteps());
    std::vector<Row> rows;
    for (std::size_t i = 0; i < steps_.size(); ++i)
        rows.push_back({steps_[i].number, (steps_[i].isUndone ? 1u : 0u) + (i + 1 == current ? 2u : 0u)});
    showRows(rows);
    Q_EMIT currentChanged();
}

QHash<int, QByteArray> StepList::roleNames() const {
    QHash<int, QByteArray> names;
    for (std::size_t i = 0; i < roleTexts.size(); ++i) names.insert(firstRole + static_cast<int>(i), roleTexts[i]);
    return names;
}

QVariant StepList::data(QModelIndex const& index, int role) const {
    if (!index.isValid()) return {};
    auto const step = std::ranges::find(steps_, key(index.row()), &ListedStep::number);
    if (step == steps_.end()) return {};
    switch (role - firstRole) {
    case Role::name: return toQString(step->name);
    case Role::maker: return makerName(step->maker);
    case Role::agent: return toQString(step->agent);
    case Role::when: return times_.contains(step->number) ? times_.at(step->number).toString(u"HH:mm:ss") : QString();
    case Role::isUndone: return step->isUndone;
    case Role::isCurrent: return step - steps_.begin() + 1 == doneSteps();
    default: return role == Qt::DisplayRole ? toQString(step->name) : QVariant();
    }
}

void StepList::goTo(int row) {
    auto const wanted = std::clamp(row + 1, 0, count());
    // Each step that is gone back or forward changes the list; one that is refused ends it.
    for (auto done = doneSteps(); done != wanted; done = doneSteps()) {
        if (done > wanted)
            session_.undo();
        else
            session_.redo();
        if (doneSteps() == done) return;
    }
}

}
