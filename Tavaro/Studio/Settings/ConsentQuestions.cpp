#include <Tavaro/Studio/Settings/ConsentQuestions.h>

#include <QPointer>

#include <algorithm>
#include <utility>

namespace tavaro {

ConsentQuestions::~ConsentQuestions() {
    for (auto const& question : std::exchange(questions_, {})) question->answer(std::nullopt);
}

MCPConsent::Ask ConsentQuestions::asker() {
    return [this](ConsentPrompt const& prompt, std::function<void(std::optional<bool>)> answer) {
        return ask(prompt, std::move(answer));
    };
}

QString ConsentQuestions::title() const {
    return questions_.empty() ? QString() : QString::fromStdString(questions_.front()->prompt.title);
}

QString ConsentQuestions::text() const {
    return questions_.empty() ? QString() : QString::fromStdString(questions_.front()->prompt.text);
}

MCPConsent::Withdraw ConsentQuestions::ask(ConsentPrompt const& prompt,
                                           std::function<void(std::optional<bool>)> answer) {
    auto const question = std::make_shared<Question>(Question{prompt, std::move(answer)});
    questions_.push_back(question);
    if (questions_.size() == 1) Q_EMIT changed();
    return [here = QPointer<ConsentQuestions>(this), question] {
        if (here) here->withdraw(question);
    };
}

void ConsentQuestions::withdraw(Asked const& question) {
    auto const found = std::ranges::find(questions_, question);
    if (found == questions_.end()) return;
    bool const isShown = found == questions_.begin();
    questions_.erase(found);
    if (isShown) Q_EMIT changed();
}

void ConsentQuestions::answer(std::optional<bool> said) {
    if (questions_.empty()) return;
    auto const question = questions_.front();
    questions_.pop_front();
    Q_EMIT changed();
    question->answer(said);
}

}
