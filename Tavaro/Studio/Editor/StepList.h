#pragma once

#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Lists/KeyedRows.h>

#include <cstdint>
#include <vector>

namespace tavaro {

class EditorSession;

using RowsByNumber = KeyedRows<std::uint64_t>;

/// The steps of a project's history, oldest first, whoever made them. Roles: `name`, `maker` ("person", "agent",
/// "otherProgram"), `agent` (its name), `isUndone`, `isCurrent` (the last that is not undone).
class StepList final : public RowsByNumber {
    Q_OBJECT

public:
    explicit StepList(EditorSession& session);

    QHash<int, QByteArray> roleNames() const override;
    QVariant data(QModelIndex const& index, int role) const override;

    /// Undoes or redoes until that step is the last one made; −1 undoes all.
    Q_INVOKABLE void goTo(int row);

private:
    void update();
    int doneSteps() const;

    EditorSession& session_;
    std::vector<ListedStep> steps_;
};

}
