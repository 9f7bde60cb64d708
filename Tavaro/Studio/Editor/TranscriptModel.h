#pragma once

#include <Tavaro/Studio/Lists/ItemList.h>

#include <TavaroCore/Speech/TimelineWords.h>

#include <vector>

namespace tavaro {

class EditorSession;

/// A word of the transcript at one of the places where the edit shows it.
struct ShownWord {
    UUID id;
    std::size_t occurrence = 0;

    bool operator==(ShownWord const&) const = default;
};
struct ShownWordHash {
    std::size_t operator()(ShownWord const& word) const { return UUIDHash{}(word.id) + word.occurrence; }
};

using RowsByWord = KeyedRows<ShownWord, ShownWordHash>;

/// What is said in the film, a row a word, by output time. Roles: `text`, `from`, `length`, `confidence`, `isFiller`,
/// `beginsParagraph` (a pause comes before it). Deleting words cuts the film.
class TranscriptModel final : public RowsByWord {
    Q_OBJECT

public:
    explicit TranscriptModel(EditorSession& session);

    QHash<int, QByteArray> roleNames() const override;
    QVariant data(QModelIndex const& index, int role) const override;

    /// The row of the word that is spoken at an output time, or was last; −1 before the first.
    Q_INVOKABLE int rowAt(double time) const;
    /// Cuts the words from one row to another out of the film, wherever it shows them.
    Q_INVOKABLE bool deleteWords(int first, int last);
    /// Writes a word otherwise; the film stays.
    Q_INVOKABLE bool correct(int row, QString const& text);
    /// All that is said, as one text; setting it cuts the words that are missing and corrects the others.
    Q_INVOKABLE QString text() const;
    Q_INVOKABLE bool setText(QString const& text);

private:
    void update();
    TimelineWord const* wordOf(int row) const;

    EditorSession& session_;
    std::vector<TimelineWord> words_; // by output time
    OpenProject::Observation observation_;
};

}
