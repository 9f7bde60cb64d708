#pragma once

#include <QObject>
#include <QString>

namespace tavaro {

class EditorSession;
struct ListedCommand;

/// A command of one editor, for menus, buttons and shortcuts alike: one title, one state, one way to run it.
class EditorCommand final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString group READ group CONSTANT)
    Q_PROPERTY(QString shortcut READ shortcut CONSTANT)
    Q_PROPERTY(bool enabled READ isEnabled NOTIFY enabledChanged)

public:
    EditorCommand(ListedCommand const& listed, EditorSession& session);

    QString name() const;
    QString title() const;
    QString group() const;
    QString shortcut() const;
    bool isEnabled() const { return isEnabled_; }

    /// Does nothing while it is not enabled.
    Q_INVOKABLE void trigger();
    /// Looks anew whether it is possible.
    void update();

Q_SIGNALS:
    void enabledChanged();

private:
    ListedCommand const& listed_;
    EditorSession& session_;
    bool isEnabled_ = false;
};

}
