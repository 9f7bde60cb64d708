#include <Tavaro/Studio/Editor/CaptionEditor.h>

#include <Tavaro/Model/Operations/CaptionOperations.h>
#include <Tavaro/Studio/Editor/CaptionEdits.h>
#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Editor/ItemEdits.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroCore/Captions/Subtitles.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/FileBytes.h>
#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr std::uint64_t largestFile = 16 << 20; // bytes of subtitles

std::filesystem::path pathOf(QUrl const& file) { return file.toLocalFile().toStdString(); }

std::string readSubtitleFile(std::filesystem::path const& file) {
    auto const bytes = FileBytes::read(file, largestFile);
    if (!bytes) throw Error(fmt::format("There is no file “{}”.", excerpt(file.filename().string())));
    return std::string(bytes->bytes());
}

}

CaptionEditor::CaptionEditor(EditorSession& session, SideQueue& files) : session_(session), files_(files) {
    observation_ = session.project().observe([this](ProjectChange const& change) {
        if (change.fields.contains("captions")) follow();
    });
    QObject::connect(&session, &EditorSession::playheadChanged, this, &CaptionEditor::follow);
    follow();
}

void CaptionEditor::follow() {
    auto const& captions = session_.document().captions;
    auto const* shown = captions.cue(session_.playhead());
    auto const row = shown ? static_cast<int>(shown - captions.cues.data()) : -1;
    if (std::exchange(current_, row) != row) Q_EMIT currentChanged();
}

int CaptionEditor::rowBefore(double time) const {
    auto const& cues = session_.document().captions.cues;
    auto best = cues.end();
    for (auto cue = cues.begin(); cue != cues.end(); ++cue) {
        if (cue->start <= time && (best == cues.end() || cue->start >= best->start)) best = cue;
    }
    return best == cues.end() ? -1 : static_cast<int>(best - cues.begin());
}

// Edits

bool CaptionEditor::setText(QString const& caption, QString const& text) {
    auto const id = UUID::parse(caption.toStdString());
    return id && session_.edit("Edit Caption",
                               [&](DemoProject& project) { setCaptionText(project, *id, text.toStdString()); });
}

bool CaptionEditor::setStart(QString const& caption, double start) {
    auto const& cues = session_.document().captions.cues;
    auto const id = UUID::parse(caption.toStdString());
    auto const cue = id ? std::ranges::find(cues, *id, &CaptionCue::id) : cues.end();
    return cue != cues.end() && std::isfinite(start) && shift(start - cue->start, {caption});
}

bool CaptionEditor::setEnd(QString const& caption, double end) {
    auto const id = UUID::parse(caption.toStdString());
    return id && std::isfinite(end) && session_.edit("Trim Caption", [&](DemoProject& project) {
        moveItemEdge(project, *id, ClipEdge::trailing, end);
    });
}

bool CaptionEditor::split(QString const& caption, int position) {
    auto const id = UUID::parse(caption.toStdString());
    auto const& cues = session_.document().captions.cues;
    auto const cue = id ? std::ranges::find(cues, *id, &CaptionCue::id) : cues.end();
    if (cue == cues.end()) return false;
    auto const byte = static_cast<std::size_t>(toQString(cue->text).left(position).toUtf8().size());
    return session_.edit("Split Caption", [&](DemoProject& project) { splitCaption(project, *id, byte); });
}

bool CaptionEditor::joinWithNext(QString const& caption) {
    auto const id = UUID::parse(caption.toStdString());
    return id && session_.edit("Join Captions", [&](DemoProject& project) { joinCaptionWithNext(project, *id); });
}

bool CaptionEditor::remove(QString const& caption) {
    auto const id = UUID::parse(caption.toStdString());
    return id && session_.edit("Delete Caption", [&](DemoProject& project) { removeItems(project, std::array{*id}); });
}

bool CaptionEditor::shift(double by, QStringList const& captions) {
    std::vector<UUID> moved;
    for (auto const& name : captions) {
        if (auto const id = UUID::parse(name.toStdString())) moved.push_back(*id);
    }
    if (captions.isEmpty()) {
        for (auto const& cue : session_.document().captions.cues) moved.push_back(cue.id);
    }
    return session_.edit(moved.size() == 1 ? "Move Caption" : "Move Captions",
                         [&](DemoProject& project) { moveItems(project, moved, by); });
}

// Times

QString CaptionEditor::timeText(double seconds) {
    return toQString(Timecode::format(seconds, Timecode::Fraction::hundredths));
}

double CaptionEditor::timeOf(QString const& text) {
    constexpr double notATime = -1;
    auto const parts = QString(text).simplified().replace(u',', u'.').split(u':');
    if (parts.size() > 3) return notATime;
    double seconds = 0;
    for (auto const& part : parts) {
        bool isNumber = false;
        auto const number = part.toDouble(&isNumber);
        if (!isNumber || !(number >= 0) || !std::isfinite(number)) return notATime;
        seconds = seconds * 60 + number;
    }
    return seconds;
}

// Files

void CaptionEditor::importFrom(QUrl const& file) {
    auto const path = pathOf(file);
    files_.ask([path] { return readSubtitleFile(path); },
               [this, name = path.filename().string()](Outcome<std::string> const& read) {
                   session_.attempt([&] {
                       session_.perform(operations::CaptionsFromSubtitles{.subtitles = read.value(), .file = name});
                   });
               });
}

void CaptionEditor::exportTo(QUrl const& file) {
    auto const path = pathOf(file);
    auto const& document = session_.document();
    // Files have the film's times, in which a title card comes first.
    auto const write = [path, cues = document.captions.cues, offset = document.introDuration()] {
        auto const text = path.extension() == ".vtt" ? webVTTText(cues, offset) : subRipText(cues, offset);
        writeFileAtomically(path, text, PendingFile::IfTaken::replace);
        return path.filename().string();
    };
    files_.ask(write, [this](Outcome<std::string> const& name) {
        session_.attempt([&] { Q_EMIT written(toQString(name.value())); });
    });
}

}
