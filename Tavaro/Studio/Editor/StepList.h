#pragma once

#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Lists/KeyedRows.h>

#include <QTime>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tavaro {

class EditorSession;

using RowsByNumber = KeyedRows<std::uint64_t>;

/// The steps of a project's history, oldest first, whoever made them. Roles: `name`, `maker` ("person", "agent",
/// "otherProgram"), `agent` (its name), `when` (it was first seen here; empty for what was there before), `isUndone`,
/// `isCurrent` (the last that is not undone).
class StepList final : public RowsByNumber {
    Q_OBJECT
    Q_PROPERTY(int current READ current NOTIFY currentChanged)

public:
    explicit StepList(EditorSession& session);

    QHash<int, QByteArray> roleNames() const override;
    QVariant data(QModelIndex const& index, int role) const override;

    /// The row of the last step that is not undone; −1 where none is.
    int current() const { return doneSteps() - 1; }
    /// Undoes or redoes until that step is the last one made; −1 undoes all.
    Q_INVOKABLE void goTo(int row);

Q_SIGNALS:
    void currentChanged();

private:
    void update();
    void noteTimes();
    int doneSteps() const;

    EditorSession& session_;
    std::vector<ListedStep> steps_;
    std::unordered_map<std::uint64_t, QTime> times_; // by the steps' numbers
};

}
