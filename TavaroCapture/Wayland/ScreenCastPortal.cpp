#include <TavaroCapture/Wayland/Private/ScreenCastPortal.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/ReleaseWith.h>

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <fmt/format.h>
#include <functional>
#include <optional>
#include <string_view>
#include <systemd/sd-bus.h>

namespace tavaro::wayland {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr char const* service = "org.freedesktop.portal.Desktop";
constexpr char const* object = "/org/freedesktop/portal/desktop";
constexpr char const* screenCast = "org.freedesktop.portal.ScreenCast";

constexpr auto longestCall = 10s; // a portal that is not running is started first
constexpr auto longestAnswer = 120s;

using Bus = std::unique_ptr<sd_bus, ReleaseWith<sd_bus_close_unref>>;
using Message = std::unique_ptr<sd_bus_message, ReleaseWith<sd_bus_message_unref>>;
using Slot = std::unique_ptr<sd_bus_slot, ReleaseWith<sd_bus_slot_unref>>;

[[noreturn]] void fail(std::string const& reason) {
    throw CaptureError(CaptureError::Kind::unsupported,
                       fmt::format("This Wayland desktop cannot be recorded: {}", reason));
}

/// What went wrong with a call, as the end of a sentence.
class CallError {
public:
    CallError() = default;
    ~CallError() { sd_bus_error_free(&error_); }
    CallError(CallError const&) = delete;
    CallError& operator=(CallError const&) = delete;
    sd_bus_error* get() { return &error_; }
    bool isOf(char const* name) const { return sd_bus_error_has_name(&error_, name) != 0; }
    std::string text(int code) const { return error_.message ? error_.message : systemReason(-code); }

private:
    sd_bus_error error_ = SD_BUS_ERROR_NULL;
};

/// Calls `value` with the message inside of the value of each entry; it reads what it knows, and the rest is skipped.
void readDictionary(sd_bus_message* message, std::function<bool(std::string_view)> const& value) {
    if (sd_bus_message_enter_container(message, 'a', "{sv}") < 0) return;
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        char const* key = "";
        sd_bus_message_read(message, "s", &key);
        if (!value(key)) sd_bus_message_skip(message, "v");
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
}

std::optional<std::string> readText(sd_bus_message* message) {
    char const* text = nullptr;
    if (sd_bus_message_read(message, "v", "s", &text) < 0) return std::nullopt;
    return text;
}

void readStream(sd_bus_message* message, SharedSource& source) {
    sd_bus_message_read(message, "u", &source.node);
    readDictionary(message, [&](std::string_view key) {
        int width = 0, height = 0;
        if (key == "source_type") return sd_bus_message_read(message, "v", "u", &source.kind) >= 0;
        if (key != "size") return false;
        bool const isRead = sd_bus_message_read(message, "v", "(ii)", &width, &height) >= 0;
        source.logicalWidth = width;
        return isRead;
    });
}

/// How many there were; the first is read.
int readStreams(sd_bus_message* message, SharedSource& source) {
    int count = 0;
    if (sd_bus_message_enter_container(message, 'v', "a(ua{sv})") < 0) return 0;
    sd_bus_message_enter_container(message, 'a', "(ua{sv})");
    while (sd_bus_message_enter_container(message, 'r', "ua{sv}") > 0) {
        SharedSource other;
        readStream(message, count++ == 0 ? source : other);
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    sd_bus_message_exit_container(message);
    return count;
}

enum class Response : std::uint32_t { yes = 0, no = 1, other = 2 };

}

PointerMode PortalAbilities::bestPointerMode() const {
    for (auto const mode : {PointerMode::metadata, PointerMode::embedded})
        if (has(mode)) return mode;
    return PointerMode::hidden;
}

struct ScreenCastPortal::State {
    using Reader = std::function<void(sd_bus_message*)>;
    using Arguments = std::function<void(sd_bus_message*)>;

    State() {
        sd_bus* raw = nullptr;
        if (int const code = sd_bus_open_user(&raw); code < 0)
            fail(fmt::format("there is no bus of the session ({}).", systemReason(-code)));
        bus.reset(raw);
        sd_bus_set_method_call_timeout(raw, std::chrono::microseconds(longestCall).count());
        abilities = {property("version"), property("AvailableSourceTypes"), property("AvailableCursorModes")};
    }

    std::uint32_t property(char const* name) {
        CallError error;
        std::uint32_t value = 0;
        int const code =
            sd_bus_get_property_trivial(bus.get(), service, object, screenCast, name, error.get(), 'u', &value);
        if (code >= 0) return value;
        if (error.isOf(SD_BUS_ERROR_SERVICE_UNKNOWN) || error.isOf(SD_BUS_ERROR_NAME_HAS_NO_OWNER))
            fail("nothing here asks the user what to share. Install xdg-desktop-portal and the part of it that belongs "
                 "to the desktop, such as xdg-desktop-portal-gnome, -kde or -wlr.");
        fail(fmt::format("its portal does not share screens ({}). Install the part of xdg-desktop-portal that belongs "
                         "to the desktop, such as xdg-desktop-portal-gnome, -kde or -wlr.",
                         error.text(code)));
    }

    Message call(char const* member) {
        sd_bus_message* raw = nullptr;
        if (int const code = sd_bus_message_new_method_call(bus.get(), &raw, service, object, screenCast, member);
            code < 0)
            fail(fmt::format("{}.", systemReason(-code)));
        return Message(raw);
    }

    Message send(Message const& message) {
        CallError error;
        sd_bus_message* answer = nullptr;
        int const code = sd_bus_call(bus.get(), message.get(), 0, error.get(), &answer);
        if (code < 0) fail(fmt::format("its portal says: {}.", error.text(code)));
        return Message(answer);
    }

    /// Calls a member whose last argument is a dictionary of options, and waits for what comes of it.
    Response request(char const* member, Arguments const& arguments, Arguments const& options,
                     std::chrono::seconds atMost, Reader const& results) {
        auto const token = fmt::format("tavaro{}", ++requests);
        auto message = call(member);
        arguments(message.get());
        sd_bus_message_open_container(message.get(), 'a', "{sv}");
        sd_bus_message_append(message.get(), "{sv}", "handle_token", "s", token.c_str());
        options(message.get());
        sd_bus_message_close_container(message.get());
        Answer answer{.read = results};
        auto const slot = listen(requestPath(token), "org.freedesktop.portal.Request", "Response", onResponse, &answer);
        send(message);
        wait(atMost, [&] { return answer.response.has_value() || asking.isGivenUp(); });
        if (!answer.response && asking.isGivenUp())
            throw CaptureError(CaptureError::Kind::refused, "Nobody waits for the answer what to share any more.");
        if (!answer.response) fail(fmt::format("its portal has not answered {} within {} s.", member, atMost.count()));
        return *answer.response;
    }

    std::string requestPath(std::string const& token) const {
        char const* name = ":";
        sd_bus_get_unique_name(bus.get(), &name);
        std::string sender = name + 1;
        std::ranges::replace(sender, '.', '_');
        return fmt::format("{}/request/{}/{}", object, sender, token);
    }

    Slot listen(std::string const& path, char const* interface, char const* member, sd_bus_message_handler_t handler,
                void* data) {
        sd_bus_slot* raw = nullptr;
        sd_bus_match_signal(bus.get(), &raw, service, path.c_str(), interface, member, handler, data);
        return Slot(raw);
    }

    struct Answer {
        Reader const& read;
        std::optional<Response> response;
    };
    static int onResponse(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
        auto& answer = *static_cast<Answer*>(data);
        std::uint32_t code = 2;
        sd_bus_message_read(message, "u", &code);
        if (code == 0) answer.read(message);
        answer.response = static_cast<Response>(code);
        return 0;
    }
    static int onClosed(sd_bus_message* /*message*/, void* self, sd_bus_error* /*error*/) {
        static_cast<State*>(self)->isClosed = true;
        return 0;
    }

    /// Lets in what has come; false when the bus is gone.
    bool letIn() {
        int code = 1;
        while (code > 0) code = sd_bus_process(bus.get(), nullptr);
        return code == 0;
    }

    void wait(std::chrono::seconds atMost, std::function<bool()> const& isThere) {
        auto const end = Clock::now() + atMost;
        while (letIn() && !isThere() && Clock::now() < end)
            sd_bus_wait(bus.get(), std::chrono::microseconds(100ms).count());
    }

    void createSession();
    void selectSources(ShareRequest const& request);
    SharedSource start();
    FileDescriptor openSocket();

    Asking asking;
    Bus bus;
    PortalAbilities abilities;
    int requests = 0;
    std::string session; // its path
    Slot closed;
    bool isClosed = false;
};

namespace {

void expect(Response response) {
    if (response == Response::yes) return;
    if (response == Response::other) fail("its portal could not ask what to share, or gave up waiting.");
    throw CaptureError(CaptureError::Kind::refused,
                       "The screen is not recorded: the desktop asked whether to share it, and the answer was no.");
}

}

void ScreenCastPortal::State::createSession() {
    auto const options = [](sd_bus_message* message) {
        sd_bus_message_append(message, "{sv}", "session_handle_token", "s", "tavaro");
    };
    expect(request(
        "CreateSession", [](sd_bus_message*) {}, options, longestCall,
        [this](sd_bus_message* results) {
            readDictionary(results, [&](std::string_view key) {
                if (key != "session_handle") return false;
                session = readText(results).value_or("");
                return true;
            });
        }));
    closed = listen(session, "org.freedesktop.portal.Session", "Closed", onClosed, this);
}

void ScreenCastPortal::State::selectSources(ShareRequest const& wanted) {
    constexpr std::uint32_t untilRevoked = 2;
    constexpr std::uint32_t firstWithTokens = 4, firstWithPointers = 2;
    auto const options = [&](sd_bus_message* message) {
        sd_bus_message_append(message, "{sv}", "types", "u", static_cast<std::uint32_t>(wanted.kind));
        sd_bus_message_append(message, "{sv}", "multiple", "b", 0);
        if (abilities.version >= firstWithPointers)
            sd_bus_message_append(message, "{sv}", "cursor_mode", "u", static_cast<std::uint32_t>(wanted.pointer));
        if (abilities.version < firstWithTokens) return;
        sd_bus_message_append(message, "{sv}", "persist_mode", "u", untilRevoked);
        if (!wanted.token.empty()) sd_bus_message_append(message, "{sv}", "restore_token", "s", wanted.token.c_str());
    };
    auto const arguments = [&](sd_bus_message* message) { sd_bus_message_append(message, "o", session.c_str()); };
    expect(request("SelectSources", arguments, options, longestCall, [](sd_bus_message*) {}));
}

SharedSource ScreenCastPortal::State::start() {
    SharedSource result;
    int streams = 0;
    auto const arguments = [&](sd_bus_message* message) { sd_bus_message_append(message, "os", session.c_str(), ""); };
    expect(request(
        "Start", arguments, [](sd_bus_message*) {}, longestAnswer,
        [&](sd_bus_message* results) {
            readDictionary(results, [&](std::string_view key) {
                if (key == "streams")
                    streams = readStreams(results, result);
                else if (key == "restore_token")
                    result.token = readText(results).value_or("");
                else
                    return false;
                return true;
            });
        }));
    if (streams != 1) fail(fmt::format("its portal shares {} pictures at once instead of one.", streams));
    return result;
}

FileDescriptor ScreenCastPortal::State::openSocket() {
    auto message = call("OpenPipeWireRemote");
    sd_bus_message_append(message.get(), "oa{sv}", session.c_str(), 0);
    auto const answer = send(message);
    int socket = -1;
    if (sd_bus_message_read(answer.get(), "h", &socket) < 0) fail("its portal opens no connection to the pictures.");
    return FileDescriptor(::fcntl(socket, F_DUPFD_CLOEXEC, 3)); // the message closes its own
}

ScreenCastPortal::ScreenCastPortal() : state_(std::make_unique<State>()) {}
ScreenCastPortal::~ScreenCastPortal() = default;

PortalAbilities const& ScreenCastPortal::abilities() const { return state_->abilities; }

SharedSource ScreenCastPortal::share(ShareRequest const& request) {
    state_->asking = request.asking;
    state_->createSession();
    state_->selectSources(request);
    request.asking.begins();
    auto result = state_->start();
    result.socket = state_->openSocket();
    return result;
}

bool ScreenCastPortal::isOpen() { return state_->letIn() && !state_->isClosed; }

}
