#include <Tavaro/Studio/Editor/TranscriptModel.h>

#include <Tavaro/Model/Operations/CleanUpOperations.h>
#include <Tavaro/Studio/Editor/EditorSession.h>

#include <TavaroCore/Editing/TranscriptEdits.h>

#include <algorithm>
#include <string>
#include <unordered_map>

namespace tavaro {

namespace {

constexpr double pauseOfParagraphs = 1.2; // seconds

enum Role { wordText, from, length, confidence, isFiller, beginsParagraph };
constexpr std::array<char const*, 6> roleTexts{"text", "from", "length", "confidence", "isFiller", "beginsParagraph"};

bool concernsWords(ChangedFields const& fields) {
    return fields.contains("transcript") || fields.contains("timeline") || fields.contains("assetDurations");
}

}

TranscriptModel::TranscriptModel(EditorSession& session) : session_(session) {
    observation_ = session.project().observe([this](ProjectChange const& change) {
        if (concernsWords(change.fields)) update();
    });
    update();
}

void TranscriptModel::update() {
    words_ = timelineWords(session_.document());
    std::unordered_map<UUID, std::size_t, UUIDHash> seen;
    std::vector<Row> rows;
    for (auto const& word : words_) {
        auto content = hashOf(word.word);
        detail::mixHash(content, hashOf(word.range));
        rows.push_back({{word.word.id, seen[word.word.id]++}, content});
    }
    showRows(rows);
}

TimelineWord const* TranscriptModel::wordOf(int row) const {
    auto const& wanted = key(row);
    auto const place = static_cast<std::size_t>(row);
    if (place < words_.size() && words_[place].word.id == wanted.id) return &words_[place];
    auto const found = std::ranges::find_if(words_, [&](auto const& each) { return each.word.id == wanted.id; });
    return found == words_.end() ? nullptr : &*found;
}

QHash<int, QByteArray> TranscriptModel::roleNames() const {
    QHash<int, QByteArray> names;
    for (std::size_t i = 0; i < roleTexts.size(); ++i) names.insert(firstRole + static_cast<int>(i), roleTexts[i]);
    return names;
}

QVariant TranscriptModel::data(QModelIndex const& index, int role) const {
    auto const* word = index.isValid() ? wordOf(index.row()) : nullptr;
    if (!word) return {};
    switch (role - firstRole) {
    case Role::wordText: return toQString(word->word.text);
    case Role::from: return word->range.start;
    case Role::length: return word->range.duration;
    case Role::confidence: return word->word.confidence;
    case Role::isFiller: return word->word.isFiller();
    case Role::beginsParagraph:
        return word == words_.data() || word->range.start - (word - 1)->range.end() > pauseOfParagraphs;
    default: return role == Qt::DisplayRole ? toQString(word->word.text) : QVariant();
    }
}

int TranscriptModel::rowAt(double time) const {
    auto const after = std::ranges::upper_bound(words_, time, {}, [](auto const& word) { return word.range.start; });
    return static_cast<int>(after - words_.begin()) - 1;
}

bool TranscriptModel::deleteWords(int first, int last) {
    std::vector<UUID> words;
    for (int row = std::max(first, 0); row <= std::min(last, count() - 1); ++row) words.push_back(key(row).id);
    return session_.edit(operations::DeleteWords::info.title,
                         [&](DemoProject& project) { tavaro::deleteWords(project, words); });
}

bool TranscriptModel::correct(int row, QString const& text) {
    if (row < 0 || row >= count()) return false;
    auto const id = key(row).id;
    return session_.edit("Correct Word", [&](DemoProject& project) {
        if (!project.transcript) return;
        auto& words = project.transcript->edit().words;
        auto const word = std::ranges::find(words, id, &TranscriptWord::id);
        auto const written = text.trimmed().toStdString();
        if (word != words.end() && !written.empty()) word->text = written;
    });
}

QString TranscriptModel::text() const {
    std::string text;
    for (auto const& word : words_) text.append(text.empty() ? "" : " ").append(word.word.text);
    return toQString(text);
}

bool TranscriptModel::setText(QString const& text) {
    return session_.edit("Edit Transcript",
                         [&](DemoProject& project) { replaceTranscriptText(project, text.toStdString()); });
}

}
