#pragma once

#include <Tavaro/Studio/Lists/KeyedRows.h>
#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Values/TimeRange.h>
#endif

#include <cstddef>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

namespace tavaro {

class EditorSession;

/// A heading, or what is under it.
struct FindingPlace {
    int group = 0;          // a `SensitiveKind`, or one behind the last for what was hidden by hand
    std::optional<UUID> id; // of a redaction; a heading has none

    bool operator==(FindingPlace const&) const = default;
};

struct FindingPlaceHash {
    std::size_t operator()(FindingPlace const& place) const {
        return static_cast<std::size_t>(place.group) ^ (place.id ? UUIDHash()(*place.id) : 0);
    }
};

using RowsOfFindings = KeyedRows<FindingPlace, FindingPlaceHash>;

/// What an editor's film hides, and what it would have hidden: findings by their kinds, a heading before each kind,
/// then what was hidden by hand. In a kind what is hidden comes first, both by their times.
///
/// Roles: `isHeading`, `group`, `identity` (of a redaction), `title` (of a heading its kind, else the masked value),
/// `span` (the film's times; empty where the film does not show it), `isHidden` (of a heading whether all of it is),
/// `isByHand`; of headings `count`, `hiddenCount` and `isFolded`. Each edit is one step.
class FindingList final : public RowsOfFindings {
    Q_OBJECT
    Q_PROPERTY(int findings READ findings NOTIFY countsChanged) // of a scan
    Q_PROPERTY(int hidden READ hidden NOTIFY countsChanged)     // of these
    Q_PROPERTY(int current READ current NOTIFY currentChanged)  // the row of what is selected; −1: none

public:
    explicit FindingList(EditorSession& session);

    QHash<int, QByteArray> roleNames() const override;
    QVariant data(QModelIndex const& index, int role) const override;

    int findings() const { return findings_; }
    int hidden() const { return hidden_; }
    int current() const;

    /// Selects it, and goes to its first frame. A heading is folded, or unfolded.
    Q_INVOKABLE void show(int row);
    Q_INVOKABLE void fold(int row);
    /// One, or all of a heading. False where that changes nothing.
    Q_INVOKABLE bool setHidden(int row, bool isHidden);
    Q_INVOKABLE bool toggle(int row);
    /// What was found is shown again, and stays in the list; what was hidden by hand is removed.
    Q_INVOKABLE bool reject(int row);

Q_SIGNALS:
    void countsChanged();
    void currentChanged();

private:
    struct Shown {
        std::size_t index = 0; // in the document's list
        TimeRange span;        // output seconds, the first place that shows it; empty where none does
        double end = 0;        // of the last place
    };
    struct Counts {
        int all = 0, hidden = 0;
    };

    void update();
    std::vector<FindingPlace> ordered();
    void addRow(std::vector<Row>& rows, FindingPlace const& place) const;
    RedactionTrack const* track(FindingPlace const& place) const;
    QString spanOf(FindingPlace const& place) const;
    QVariant headingData(FindingPlace const& place, int role) const;
    QVariant findingData(FindingPlace const& place, int role) const;
    bool showByHand(FindingPlace const& place, bool isShown);

    EditorSession& session_;
    std::unordered_map<UUID, Shown, UUIDHash> shown_;
    std::vector<Counts> counts_; // by group
    std::set<int> folded_;
    int findings_ = 0, hidden_ = 0;
    OpenProject::Observation observation_;
};

}
