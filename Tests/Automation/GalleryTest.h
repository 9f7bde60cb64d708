#pragma once

#include "TestDesktop.h"

#include <TavaroAutomation/Driving/UIAutomation.h>
#include <TavaroAutomation/Errors/AutomationError.h>

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>

namespace tavaro {

/// A test with a desktop of its own and one gallery of widgets on it, in front.
class GalleryTest : public testing::Test {
protected:
    /// Skips the test where the gallery cannot run here.
    void open(std::string const& gallery, std::string const& arguments = {});

    bool hasLogged(std::string const& line) const;
    bool logsSoon(std::string const& line) const;
    /// By title.
    std::map<std::string, UIElement> elements();
    /// Without the time that people need to see it.
    UIActionReport click(UITarget const& target);
    UIActionReport clickTitle(std::string const& title, std::string const& role = {});
    /// A second click selects the word, a third the line.
    void expectWordAndLineSelected(std::string const& text);
    /// Its context menu has an entry "Inspect", which logs that line.
    void expectContextMenu(std::string const& title, std::string const& line);
    /// The sentence that an action ends with.
    template<class Action> std::string sentenceOf(Action action) {
        try {
            action();
        } catch (AutomationError const& error) {
            return error.what();
        }
        return "done";
    }

    std::string const app = "Widget Gallery";
    std::optional<TestDesktop> desktop;
    std::optional<UIAutomation> automation;
    UIAppInfo info;
};

}
