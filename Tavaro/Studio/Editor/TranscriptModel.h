#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Studio/Editor/TranscriptEntries.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>
#endif
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Lists/KeyedRows.h>

#include <QColor>
#include <QString>

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tavaro {

class EditorSession;

/// The first entry of a paragraph: a word, at one of the places where the film shows it.
struct ParagraphBegin {
    UUID word;
    std::size_t occurrence = 0;

    bool operator==(ParagraphBegin const&) const = default;
};
struct ParagraphBeginHash {
    std::size_t operator()(ParagraphBegin const& begin) const { return UUIDHash{}(begin.word) + begin.occurrence; }
};

using RowsByParagraph = KeyedRows<ParagraphBegin, ParagraphBeginHash>;

/// What is said in the film as text, a row a paragraph. Roles: `html`, `time` ("0:42"), `first` and `entries`: the
/// number of its first entry, and how many it has. An entry is a word, a long pause or a word that is cut out; entries
/// are numbered through the whole text, and `entryAt` and the like lead from the paragraph's characters to them and
/// back.
///
/// Entries are selected from the one on which the selection began to the caret's. Deleting words cuts the film;
/// restoring them shows again what was cut. All of it costs by the words, the rows by what is in view.
class TranscriptModel final : public RowsByParagraph {
    Q_OBJECT
    Q_PROPERTY(bool isThere READ isThere NOTIFY textChanged)
    Q_PROPERTY(int entryCount READ entryCount NOTIFY textChanged)
    Q_PROPERTY(int fillers READ fillers NOTIFY textChanged)
    Q_PROPERTY(int pauses READ pauses NOTIFY textChanged)
    Q_PROPERTY(int cutWords READ cutWords NOTIFY textChanged)
    Q_PROPERTY(bool showsCutWords READ showsCutWords WRITE setShowsCutWords NOTIFY textChanged)
    Q_PROPERTY(int spoken READ spoken NOTIFY spokenChanged)
    Q_PROPERTY(int caret READ caret NOTIFY selectionChanged)
    Q_PROPERTY(int selectionFirst READ selectionFirst NOTIFY selectionChanged)
    Q_PROPERTY(int selectionLast READ selectionLast NOTIFY selectionChanged)
    Q_PROPERTY(bool canDelete READ canDelete NOTIFY selectionChanged)
    Q_PROPERTY(bool canRestore READ canRestore NOTIFY selectionChanged)
    Q_PROPERTY(QString sought READ sought WRITE setSought NOTIFY matchesChanged)
    Q_PROPERTY(int matches READ matches NOTIFY matchesChanged)
    Q_PROPERTY(int match READ match NOTIFY matchesChanged)
    Q_PROPERTY(QColor quietColor MEMBER quietColor_ NOTIFY colorsChanged)
    Q_PROPERTY(QColor fillerColor MEMBER fillerColor_ NOTIFY colorsChanged)
    Q_PROPERTY(QColor matchColor MEMBER matchColor_ NOTIFY colorsChanged)

public:
    explicit TranscriptModel(EditorSession& session);

    QHash<int, QByteArray> roleNames() const override;
    QVariant data(QModelIndex const& index, int role) const override;

    /// Whether the project has a transcript, if only one in which nothing is said.
    bool isThere() const;
    int entryCount() const { return static_cast<int>(entries_.size()); }
    int fillers() const { return fillers_; }
    int pauses() const { return pauses_; }
    int cutWords() const { return cutWords_; }
    bool showsCutWords() const { return showsCutWords_; }
    void setShowsCutWords(bool shows);

    /// The word under the playhead, or the last one before it; −1 before the first.
    int spoken() const { return spoken_; }

    Q_INVOKABLE QString textOf(int entry) const;
    Q_INVOKABLE double timeOf(int entry) const;
    Q_INVOKABLE bool isCut(int entry) const;
    /// Whether it is a word.
    Q_INVOKABLE bool isCorrectable(int entry) const;
    Q_INVOKABLE int paragraphOf(int entry) const;
    /// Where an entry begins in its paragraph, in characters.
    Q_INVOKABLE int positionOf(int entry) const;
    Q_INVOKABLE int endOf(int entry) const;
    /// The entry at a character of a paragraph.
    Q_INVOKABLE int entryAt(int paragraph, int position) const;

    // The selection; −1 and −1 where there is none.

    int caret() const { return caret_; }
    int selectionFirst() const { return anchor_ < 0 ? -1 : std::min(anchor_, caret_); }
    int selectionLast() const { return anchor_ < 0 ? -1 : std::max(anchor_, caret_); }
    /// Puts the caret on an entry, with nothing selected.
    Q_INVOKABLE void place(int entry);
    /// Selects from where the selection began, or the caret is, to an entry.
    Q_INVOKABLE void selectTo(int entry);
    Q_INVOKABLE void selectAll();
    Q_INVOKABLE QString selectedText() const;
    /// To the clipboard.
    Q_INVOKABLE void copy() const;
    bool canDelete() const;
    bool canRestore() const;

    /// Cuts what is selected, or the entry at the caret, out of the film: words wherever it shows them. Of a pause
    /// beside which a word stays, a quarter of a second stays, too.
    Q_INVOKABLE bool deleteSelected();
    /// Shows again what of the selection is cut.
    Q_INVOKABLE bool restoreSelected();
    /// Writes a word otherwise; the film stays.
    Q_INVOKABLE bool correct(int entry, QString const& text);

    // Search, regardless of case, inside of paragraphs.

    QString const& sought() const { return sought_; }
    void setSought(QString const& text);
    int matches() const { return static_cast<int>(matches_.size()); }
    /// Which of them is selected, from 0; −1 for none.
    int match() const { return match_; }
    /// Selects the next match or the one before, around the ends; false where there is none.
    Q_INVOKABLE bool seek(int by);

Q_SIGNALS:
    void textChanged();
    void spokenChanged();
    void selectionChanged();
    void matchesChanged();
    void colorsChanged();

private:
    struct Paragraph {
        int first = 0, count = 0; // entries
    };
    struct Match {
        int first = 0, last = 0; // entries
    };

    void update();
    void arrange();
    void count();
    Paragraph const* paragraphAt(int row) const;
    void follow();
    void findMatches();
    void setSelection(int anchor, int caret);
    bool isEntry(int entry) const { return entry >= 0 && entry < entryCount(); }
    TranscriptEntry const& entry(int index) const { return entries_[static_cast<std::size_t>(index)]; }
    std::pair<int, int> chosen() const;
    bool holdsAny(bool areCut) const;
    std::vector<UUID> chosenWords(bool areCut) const;
    std::vector<TimeRange> chosenPauses() const;
    std::optional<int> numberOf(TranscriptEntry const& wanted) const;
    QString textOf(Paragraph const& paragraph) const;
    QString htmlOf(Paragraph const& paragraph) const;
    QString htmlOf(int entry) const;
    bool isMatched(int entry) const;

    EditorSession& session_;
    std::vector<TranscriptEntry> entries_;
    std::vector<int> positions_; // of each entry in its paragraph
    std::vector<Paragraph> paragraphs_;
    std::unordered_map<ParagraphBegin, int, ParagraphBeginHash> numbers_; // of the paragraphs
    std::vector<int> words_; // the entries that are shown words, by output time
    std::vector<Match> matches_;
    QString sought_;
    int fillers_ = 0, pauses_ = 0, cutWords_ = 0;
    int spoken_ = -1, anchor_ = -1, caret_ = -1, match_ = -1;
    bool showsCutWords_ = true;
    QColor quietColor_, fillerColor_, matchColor_;
    OpenProject::Observation observation_;
};

}
