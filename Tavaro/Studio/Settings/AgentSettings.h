#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Agents/MCPConsent.h>
#endif

#include <QAbstractListModel>
#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace tavaro {

/// Which agents may control the application, as the settings show it and change it: a row for each client of whom
/// something is decided. What is decided elsewhere shows at once.
class AgentSettings : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(bool isOn READ isOn WRITE setOn NOTIFY changed)
    Q_PROPERTY(int count READ count NOTIFY changed)
    Q_PROPERTY(QString problem READ problem WRITE setProblem NOTIFY changed)
    Q_PROPERTY(QString commandLine READ commandLine CONSTANT)
    Q_PROPERTY(QString configuration READ configuration CONSTANT)

public:
    enum Role { nameRole = Qt::UserRole, allowedRole, clicksRole };

    explicit AgentSettings(Preferences& preferences);

    bool isOn() const { return isOn_; }
    void setOn(bool isOn);
    int count() const { return static_cast<int>(clients_.size()); }
    /// Why agents cannot reach the application, as a sentence; empty where they can.
    QString const& problem() const { return problem_; }
    void setProblem(QString const& problem);
    /// How clients are told of the server; empty where it is not installed.
    QString commandLine() const;
    QString configuration() const;

    Q_INVOKABLE void setAllowed(int row, bool isAllowed);
    Q_INVOKABLE void setClicks(int row, bool mayClick);
    Q_INVOKABLE void forget(int row);
    Q_INVOKABLE static void copy(QString const& text);

    int rowCount(QModelIndex const& parent = {}) const override { return parent.isValid() ? 0 : count(); }
    QVariant data(QModelIndex const& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void changed();
    void failed(QString const& sentence);

private:
    struct Client {
        std::string name; // the client's own, and foreign
        bool isAllowed = false;
        bool mayClick = false;
        bool operator==(Client const&) const = default;
    };

    void attempt(std::function<void()> const& change);
    void decide(int row, std::function<void(std::string const&)> const& change);
    void refresh();
    std::vector<Client> known();

    Preferences& preferences_;
    MCPConsent consent_;
    bool isOn_ = true;
    std::vector<Client> clients_;
    QString problem_;
    Preferences::Observation observation_;
};

}
