#pragma once

#include <TavaroAutomation/Elements/Private/AccessibilityBus.h>
#include <TavaroAutomation/Elements/Private/Toolkit.h>

#include <map>
#include <optional>
#include <string>

namespace tavaro::atspi {

struct AccessibleNode;

/// Asks for what people read of widgets that have no name of their own: labels beside them, a description, a text that
/// shows while they are empty. What was typed into them is not asked for.
class TitleSearch {
public:
    explicit TitleSearch(AccessibilityBus& bus) : bus_(bus) {}

    /// The node stays where it is until all is answered.
    void ask(AccessibleNode& node, Toolkit toolkit);

private:
    // The best first.
    enum class Source { label, description, placeholder };

    void askForTitle(AccessibleNode& node, Toolkit toolkit);
    void offer(AccessibleNode& node, Source source, std::optional<std::string> const& text, Toolkit toolkit);

    AccessibilityBus& bus_;
    std::map<AccessibleNode const*, Source> sources_;
};

}
