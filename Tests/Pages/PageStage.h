#pragma once

#include "../Core/Package/TemporaryFolder.h"

#include <QImage>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QQuickItem;
class QQuickWindow;

namespace tavaro {

class Studio;

/// The whole program in this process, without a display: its window with a library of its own, and a virtual display to
/// record, which has to be installed (`TestDisplay`). Found and pressed by
/// what the accessibility tree has. One at a time.
class PageStage {
public:
    /// Its library is empty.
    PageStage();
    ~PageStage();
    PageStage(PageStage const&) = delete;

    void fillLibrary();
    /// To what is in the library.
    void addDamagedProject();
    Studio& studio();
    QQuickWindow& window();
    void resize(QSize const& size);
    /// "light" or "dark"
    void setLook(QString const& look);

    /// Presses what has that name, or else one that begins so, as soon as it is there; only inside of what has the
    /// other name, if there is one. Throws where it never is.
    void press(QString const& name, QString const& inside = {});
    bool shows(QString const& name);
    /// Names of what can be pressed inside of what has that name.
    std::vector<QString> pressableIn(QString const& name);
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// Closes menus, dialogs and what asks, and goes to the library.
    void goHome();

    QImage picture();
    /// Until nothing has been drawn for a moment, or for a while where something always is.
    void settle();
    /// When it no longer changes, be it only after a pause; the last one where it always does.
    QImage settledPicture();
    /// Runs the loop until it is so. False after a patience that no machine needs.
    bool becomes(std::function<bool()> const& isSo);
    void run(int milliseconds);

    /// What Qt complained of since it was last asked for.
    std::vector<std::string> complaints();

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}
