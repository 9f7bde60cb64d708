#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Agents/MCPConsent.h>
#endif

#include <QObject>
#include <QString>

#include <deque>
#include <functional>
#include <memory>
#include <optional>

namespace tavaro {

/// Asks in the window whether a client may control the application: one question at a time, in the order in which they
/// came. Belongs to the main queue.
class ConsentQuestions : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isAsking READ isAsking NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)

public:
    using QObject::QObject;
    /// Whoever waits hears that nobody says anything.
    ~ConsentQuestions() override;

    /// For `AppMCPBackend`.
    MCPConsent::Ask asker();

    bool isAsking() const { return !questions_.empty(); }
    QString title() const;
    QString text() const;

    Q_INVOKABLE void allow() { answer(true); }
    Q_INVOKABLE void deny() { answer(false); }
    /// Nothing is decided: the call is refused, and the next one asks again.
    Q_INVOKABLE void dismiss() { answer(std::nullopt); }

Q_SIGNALS:
    /// Also where one question follows another.
    void changed();

private:
    struct Question {
        ConsentPrompt prompt;
        std::function<void(std::optional<bool>)> answer;
    };
    using Asked = std::shared_ptr<Question>;

    MCPConsent::Withdraw ask(ConsentPrompt const& prompt, std::function<void(std::optional<bool>)> answer);
    void withdraw(Asked const& question);
    void answer(std::optional<bool> said);

    std::deque<Asked> questions_; // the first is shown
};

}
