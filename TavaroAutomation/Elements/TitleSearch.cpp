#include <TavaroAutomation/Elements/Private/TitleSearch.h>

#include <TavaroAutomation/Elements/Private/AccessibleTree.h>
#include <TavaroAutomation/Elements/Private/ElementRole.h>
#include <TavaroAutomation/Elements/Private/ElementTitle.h>

#include <utility>
#include <vector>

namespace tavaro::atspi {

void TitleSearch::ask(AccessibleNode& node, Toolkit toolkit) {
    if (!isClickable(node.role)) return;
    if (node.name.empty()) askForTitle(node, toolkit);
    bool const mayBeSearch = isField(node.role) && node.role != Role::passwordText;
    if (!mayBeSearch || !habitsOf(toolkit).showsPages) return;
    bus_.attributes(node.address, [&node](auto const& attributes) {
        if (attributes && attributes->contains("text-input-type"))
            node.isSearch = attributes->at("text-input-type") == "search";
    });
}

void TitleSearch::askForTitle(AccessibleNode& node, Toolkit toolkit) {
    bus_.labels(node.address, [this, &node, toolkit](auto const& labels) {
        for (auto const& label : labels.value_or(std::vector<Address>{})) {
            bus_.name(label, [this, &node, toolkit](auto const& name) { offer(node, Source::label, name, toolkit); });
        }
    });
    bus_.description(node.address,
                     [this, &node, toolkit](auto const& text) { offer(node, Source::description, text, toolkit); });
    bus_.attributes(node.address, [this, &node, toolkit](auto const& attributes) {
        if (attributes && attributes->contains("placeholder-text"))
            offer(node, Source::placeholder, attributes->at("placeholder-text"), toolkit);
    });
}

/// The better source wins, whenever it answers.
void TitleSearch::offer(AccessibleNode& node, Source source, std::optional<std::string> const& text, Toolkit toolkit) {
    auto readable = readableTitle(text.value_or(""), toolkit);
    if (readable.empty()) return;
    auto const [best, isFirst] = sources_.try_emplace(&node, source);
    if (!isFirst && best->second <= source) return;
    best->second = source;
    node.title = std::move(readable);
}

}
