#include <Tavaro/Studio/Voice/ScriptLines.h>

#include <Tavaro/Model/Operations/VoiceoverOperations.h>
#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>
#include <Tavaro/Studio/Voice/VoiceOffer.h>
#include <Tavaro/Studio/Voice/VoiceoverRun.h>

#include <TavaroCore/Records/Hash.h>
#include <TavaroVoice/Script/ScriptPlan.h>
#include <TavaroVoice/Script/ScriptText.h>
#include <TavaroVoice/Voiceover/LineAudio.h>
#include <TavaroVoice/Voiceover/Placement.h>

#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavaro {

namespace {

enum Role { identity, text, start, stage, failure };
constexpr std::array<char const*, 5> roleTexts{"identity", "text", "start", "stage", "failure"};

std::vector<VoiceoverSegment> const& linesOf(DemoProject const& project) {
    static std::vector<VoiceoverSegment> const none;
    return project.voiceover ? project.voiceover->segments : none;
}

VoiceoverSegment* lineOf(DemoProject& project, UUID const& id) {
    if (!project.voiceover) return nullptr;
    auto& lines = project.voiceover->segments;
    auto const found = std::ranges::find(lines, id, &VoiceoverSegment::id);
    return found == lines.end() ? nullptr : &*found;
}

bool isHeard(VoiceoverSegment const& line) { return line.audioAsset.has_value(); }

/// A narration that is heard is laid out anew; one that is only being written leaves the film alone.
void place(DemoProject& project) {
    if (std::ranges::any_of(linesOf(project), isHeard)) placeVoiceover(project);
}

/// What the text is now, and whether the sound is that of it.
void write(VoiceoverSegment& line, std::string const& text, VoiceSettings const& voice) {
    line.text = text;
    line.isDirty = !line.audioAsset || *line.audioAsset != lineAsset(text, voice);
}

}

ScriptLines::ScriptLines(EditorSession& session, VoiceOffer const& offer, VoiceoverRun const& run)
    : session_(session)
    , offer_(offer)
    , run_(run) {
    QObject::connect(&session, &EditorSession::documentChanged, this, &ScriptLines::update);
    QObject::connect(&offer, &VoiceOffer::changed, this, &ScriptLines::update);
    QObject::connect(&run, &VoiceoverRun::changed, this, &ScriptLines::update);
    QObject::connect(&session, &EditorSession::playheadChanged, this, &ScriptLines::follow);
    update();
}

// Rows

void ScriptLines::update() {
    voice_ = offer_.settings();
    spans_.clear();
    std::vector<VoiceoverSegment const*> lines;
    for (auto const& line : linesOf(session_.document())) lines.push_back(&line);
    std::ranges::stable_sort(lines, {}, &VoiceoverSegment::start);
    std::vector<Row> rows;
    for (auto const* line : lines) {
        auto content = hashOf(*line);
        detail::mixHash(content, qHash(stageOf(*line)));
        detail::mixHash(content, qHash(run_.failureOf(*line)));
        rows.push_back({line->id, content});
        spans_.push_back({line->start, line->duration()});
    }
    showRows(rows);
    follow();
    Q_EMIT planChanged();
}

void ScriptLines::follow() {
    auto const at = session_.playhead();
    auto const behind = std::ranges::upper_bound(spans_, at, {}, &TimeRange::start);
    bool const isSpoken = behind != spans_.begin() && at < std::prev(behind)->end();
    int const now = isSpoken ? static_cast<int>(behind - spans_.begin()) - 1 : -1;
    if (std::exchange(current_, now) != now) Q_EMIT currentChanged();
}

VoiceoverSegment const* ScriptLines::line(UUID const& id) const {
    auto const& lines = linesOf(session_.document());
    auto const found = std::ranges::find(lines, id, &VoiceoverSegment::id);
    return found == lines.end() ? nullptr : &*found;
}

QString ScriptLines::stageOf(VoiceoverSegment const& line) const {
    if (!hasWords(line.text)) return QStringLiteral("empty");
    if (run_.isWaiting(line.id)) return QStringLiteral("waiting");
    if (!isHeard(line)) return QStringLiteral("unspoken");
    return needsGeneration(line, voice_) ? QStringLiteral("changed") : QStringLiteral("spoken");
}

QHash<int, QByteArray> ScriptLines::roleNames() const {
    QHash<int, QByteArray> names;
    for (std::size_t i = 0; i < roleTexts.size(); ++i) names.insert(firstRole + static_cast<int>(i), roleTexts[i]);
    return names;
}

QVariant ScriptLines::data(QModelIndex const& index, int role) const {
    auto const* shown = index.isValid() ? line(key(index.row())) : nullptr;
    if (!shown) return {};
    switch (role - firstRole) {
    case Role::identity: return toVariant(shown->id);
    case Role::text: return toQString(shown->text);
    case Role::start: return shown->start;
    case Role::stage: return stageOf(*shown);
    case Role::failure: return run_.failureOf(*shown);
    default: return role == Qt::DisplayRole ? toQString(shown->text) : QVariant();
    }
}

// The script as a whole

QVariantList ScriptLines::styles() {
    QVariantList rows;
    for (auto const name : namesOf(AutoDirectorScript::Style{})) {
        auto const style = *enumNamed<AutoDirectorScript::Style>(name);
        rows.push_back(QVariantMap{{QStringLiteral("name"), toQString(name)},
                                   {QStringLiteral("title"), toQString(displayName(style))},
                                   {QStringLiteral("detail"), toQString(detailOf(style))}});
    }
    return rows;
}

bool ScriptLines::draft(QString const& style, QString const& product) {
    auto const named = enumNamed<AutoDirectorScript::Style>(style.toStdString());
    return named && session_.perform(operations::DraftScript{product.trimmed().toStdString(), *named});
}

bool ScriptLines::paste(QString const& script) {
    return session_.perform(operations::SetScript{script.toStdString(), std::nullopt});
}

QString ScriptLines::clipboardText() { return QGuiApplication::clipboard()->text(); }

QString ScriptLines::script() const {
    auto const& plan = session_.document().voiceover;
    return plan ? toQString(scriptText(linesOf(*plan))) : QString();
}

// Its lines

bool ScriptLines::edit(char const* step, FunctionRef<void(DemoProject&)> change) {
    return session_.edit(step, [&](DemoProject& project) { change(project); });
}

bool ScriptLines::setText(QString const& identity, QString const& text) {
    auto const id = UUID::parse(identity.toStdString());
    return id && edit("Edit Script", [&](DemoProject& project) {
               if (auto* line = lineOf(project, *id)) write(*line, text.simplified().toStdString(), voice_);
           });
}

bool ScriptLines::setStart(QString const& identity, double start) {
    auto const id = UUID::parse(identity.toStdString());
    return id && std::isfinite(start) && edit("Move Voice-Over Line", [&](DemoProject& project) {
               auto* line = lineOf(project, *id);
               if (!line) return;
               line->start = std::clamp(start, 0.0, std::max(project.duration(), 0.0));
               line->anchor = line->start;
               place(project);
           });
}

bool ScriptLines::remove(QString const& identity) {
    auto const id = UUID::parse(identity.toStdString());
    return id && edit("Delete Voice-Over Line", [&](DemoProject& project) {
               if (!project.voiceover) return;
               std::erase_if(project.voiceover->segments, [&](auto const& line) { return line.id == *id; });
               place(project);
           });
}

QString ScriptLines::add() {
    VoiceoverSegment line;
    line.start = session_.playhead();
    line.anchor = line.start;
    bool const isAdded = edit("Add Voice-Over Line", [&](DemoProject& project) {
        if (!project.voiceover) project.voiceover.emplace();
        auto& lines = project.voiceover->segments;
        lines.insert(std::ranges::upper_bound(lines, line.start, {}, &VoiceoverSegment::start), line);
    });
    return isAdded ? toQString(line.id.text()) : QString();
}

// How it is laid on the film

bool ScriptLines::holdsFrame() const {
    auto const& plan = session_.document().voiceover;
    return plan && plan->stretchesVideoToFit;
}

void ScriptLines::setHoldsFrame(bool holds) {
    if (holds == holdsFrame()) return;
    edit("Change Voice-Over", [&](DemoProject& project) {
        if (!project.voiceover) return;
        project.voiceover->stretchesVideoToFit = holds;
        place(project);
    });
}

bool ScriptLines::ducks() const {
    auto const& plan = session_.document().voiceover;
    return !plan || plan->ducksOtherAudio;
}

void ScriptLines::setDucks(bool ducks) {
    if (ducks == this->ducks()) return;
    edit("Change Voice-Over", [&](DemoProject& project) {
        if (project.voiceover) project.voiceover->ducksOtherAudio = ducks;
    });
}

double ScriptLines::duckAmount() const {
    auto const& plan = session_.document().voiceover;
    return plan ? plan->duckAmount : VoiceoverPlan{}.duckAmount;
}

void ScriptLines::setDuckAmount(double amount) {
    if (amount == duckAmount()) return;
    edit("Change Voice-Over", [&](DemoProject& project) {
        if (project.voiceover) project.voiceover->duckAmount = std::clamp(amount, 0.0, 1.0);
    });
}

bool ScriptLines::hasSound() const { return std::ranges::any_of(linesOf(session_.document()), isHeard); }

}
