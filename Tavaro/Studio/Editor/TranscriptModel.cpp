#include <Tavaro/Studio/Editor/TranscriptModel.h>

#include <Tavaro/Model/Operations/CleanUpOperations.h>
#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroCore/Editing/RestoredWords.h>
#include <TavaroCore/Editing/TranscriptEdits.h>
#include <TavaroCore/Records/Hash.h>
#include <TavaroCore/Values/Timecode.h>

#include <QClipboard>
#include <QGuiApplication>

#include <array>
#include <string_view>

namespace tavaro {

namespace {

using Kind = TranscriptEntry::Kind;

constexpr double keptOfPauses = 0.25; // seconds, of a pause beside which a word stays

enum Role { html, time, first, entries };
constexpr std::array<char const*, 4> roleTexts{"html", "time", "first", "entries"};

bool concernsWords(ChangedFields const& fields) {
    return fields.contains("transcript") || fields.contains("timeline") || fields.contains("assetDurations");
}

/// In a view's characters.
int lengthOf(std::string const& text) {
    auto const isASCII = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    return static_cast<int>(std::ranges::all_of(text, isASCII) ? std::ssize(text) : toQString(text).size());
}

std::size_t contentOf(TranscriptEntry const& entry) {
    auto content = hashOf(entry.text);
    detail::mixHash(content, static_cast<std::size_t>(entry.kind));
    detail::mixHash(content, entry.isFiller ? 1 : 0);
    return content;
}

}

TranscriptModel::TranscriptModel(EditorSession& session) : session_(session) {
    observation_ = session.project().observe([this](ProjectChange const& change) {
        if (concernsWords(change.fields)) update();
    });
    QObject::connect(&session, &EditorSession::playheadChanged, this, &TranscriptModel::follow);
    QObject::connect(this, &TranscriptModel::colorsChanged, this, [this] {
        if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    });
    update();
}

// What is there

void TranscriptModel::update() {
    auto const keep = [&](int number) { return isEntry(number) ? std::optional(entry(number)) : std::nullopt; };
    auto const anchor = keep(anchor_), caret = keep(caret_);
    entries_ = transcriptEntries(session_.document(), showsCutWords_ ? CutWords::shown : CutWords::hidden);
    arrange();
    count();
    findMatches();
    auto const number = [&](auto const& kept) { return kept ? numberOf(*kept).value_or(-1) : -1; };
    setSelection(number(anchor), number(caret));
    follow();
    Q_EMIT textChanged();
}

/// Lays the entries out in paragraphs, and tells views what is different.
void TranscriptModel::arrange() {
    paragraphs_.clear(), positions_.clear(), words_.clear(), numbers_.clear();
    std::vector<Row> rows;
    int position = 0;
    for (int i = 0; i < entryCount(); ++i) {
        auto const& each = entry(i);
        if (each.beginsParagraph || paragraphs_.empty()) {
            ParagraphBegin const begin{each.word, each.occurrence};
            numbers_.emplace(begin, static_cast<int>(paragraphs_.size()));
            paragraphs_.push_back({.first = i});
            rows.push_back({begin, hashOf(each.range.start) + static_cast<std::size_t>(i)});
            position = 0;
        }
        ++paragraphs_.back().count;
        detail::mixHash(rows.back().content, contentOf(each));
        positions_.push_back(position);
        position += lengthOf(each.text) + 1;
        if (each.kind == Kind::word) words_.push_back(i);
    }
    showRows(rows);
}

void TranscriptModel::count() {
    fillers_ = pauses_ = cutWords_ = 0;
    for (auto const& each : entries_) {
        fillers_ += each.kind == Kind::word && each.isFiller ? 1 : 0;
        pauses_ += each.kind == Kind::pause ? 1 : 0;
        cutWords_ += each.kind == Kind::cutWord ? 1 : 0;
    }
}

bool TranscriptModel::isThere() const { return session_.document().transcript.has_value(); }

void TranscriptModel::setShowsCutWords(bool shows) {
    if (shows == showsCutWords_) return;
    showsCutWords_ = shows;
    update();
}

/// Null while views are told that it has gone.
TranscriptModel::Paragraph const* TranscriptModel::paragraphAt(int row) const {
    auto const found = numbers_.find(key(row));
    return found == numbers_.end() ? nullptr : &paragraphs_[static_cast<std::size_t>(found->second)];
}

QHash<int, QByteArray> TranscriptModel::roleNames() const {
    QHash<int, QByteArray> names;
    for (std::size_t i = 0; i < roleTexts.size(); ++i) names.insert(firstRole + static_cast<int>(i), roleTexts[i]);
    return names;
}

QVariant TranscriptModel::data(QModelIndex const& index, int role) const {
    auto const* paragraph = index.isValid() ? paragraphAt(index.row()) : nullptr;
    if (!paragraph) return {};
    switch (role - firstRole) {
    case Role::html: return htmlOf(*paragraph);
    case Role::time: return toQString(Timecode::format(entry(paragraph->first).range.start));
    case Role::first: return paragraph->first;
    case Role::entries: return paragraph->count;
    default: return role == Qt::DisplayRole ? textOf(*paragraph) : QVariant();
    }
}

QString TranscriptModel::textOf(Paragraph const& paragraph) const {
    std::string text;
    for (int i = 0; i < paragraph.count; ++i) {
        if (i > 0) text += ' ';
        text += entry(paragraph.first + i).text;
    }
    return toQString(text);
}

QString TranscriptModel::htmlOf(Paragraph const& paragraph) const {
    QString text;
    for (int i = 0; i < paragraph.count; ++i) {
        if (i > 0) text += QLatin1Char(' ');
        text += htmlOf(paragraph.first + i);
    }
    return text;
}

QString TranscriptModel::htmlOf(int number) const {
    auto const& each = entry(number);
    QString style;
    if (each.kind != Kind::word)
        style += QStringLiteral("color:%1;").arg(quietColor_.name());
    else if (each.isFiller)
        style += QStringLiteral("color:%1;").arg(fillerColor_.name());
    if (each.kind == Kind::cutWord) style += QStringLiteral("text-decoration:line-through;");
    if (isMatched(number)) style += QStringLiteral("background-color:%1;").arg(matchColor_.name());
    auto const text = textOf(number).toHtmlEscaped();
    return style.isEmpty() ? text : QStringLiteral("<span style=\"%1\">%2</span>").arg(style, text);
}

// Entries

QString TranscriptModel::textOf(int number) const {
    return isEntry(number) ? toQString(entry(number).text) : QString();
}
double TranscriptModel::timeOf(int number) const { return isEntry(number) ? entry(number).range.start : 0; }
bool TranscriptModel::isCut(int number) const { return isEntry(number) && entry(number).kind == Kind::cutWord; }

bool TranscriptModel::isCorrectable(int number) const { return isEntry(number) && entry(number).kind != Kind::pause; }

int TranscriptModel::paragraphOf(int number) const {
    if (!isEntry(number)) return -1;
    auto const behind = std::ranges::upper_bound(paragraphs_, number, {}, &Paragraph::first);
    return static_cast<int>(behind - paragraphs_.begin()) - 1;
}

int TranscriptModel::positionOf(int number) const {
    return isEntry(number) ? positions_[static_cast<std::size_t>(number)] : 0;
}
int TranscriptModel::endOf(int number) const { return positionOf(number) + static_cast<int>(textOf(number).size()); }

int TranscriptModel::entryAt(int paragraph, int position) const {
    if (paragraph < 0 || paragraph >= static_cast<int>(paragraphs_.size())) return -1;
    auto const& place = paragraphs_[static_cast<std::size_t>(paragraph)];
    auto const begin = positions_.begin() + place.first;
    auto const behind = std::upper_bound(begin, begin + place.count, position);
    return std::max(place.first, static_cast<int>(behind - positions_.begin()) - 1);
}

std::optional<int> TranscriptModel::numberOf(TranscriptEntry const& wanted) const {
    auto const isIt = [&](TranscriptEntry const& each) {
        bool const isPause = each.kind == Kind::pause;
        return each.word == wanted.word && each.occurrence == wanted.occurrence &&
               isPause == (wanted.kind == Kind::pause);
    };
    auto const found = std::ranges::find_if(entries_, isIt);
    if (found == entries_.end()) return std::nullopt;
    return static_cast<int>(found - entries_.begin());
}

void TranscriptModel::follow() {
    auto const begins = [&](int word) { return entry(word).range.start; };
    auto const behind = std::ranges::upper_bound(words_, session_.playhead(), {}, begins);
    auto const spoken = behind == words_.begin() ? -1 : *std::prev(behind);
    if (std::exchange(spoken_, spoken) != spoken) Q_EMIT spokenChanged();
}

// The selection

void TranscriptModel::setSelection(int anchor, int caret) {
    if (caret < 0) anchor = -1;
    if (anchor == anchor_ && caret == caret_) return;
    anchor_ = anchor, caret_ = caret;
    Q_EMIT selectionChanged();
}

void TranscriptModel::place(int number) { setSelection(-1, std::clamp(number, -1, entryCount() - 1)); }

void TranscriptModel::selectTo(int number) {
    auto const to = std::clamp(number, 0, std::max(entryCount() - 1, 0));
    if (entries_.empty()) return;
    setSelection(anchor_ >= 0 ? anchor_ : caret_ >= 0 ? caret_ : to, to);
}

void TranscriptModel::selectAll() {
    if (!entries_.empty()) setSelection(0, entryCount() - 1);
}

/// From the first to behind the last: what is selected, or the entry at the caret.
std::pair<int, int> TranscriptModel::chosen() const {
    if (anchor_ >= 0) return {selectionFirst(), selectionLast() + 1};
    return isEntry(caret_) ? std::pair(caret_, caret_ + 1) : std::pair(0, 0);
}

bool TranscriptModel::holdsAny(bool areCut) const {
    auto const [begin, end] = chosen();
    return std::any_of(entries_.begin() + begin, entries_.begin() + end,
                       [&](auto const& each) { return (each.kind == Kind::cutWord) == areCut; });
}
bool TranscriptModel::canDelete() const { return holdsAny(false); }
bool TranscriptModel::canRestore() const { return holdsAny(true); }

QString TranscriptModel::selectedText() const {
    QString text;
    auto const [begin, end] = chosen();
    for (int i = begin; i < end; ++i) {
        if (entry(i).kind != Kind::word) continue;
        if (!text.isEmpty()) text += QLatin1Char(entry(i).beginsParagraph ? '\n' : ' ');
        text += textOf(i);
    }
    return text;
}

void TranscriptModel::copy() const { QGuiApplication::clipboard()->setText(selectedText()); }

std::vector<UUID> TranscriptModel::chosenWords(bool areCut) const {
    std::vector<UUID> words;
    auto const wanted = areCut ? Kind::cutWord : Kind::word;
    auto const [begin, end] = chosen();
    for (int i = begin; i < end; ++i) {
        if (entry(i).kind == wanted) words.push_back(entry(i).word);
    }
    return words;
}

std::vector<TimeRange> TranscriptModel::chosenPauses() const {
    std::vector<TimeRange> pauses;
    auto const [begin, end] = chosen();
    for (int i = begin; i < end; ++i) {
        if (entry(i).kind != Kind::pause) continue;
        auto range = entry(i).range;
        bool const isInside = i > begin && i + 1 < end;
        if (!isInside) range = {range.start + keptOfPauses / 2, range.duration - keptOfPauses};
        pauses.push_back(range);
    }
    return pauses;
}

bool TranscriptModel::deleteSelected() {
    auto const words = chosenWords(false);
    auto const pauses = chosenPauses();
    auto const caret = chosen().first;
    std::string_view const name = words.empty() ? "Shorten Pauses" : operations::DeleteWords::info.title;
    bool const isDone = session_.edit(name, [&](DemoProject& project) {
        removeRanges(project, pauses); // words that are next to each other then go in one cut
        tavaro::deleteWords(project, words);
    });
    if (isDone) place(caret);
    return isDone;
}

bool TranscriptModel::restoreSelected() {
    auto const words = chosenWords(true);
    return session_.edit("Restore Words", [&](DemoProject& project) { restoreWords(project, words); });
}

bool TranscriptModel::correct(int number, QString const& text) {
    if (!isCorrectable(number)) return false;
    auto const id = entry(number).word;
    auto const written = text.simplified().toStdString();
    if (written.empty() || written == entry(number).text) return false;
    return session_.edit("Correct Word", [&](DemoProject& project) {
        if (!project.transcript) return; // another program has saved a film without
        auto& words = project.transcript->edit().words;
        auto const word = std::ranges::find(words, id, &TranscriptWord::id);
        if (word != words.end()) word->text = written;
    });
}

// Search

void TranscriptModel::setSought(QString const& text) {
    if (text == sought_) return;
    sought_ = text;
    findMatches();
    if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

void TranscriptModel::findMatches() {
    matches_.clear();
    match_ = -1;
    auto const wanted = sought_.simplified();
    for (int row = 0; !wanted.isEmpty() && row < static_cast<int>(paragraphs_.size()); ++row) {
        auto const text = textOf(paragraphs_[static_cast<std::size_t>(row)]);
        for (auto at = text.indexOf(wanted, 0, Qt::CaseInsensitive); at >= 0;
             at = text.indexOf(wanted, at + wanted.size(), Qt::CaseInsensitive))
            matches_.push_back(
                {entryAt(row, static_cast<int>(at)), entryAt(row, static_cast<int>(at + wanted.size()) - 1)});
    }
    Q_EMIT matchesChanged();
}

bool TranscriptModel::isMatched(int number) const {
    auto const behind = std::ranges::upper_bound(matches_, number, {}, &Match::first);
    return behind != matches_.begin() && std::prev(behind)->last >= number;
}

bool TranscriptModel::seek(int by) {
    if (matches_.empty()) return false;
    auto const count = matches();
    auto const isThereOrBehind = [&](Match const& each) { return each.first >= caret_; };
    auto const next = static_cast<int>(std::ranges::find_if(matches_, isThereOrBehind) - matches_.begin());
    // The first way on leads to the match at the caret or behind it.
    auto const wanted = match_ >= 0 ? match_ + by : by > 0 ? next + by - 1 : next + by;
    match_ = ((wanted % count) + count) % count;
    auto const found = matches_[static_cast<std::size_t>(match_)];
    setSelection(found.first, found.last);
    Q_EMIT matchesChanged();
    return true;
}

}
