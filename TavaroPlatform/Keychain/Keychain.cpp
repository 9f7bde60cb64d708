#include <TavaroPlatform/Keychain/Keychain.h>

#include <TavaroPlatform/Keychain/KeychainError.h>
#include <TavaroPlatform/Keychain/Private/SecretLibrary.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <TavaroCore/Errors/Excerpt.h>

#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <memory>
#include <utility>

namespace tavaro {

namespace {

using Kind = KeychainError::Kind;

constexpr SecretSchema schema{"com.tavaro.Key", SECRET_SCHEMA_NONE, {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING}}};

enum class Doing { reading, writing, forgetting };

[[noreturn]] void fail(Doing doing, Kind kind, int status, std::string const& reason) {
    auto const sentence = doing == Doing::writing   ? fmt::format("keychain write failed ({})", status)
                          : doing == Doing::reading ? fmt::format("Could not read the keychain: {}", reason)
                                                    : fmt::format("Could not change the keychain: {}", reason);
    throw KeychainError(kind, status, sentence, reason);
}

/// Without one, a library that looks for it would start one.
bool hasSessionBus() {
    auto const* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address && *address) return true;
    auto const* const folder = std::getenv("XDG_RUNTIME_DIR");
    std::error_code ignored;
    return folder && std::filesystem::exists(std::filesystem::path(folder) / "bus", ignored);
}

struct ObjectRelease {
    void operator()(void* object) const { secretLibrary()->unref(object); }
};
using Cancellable = std::unique_ptr<GCancellable, ObjectRelease>;
using Bus = std::unique_ptr<GDBusConnection, ObjectRelease>;

/// A question to the keychain and what came of it. Shared with the thread that asks, which may be left behind.
struct Question {
    std::string service;
    std::string label;
    Secret secret{};
    Cancellable cancellable{secretLibrary()->newCancellable()};

    bool isDone = false;
    std::optional<Secret> found;
    int status = 0;
    bool isLocked = false;
    std::string reason; // where it failed

    void take(GError* error) {
        if (!error) return;
        status = error->code;
        isLocked = error->domain == secretLibrary()->errors() && error->code == SECRET_ERROR_IS_LOCKED;
        reason = excerpt(error->message ? error->message : "", 200);
        secretLibrary()->freeError(error);
    }
};

/// Programs end when the session's bus does, unless they say otherwise before.
void outliveBus(Question& question, Bus& bus) {
    GError* error = nullptr;
    bus.reset(secretLibrary()->bus(G_BUS_TYPE_SESSION, question.cancellable.get(), &error));
    question.take(error);
    if (bus) secretLibrary()->setExitOnClose(bus.get(), FALSE);
}

void read(Question& question) {
    GError* error = nullptr;
    auto* const text = secretLibrary()->lookup(&schema, question.cancellable.get(), &error, "service",
                                               question.service.c_str(), nullptr);
    if (text) question.found.emplace(text);
    secretLibrary()->free(text);
    question.isDone = !error;
    question.take(error);
}

void write(Question& question) {
    GError* error = nullptr;
    question.isDone = secretLibrary()->store(&schema, SECRET_COLLECTION_DEFAULT, question.label.c_str(),
                                             question.secret.c_str(), question.cancellable.get(), &error, "service",
                                             question.service.c_str(), nullptr) != FALSE;
    question.isLocked = !question.isDone && !error; // the user does not want to
    question.take(error);
}

void forget(Question& question) {
    GError* error = nullptr;
    auto const isGone = secretLibrary()->clear(&schema, question.cancellable.get(), &error, "service",
                                               question.service.c_str(), nullptr) != FALSE;
    if (isGone) question.found.emplace();
    question.isDone = !error;
    question.take(error);
}

constexpr auto lockedSentence = "The keychain is locked.";

[[noreturn]] void failWith(Doing doing, Question const& question) {
    if (question.isLocked) fail(doing, Kind::locked, SECRET_ERROR_IS_LOCKED, lockedSentence);
    fail(doing, Kind::failed, question.status,
         question.reason.empty() ? "The keychain did not say why." : question.reason + ".");
}

/// Asks on a thread of its own, since the library waits for as long as the user does.
void ask(Doing doing, std::shared_ptr<Question> const& question, std::chrono::milliseconds patience) {
    SerialQueue asking("com.tavaro.keychain");
    asking.async([question, work = doing == Doing::reading   ? read
                                   : doing == Doing::writing ? write
                                                             : forget] {
        Bus bus;
        outliveBus(*question, bus);
        if (!bus) return;
        work(*question);
        secretLibrary()->disconnect(); // another bus may be there the next time
    });
    if (!asking.settles(patience)) {
        secretLibrary()->cancel(question->cancellable.get());
        if (!asking.settles(std::chrono::seconds(2))) asking.leave();
        fail(doing, Kind::noAnswer, 0, "It did not answer in time.");
    }
    if (!question->isDone) failWith(doing, *question);
}

void expectKeychain(Doing doing) {
    if (!hasSessionBus()) fail(doing, Kind::missing, 0, "There is no keychain here: this session has no message bus.");
    if (!secretLibrary()) fail(doing, Kind::missing, 0, "There is no keychain here: libsecret is not installed.");
}

}

Keychain::Keychain(std::string service, std::string label, std::chrono::milliseconds patience)
    : service_(std::move(service))
    , label_(std::move(label))
    , patience_(patience) {}

std::optional<Secret> Keychain::read() const {
    expectKeychain(Doing::reading);
    auto const question = std::make_shared<Question>(Question{service_, label_});
    ask(Doing::reading, question, patience_);
    return std::move(question->found);
}

void Keychain::write(Secret const& secret) const {
    expectKeychain(Doing::writing);
    ask(Doing::writing, std::make_shared<Question>(Question{service_, label_, secret.copy()}), patience_);
}

bool Keychain::forget() const {
    expectKeychain(Doing::forgetting);
    auto const question = std::make_shared<Question>(Question{service_, label_});
    ask(Doing::forgetting, question, patience_);
    return question->found.has_value();
}

}
