#include <Tavaro/Studio/Settings/AgentSettings.h>

#include <Tavaro/Agents/MCPRegistrations.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>

namespace tavaro {

AgentSettings::AgentSettings(Preferences& preferences)
    : preferences_(preferences)
    , consent_(preferences)
    , observation_(preferences.observe([this] { refresh(); })) {
    refresh();
}

void AgentSettings::setOn(bool isOn) {
    attempt([&] { preferences_.set(agentsEnabled, isOn); });
}

void AgentSettings::setProblem(QString const& problem) {
    problem_ = problem;
    Q_EMIT changed();
}

QString AgentSettings::commandLine() const {
    auto const server = findProgram("tavaro-mcp");
    return server ? QString::fromStdString(claudeCodeLine(*server)) : QString();
}

QString AgentSettings::configuration() const {
    auto const server = findProgram("tavaro-mcp");
    return server ? QString::fromStdString(claudeDesktopConfiguration(*server)) : QString();
}

void AgentSettings::setAllowed(int row, bool isAllowed) {
    decide(row, [&](std::string const& name) { isAllowed ? consent_.allow(name) : consent_.deny(name); });
}

void AgentSettings::setClicks(int row, bool mayClick) {
    auto const clicking = mayClick ? MCPConsent::Clicking::allowed : MCPConsent::Clicking::denied;
    decide(row, [&](std::string const& name) { consent_.allow(name, clicking); });
}

void AgentSettings::forget(int row) {
    decide(row, [&](std::string const& name) { consent_.forget(name); });
}

void AgentSettings::copy(QString const& text) { QGuiApplication::clipboard()->setText(text); }

void AgentSettings::decide(int row, std::function<void(std::string const&)> const& change) {
    if (row < 0 || row >= count()) return;
    auto const name = clients_[static_cast<std::size_t>(row)].name; // the row may go meanwhile
    attempt([&] { change(name); });
}

/// What could not be stored is not so: what shows it is told to look again.
void AgentSettings::attempt(std::function<void()> const& change) {
    try {
        change();
    } catch (Error const& error) {
        Q_EMIT failed(QString::fromUtf8(error.what()));
    }
    refresh();
    Q_EMIT changed();
    if (count() > 0) Q_EMIT dataChanged(index(0), index(count() - 1));
}

std::vector<AgentSettings::Client> AgentSettings::known() {
    auto names = consent_.clients();
    std::ranges::sort(names);
    std::vector<Client> clients;
    for (auto const& name : names) {
        clients.push_back({name, consent_.decision(name) == MCPConsent::Decision::allowed,
                           consent_.clicking(name) == MCPConsent::Clicking::allowed});
    }
    return clients;
}

void AgentSettings::refresh() {
    isOn_ = preferences_.get(agentsEnabled);
    auto clients = known();
    auto const isSameList = std::ranges::equal(clients, clients_, {}, &Client::name, &Client::name);
    if (!isSameList) beginResetModel();
    bool const isChanged = clients != clients_;
    clients_ = std::move(clients);
    if (!isSameList) endResetModel();
    if (isSameList && isChanged) Q_EMIT dataChanged(index(0), index(count() - 1));
    Q_EMIT changed();
}

QVariant AgentSettings::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    auto const& client = clients_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case nameRole:
    case Qt::DisplayRole: return QString::fromStdString(excerpt(client.name));
    case allowedRole: return client.isAllowed;
    case clicksRole: return client.mayClick;
    default: return {};
    }
}

QHash<int, QByteArray> AgentSettings::roleNames() const {
    return {{nameRole, "name"}, {allowedRole, "isAllowed"}, {clicksRole, "mayClick"}};
}

}
