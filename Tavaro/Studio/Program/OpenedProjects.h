#pragma once

#include <Tavaro/Model/Project/ClosingProject.h>
#include <Tavaro/Model/Project/OpenProjects.h>
#include <Tavaro/Studio/Desk/EditorDesk.h>
#include <Tavaro/Studio/Desk/PlayingChoices.h>

#include <QAbstractListModel>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace tavaro {

/// The projects that the window has open, in the order in which they were opened.
class OpenedProjects : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { pathRole = Qt::UserRole, nameRole, lengthRole, deskRole };

    OpenedProjects(MainQueue& queue, OpenProjects& projects, Preferences& preferences)
        : queue_(queue)
        , projects_(projects)
        , preferences_(preferences) {}

    /// `opened` follows, or `failed`; of one that is open already, at once. A take that is yet to be looked at for
    /// private text is, where nobody does so already.
    Q_INVOKABLE void open(QString const& package);
    /// The same for a take that has just been made, with the page that shows the search, where there is one.
    void openTake(QString const& package);
    /// Refused once, with `failed`, where that loses what was edited last.
    Q_INVOKABLE void close(int row);
    /// Of one that is not where it was.
    void forget(QString const& package);
    /// Takes in what other programs saved.
    void refresh();
    /// Saves each, beside the window; one that cannot be saved yet tries again.
    void save();
    bool areSaved() const;
    /// Saves each now. Why closing them would lose what was edited last, as `ClosingProject` says it; else empty.
    QString losses();

    int count() const { return static_cast<int>(rows_.size()); }
    int rowCount(QModelIndex const& parent = {}) const override { return parent.isValid() ? 0 : count(); }
    QVariant data(QModelIndex const& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();
    void opened(int row);
    void failed(QString const& sentence);

private:
    using Opened = OpenProjects::Opened;
    struct Row {
        Preferences& preferences;
        Opened project;
        OpenProject::Observation observation;
        EditorDesk desk;
        PlayingChoices choices{preferences, desk};
        ClosingProject closing{project};
    };

    void openAnd(QString const& package, std::function<void(EditorDesk&)> const& then);
    void add(Opened const& project);
    void remove(int row);
    int rowOf(OpenProject const* project) const;
    void note(OpenProject const* project);

    MainQueue& queue_;
    OpenProjects& projects_;
    Preferences& preferences_;
    std::vector<std::unique_ptr<Row>> rows_;
};

}
