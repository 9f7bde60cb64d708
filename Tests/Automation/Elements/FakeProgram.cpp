#include "FakeProgram.h"

#include "AnsweringConnection.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <map>
#include <mutex>
#include <random>
#include <string_view>
#include <systemd/sd-bus.h>

namespace tavaro {

namespace {

constexpr std::string_view prefix = "/org/a11y/atspi/accessible/";
constexpr std::string_view nowhere = "/org/a11y/atspi/null";

std::string pathOf(int widget) { return std::string(prefix) + (widget == 0 ? "root" : std::to_string(widget)); }

int widgetAt(std::string_view path) {
    if (!path.starts_with(prefix)) return -1;
    auto const rest = path.substr(prefix.size());
    return rest == "root" ? 0 : std::atoi(std::string(rest).c_str());
}

}

struct FakeProgram::State {
    std::string toolkit;
    std::deque<FakeWidget> widgets;
    std::atomic<bool> isHanging = false;
    std::mutex mutable mutex;
    std::map<std::pair<int, std::string>, int> asked;
    std::map<int, std::set<std::string>> interfaces;
    int madeAnew = 0;
    std::mt19937 random{1};
    AnsweringConnection* connection = nullptr; // of the call that is answered
    std::unique_ptr<AnsweringConnection> owned;

    bool answer(sd_bus_message* message) {
        bool const isForAll = sd_bus_message_is_method_call(message, "org.a11y.atspi.Cache", "GetItems") > 0;
        if (isForAll && widgets[0].saysAllAtOnce) return sayAll(message);
        int const widget = widgetAt(sd_bus_message_get_path(message));
        if (widget < 0 || widget >= static_cast<int>(widgets.size())) return false;
        auto const& it = widgets[static_cast<std::size_t>(widget)];
        if (it.isSilent || isHanging) return true;
        std::string_view const member = sd_bus_message_get_member(message);
        count(widget, member);
        noteInterface(widget, member == "Get" ? propertyOf(message).first : sd_bus_message_get_interface(message));
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(message, &reply);
        if (it.talksNonsense)
            appendNonsense(reply);
        else if (member == "Get")
            property(message, reply, it);
        else
            method(member, message, reply, widget);
        connection->send(reply);
        return true;
    }

    bool sayAll(sd_bus_message* message) {
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(message, &reply);
        sd_bus_message_open_container(reply, 'a', "((so)(so)(so)iiassusau)");
        for (int i = 0; i < static_cast<int>(widgets.size()); ++i) {
            auto const& it = widgets[static_cast<std::size_t>(i)];
            sd_bus_message_open_container(reply, 'r', "(so)(so)(so)iiassusau");
            for (int const each : {i, 0, 0})
                sd_bus_message_append(reply, "(so)", connection->name().c_str(), pathOf(each).c_str());
            sd_bus_message_append(reply, "ii", 0, childCountOf(it));
            sd_bus_message_append(reply, "as", 1, "org.a11y.atspi.Accessible");
            sd_bus_message_append(reply, "sus", it.name.c_str(), static_cast<std::uint32_t>(it.role), "");
            appendStates(reply, it);
            sd_bus_message_close_container(reply);
        }
        sd_bus_message_close_container(reply);
        connection->send(reply);
        return true;
    }

    static int childCountOf(FakeWidget const& it) {
        return it.childCount < 0 ? static_cast<int>(it.children.size()) : it.childCount;
    }

    static void appendStates(sd_bus_message* reply, FakeWidget const& it) {
        std::array<std::uint32_t, 2> words{};
        for (auto const state : it.states) {
            auto const bit = static_cast<unsigned>(state);
            words[bit / 32] |= 1U << bit % 32;
        }
        sd_bus_message_append_array(reply, 'u', words.data(), sizeof words);
    }

    void appendNonsense(sd_bus_message* reply) {
        switch (random() % 10) {
        case 0: break;
        case 1: sd_bus_message_append(reply, "s", "nonsense"); break;
        case 2: sd_bus_message_append(reply, "i", INT_MIN); break;
        case 3: sd_bus_message_append(reply, "(iiii)", INT_MAX, INT_MIN, INT_MAX, INT_MAX); break;
        case 4: sd_bus_message_append(reply, "a(so)", 2, "not a bus", "/a", ":1.999", "/org/a11y/atspi/null"); break;
        case 5: sd_bus_message_append(reply, "au", 3, UINT_MAX, UINT_MAX, UINT_MAX); break;
        case 6: sd_bus_message_append(reply, "u", static_cast<std::uint32_t>(random() % 140)); break;
        case 7: sd_bus_message_append(reply, "v", "i", static_cast<int>(random() % 4000) - 2000); break;
        case 8:
            sd_bus_message_append(reply, "(so)", connection->name().c_str(), pathOf(random() % widgets.size()).c_str());
            break;
        default: appendAll(reply, {0, 1, static_cast<int>(random() % widgets.size())}); break;
        }
    }

    void property(sd_bus_message* message, sd_bus_message* reply, FakeWidget const& it) {
        auto const name = propertyOf(message).second;
        if (name == "Name" && it.endsProgram) connection->end();
        if (name == "ChildCount")
            sd_bus_message_append(reply, "v", "i", childCountOf(it));
        else if (name == "Parent")
            sd_bus_message_append(reply, "v", "(so)", connection->name().c_str(), pathOf(parentOf(it)).c_str());
        else
            sd_bus_message_append(reply, "v", "s",
                                  name == "ToolkitName"   ? toolkit.c_str()
                                  : name == "Description" ? it.description.c_str()
                                                          : it.name.c_str());
    }

    void method(std::string_view member, sd_bus_message* message, sd_bus_message* reply, int widget) {
        auto const& it = widgets[static_cast<std::size_t>(widget)];
        if (member == "GetState") {
            appendStates(reply, it);
        } else if (member == "GetRole") {
            sd_bus_message_append(reply, "u", static_cast<std::uint32_t>(it.role));
        } else if (member == "GetExtents") {
            sd_bus_message_append(reply, "(iiii)", it.extents.x, it.extents.y, it.extents.width, it.extents.height);
        } else if (member == "GetChildren") {
            appendAll(reply, it.children);
        } else if (member == "GetChildAtIndex") {
            int place = -1;
            sd_bus_message_read(message, "i", &place);
            bool const isThere = place >= 0 && place < static_cast<int>(it.children.size());
            auto const path = isThere ? pathAnew(it.children[place]) : std::string(nowhere);
            sd_bus_message_append(reply, "(so)", connection->name().c_str(), path.c_str());
        } else if (member == "GetIndexInParent") {
            auto const& siblings = widgets[parentOf(it)].children;
            sd_bus_message_append(reply, "i", static_cast<int>(std::ranges::find(siblings, widget) - siblings.begin()));
        } else if (member == "GetAccessibleAtPoint") {
            int x = 0, y = 0;
            sd_bus_message_read(message, "ii", &x, &y);
            sd_bus_message_append(reply, "(so)", connection->name().c_str(), pathAt(it, x, y).c_str());
        } else if (member == "GetRelationSet") {
            sd_bus_message_open_container(reply, 'a', "(ua(so))");
            if (!it.labels.empty()) {
                sd_bus_message_open_container(reply, 'r', "ua(so)");
                sd_bus_message_append(reply, "u", 2U);
                appendAll(reply, it.labels);
                sd_bus_message_close_container(reply);
            }
            sd_bus_message_close_container(reply);
        } else {
            sd_bus_message_append(reply, "a{ss}", 0);
        }
    }

    void appendAll(sd_bus_message* reply, std::vector<int> const& all) {
        sd_bus_message_open_container(reply, 'a', "(so)");
        for (int const each : all)
            sd_bus_message_append(reply, "(so)", connection->name().c_str(), pathOf(each).c_str());
        sd_bus_message_close_container(reply);
    }

    std::string pathAt(FakeWidget const& it, int x, int y) {
        if (it.findsNoPoint) return std::string(nowhere);
        bool const isGuess = widgets[0].guesses > 0 && widgets[0].guesses-- > 0;
        int found = childAt(it, x, y, isGuess ? Layer::lowest : Layer::top);
        for (int inner = found; inner >= 0 && toolkit == "GTK"; inner = childAt(widgets[inner], x, y)) found = inner;
        return found < 0 ? std::string(nowhere) : pathAnew(found);
    }

    std::string pathAnew(int widget) {
        auto const path = pathOf(widget);
        return widgets[widget].isMadeAnew ? path + "x" + std::to_string(++madeAnew) : path;
    }

    enum class Layer { top, lowest };

    int childAt(FakeWidget const& it, int x, int y, Layer layer = Layer::top) const {
        int found = -1;
        for (int const child : it.children) {
            auto const& area = widgets[static_cast<std::size_t>(child)].extents;
            if (x >= area.x && y >= area.y && x < area.x + area.width && y < area.y + area.height) found = child;
            if (layer == Layer::lowest && found >= 0) break;
        }
        return found;
    }

    int parentOf(FakeWidget const& it) const {
        for (std::size_t i = 0; i < widgets.size(); ++i) {
            for (int const child : widgets[i].children) {
                if (&widgets[child] == &it) return static_cast<int>(i);
            }
        }
        return 0;
    }

    static std::pair<std::string, std::string> propertyOf(sd_bus_message* message) {
        char const *interface = "", *key = "";
        sd_bus_message_rewind(message, 1);
        sd_bus_message_read(message, "ss", &interface, &key);
        return {interface, key};
    }

    void noteInterface(int widget, std::string const& interface) {
        std::lock_guard const lock(mutex);
        interfaces[widget].insert(interface.substr(interface.rfind('.') + 1));
    }

    void count(int widget, std::string_view question) {
        std::lock_guard const lock(mutex);
        ++asked[{widget, std::string(question)}];
    }
};

FakeProgram::FakeProgram(TestBus const& bus, std::string toolkit, std::deque<FakeWidget> widgets)
    : state_(std::make_unique<State>()) {
    state_->toolkit = std::move(toolkit);
    state_->widgets = std::move(widgets);
    auto const answer = [state = state_.get()](AnsweringConnection& connection, sd_bus_message* call) {
        state->connection = &connection;
        return state->answer(call);
    };
    state_->owned = std::make_unique<AnsweringConnection>(bus, answer);
}

FakeProgram::~FakeProgram() { state_->owned.reset(); }

atspi::Address FakeProgram::widget(int place) const { return {state_->owned->name(), pathOf(place)}; }

void FakeProgram::hang(bool isHanging) { state_->isHanging = isHanging; }

int FakeProgram::asked(int widget, std::string const& question) const {
    std::lock_guard const lock(state_->mutex);
    auto const found = state_->asked.find({widget, question});
    return found == state_->asked.end() ? 0 : found->second;
}

std::set<std::string> FakeProgram::interfacesAsked(int widget) const {
    std::lock_guard const lock(state_->mutex);
    auto const found = state_->interfaces.find(widget);
    return found == state_->interfaces.end() ? std::set<std::string>() : found->second;
}

}
