#include "ChanceProgram.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <fmt/format.h>
#include <random>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>

namespace tavaro {

namespace {

constexpr std::string_view rootPath = "/org/a11y/atspi/accessible/root";

}

struct ChanceProgram::State {
    std::atomic<unsigned> seed = 0;
    unsigned begun = UINT_MAX;
    std::mt19937 random;
    int mostChildren = 1;
    int silence = 0; // in a thousand
    int nonsense = 0;
    int made = 0;
    AnsweringConnection* connection = nullptr; // of the call that is answered
    std::unique_ptr<AnsweringConnection> owned;

    int any(int least, int most) { return std::uniform_int_distribution(least, most)(random); }
    bool isBy(int thousandths) { return any(0, 999) < thousandths; }

    void restart() {
        begun = seed;
        random.seed(begun);
        mostChildren = any(0, 9) == 0 ? 40 : any(1, 3);
        silence = any(0, 29) == 0 ? 5 : 0;
        nonsense = any(0, 4) == 0 ? 0 : any(0, 300);
        made = 0;
    }

    bool answer(sd_bus_message* call) {
        if (begun != seed) restart();
        if (isBy(silence)) return true;
        sd_bus_message* reply = nullptr;
        if (isBy(nonsense / 4)) {
            sd_bus_message_new_method_errorf(call, &reply, "org.freedesktop.DBus.Error.UnknownObject", "gone");
        } else {
            sd_bus_message_new_method_return(call, &reply);
            if (isBy(nonsense))
                appendNonsense(reply);
            else
                appendSense(reply, call);
        }
        connection->send(reply);
        return true;
    }

    void appendSense(sd_bus_message* reply, sd_bus_message* call) {
        std::string_view const member = sd_bus_message_get_member(call);
        if (member == "Get") return appendProperty(reply, call);
        if (member == "GetState") return appendStates(reply);
        if (member == "GetRole") return append(reply, "u", static_cast<std::uint32_t>(any(0, 135)));
        if (member == "GetIndexInParent") return append(reply, "i", any(-1, 2000));
        if (member == "GetExtents")
            return append(reply, "(iiii)", any(-300, 900), any(-300, 900), any(-1, 500), any(-1, 500));
        if (member == "GetChildren") return appendObjects(reply, any(0, mostChildren));
        if (member == "GetItems") return appendItems(reply);
        if (member == "GetRelationSet") return appendLabels(reply);
        if (member == "GetAttributes") return append(reply, "a{ss}", 1, "placeholder-text", text().c_str());
        append(reply, "(so)", connection->name().c_str(), object().c_str());
    }

    void appendProperty(sd_bus_message* reply, sd_bus_message* call) {
        char const *interface = "", *key = "";
        sd_bus_message_read(call, "ss", &interface, &key);
        std::string_view const property = key;
        constexpr std::array counts{0, 1, 2, 40, 1501, 70'000, INT_MAX, -1, INT_MIN};
        if (property == "ChildCount") return append(reply, "v", "i", counts.at(static_cast<std::size_t>(any(0, 8))));
        if (property == "Parent") return append(reply, "v", "(so)", connection->name().c_str(), object().c_str());
        constexpr std::array toolkits{"gtk", "GTK", "Qt", "Chromium", "Gecko", ""};
        if (property == "ToolkitName") return append(reply, "v", "s", toolkits.at(static_cast<std::size_t>(any(0, 5))));
        append(reply, "v", "s", text().c_str());
    }

    void appendNonsense(sd_bus_message* reply) {
        switch (any(0, 9)) {
        case 0: break;
        case 1: append(reply, "s", text().c_str()); break;
        case 2: append(reply, "i", INT_MIN); break;
        case 3: append(reply, "(iiii)", INT_MAX, INT_MIN, any(0, 9), INT_MAX); break;
        case 4: append(reply, "a(so)", 2, "not a bus", "/a", ":1.999", "/org/a11y/atspi/null"); break;
        case 5: append(reply, "au", 3, UINT_MAX, UINT_MAX, UINT_MAX); break;
        case 6: append(reply, "v", "i", any(-5, 5)); break;
        case 7: append(reply, "v", "as", 2, "a", "b"); break;
        case 8: append(reply, "a(ua(so))", 1, 2, 1, connection->name().c_str(), rootPath.data()); break;
        default: append(reply, "a{ss}", 1, "", ""); break;
        }
    }

    void appendStates(sd_bus_message* reply) {
        // Mostly of what shows: all others end a walk.
        auto const word = [this] { return static_cast<std::uint32_t>(random()); };
        std::array<std::uint32_t, 2> words{word() & ~(1U << 6U), word()};
        if (isBy(850)) words[0] |= 0x42000000U;
        sd_bus_message_append_array(reply, 'u', words.data(), sizeof words);
    }

    void appendObjects(sd_bus_message* reply, int count) {
        sd_bus_message_open_container(reply, 'a', "(so)");
        for (int i = 0; i < count; ++i) append(reply, "(so)", connection->name().c_str(), object().c_str());
        sd_bus_message_close_container(reply);
    }

    void appendLabels(sd_bus_message* reply) {
        sd_bus_message_open_container(reply, 'a', "(ua(so))");
        sd_bus_message_open_container(reply, 'r', "ua(so)");
        append(reply, "u", 2U);
        appendObjects(reply, any(0, 2));
        sd_bus_message_close_container(reply);
        sd_bus_message_close_container(reply);
    }

    void appendItems(sd_bus_message* reply) {
        sd_bus_message_open_container(reply, 'a', "((so)(so)(so)iiassusau)");
        for (int i = any(0, 60); i > 0; --i) {
            sd_bus_message_open_container(reply, 'r', "(so)(so)(so)iiassusau");
            for (int each = 0; each < 3; ++each) append(reply, "(so)", connection->name().c_str(), object().c_str());
            append(reply, "ii", any(-1, 9), any(-1, 3000));
            append(reply, "as", 0);
            append(reply, "sus", text().c_str(), static_cast<std::uint32_t>(any(0, 135)), "");
            appendStates(reply);
            sd_bus_message_close_container(reply);
        }
        sd_bus_message_close_container(reply);
    }

    /// A new one, or one of before, or none.
    std::string object() {
        if (isBy(30)) return "/org/a11y/atspi/null";
        if (isBy(30)) return std::string(rootPath);
        int const number = isBy(800) ? ++made : any(0, made);
        return fmt::format("/org/a11y/atspi/accessible/{}", number);
    }

    std::string text() {
        constexpr std::array texts{"",  "Save",         "GtkButton", "_File File", "<b>bold", "\x1b[31m\n\tred",
                                   "•", "ß\u202e\u0301"};
        auto const chosen = static_cast<std::size_t>(any(0, 8));
        return chosen < texts.size() ? texts[chosen] : std::string(static_cast<std::size_t>(any(0, 30'000)), 'x');
    }

    template<class... Values> static void append(sd_bus_message* reply, char const* types, Values... values) {
        sd_bus_message_append(reply, types, values...);
    }
};

ChanceProgram::ChanceProgram(TestBus const& bus) : state_(std::make_unique<State>()) {
    auto const answer = [state = state_.get()](AnsweringConnection& connection, sd_bus_message* call) {
        state->connection = &connection;
        return state->answer(call);
    };
    state_->owned = std::make_unique<AnsweringConnection>(bus, answer);
}

ChanceProgram::~ChanceProgram() { state_->owned.reset(); }

void ChanceProgram::begin(unsigned seed) { state_->seed = seed; }

atspi::Address ChanceProgram::root() const { return {state_->owned->name(), std::string(rootPath)}; }

}
