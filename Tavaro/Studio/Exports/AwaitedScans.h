#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Project/OpenProjects.h>
#endif

#include <TavaroCore/Records/UUID.h>

#include <QObject>
#include <QTimer>

#include <chrono>
#include <filesystem>
#include <functional>
#include <vector>

namespace tavaro {

class Application;

/// Exports that wait until their projects, which are due to be looked at for private text, were. Belongs to the main
/// thread.
class AwaitedScans final : public QObject {
public:
    /// Given the project as it is then, or why it cannot be opened any more.
    using Over = std::function<void(UUID const& id, Outcome<OpenProjects::Opened> const& opened)>;

    AwaitedScans(Application& application, std::chrono::milliseconds pause, Over over);

    void add(UUID const& id, std::filesystem::path const& package);
    void remove(UUID const& id);
    bool contains(UUID const& id) const;

private:
    struct Awaited {
        UUID id;
        std::filesystem::path package;
        bool isOver = false; // and is being opened
    };

    void look();
    void open(Awaited& awaited);

    Application& application_;
    Over const over_;
    std::vector<Awaited> awaited_;
    QTimer timer_;
};

}
