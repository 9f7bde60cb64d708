#pragma once

#include "../Capture/TestDisplay.h"

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Records/JSONValue.h>

#include <array>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace tavaro {

enum class SinkToolkit { gtk3, gtk4, qt5, chromium };

constexpr std::array<std::string_view, 4> namesOf(SinkToolkit) { return {"GTK 3", "GTK 4", "Qt 5", "Chromium"}; }

/// A program of that toolkit with a text to type into, which has the keyboard, and a long list below it to scroll; it
/// says what reaches it. One a display, in its top-left corner.
class SinkProgram {
public:
    SinkProgram(TestDisplay const& display, SinkToolkit toolkit);
    ~SinkProgram();
    SinkProgram(SinkProgram const&) = delete;
    SinkProgram& operator=(SinkProgram const&) = delete;

    static bool isInstalled(SinkToolkit toolkit);
    /// Gives it the keyboard once it has painted; false when it does not come.
    bool awaitReady(TestClient& client);

    /// Stops it from answering anything.
    void freeze() const;

    std::string text();
    double scrolled(std::string_view direction); // "down", "right"

private:
    void listen();

    pid_t process_ = -1;
    FileDescriptor output_;
    std::string unread_;
    JSONValue::Object said_;
};

/// Printable ASCII, with characters in between that a US keyboard lacks: no more different ones than it has spare keys.
std::string textToType(std::size_t characters);

}
