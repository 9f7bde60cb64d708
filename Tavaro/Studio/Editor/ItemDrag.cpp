#include <Tavaro/Studio/Editor/ItemDrag.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Editor/ItemEdits.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <fmt/format.h>

#include <utility>

namespace tavaro {

ItemDrag::ItemDrag(EditorSession& session, UUID const& item, std::vector<UUID> items)
    : session_(session)
    , group_(session.project().newGroup())
    , before_(session.document())
    , revision_(session.project().revision())
    , item_(item)
    , items_(std::move(items))
    , targets_(before_, session.playhead(), items_) {}

double ItemDrag::snapping(std::vector<double> const& edges, double pixels) const {
    if (pixels <= 0 || !session_.snaps()) return 0;
    auto const radius = snapRadius(pixels, session_.timelineScale());
    return targets_.snap(edges, radius, before_.exportSettings.editingRate()).by;
}

bool ItemDrag::change(std::string const& step, FunctionRef<void(DemoProject&)> change) {
    auto const isChanged = session_.edit(
        step,
        [&](DemoProject& project) {
            if (session_.project().revision() != revision_) { // somebody else edited
                before_ = project;
                movedFirst_ = moved_;
            }
            auto moved = before_;
            change(moved);
            project = std::move(moved);
        },
        group_);
    revision_ = session_.project().revision();
    return isChanged;
}

std::vector<double> ItemDrag::edgesMovedBy(double by) const {
    std::vector<double> edges;
    visitItem(before_, item_, [&](auto const& item) {
        auto const place = placeOf(item);
        if (!place) return;
        edges.push_back(place->start + by);
        if (place->duration > 0) edges.push_back(place->end() + by);
    });
    return edges;
}

bool ItemDrag::moveBy(double by, double snapPixels) {
    auto const target = by + snapping(edgesMovedBy(by - movedFirst_), snapPixels);
    auto const noun = items_.size() == 1 ? std::string("Item") : fmt::format("{} Items", items_.size());
    return change(fmt::format("Move {}", noun), [&](DemoProject& project) {
        moved_ = movedFirst_ + moveItems(project, items_, target - movedFirst_);
    });
}

bool ItemDrag::moveEdge(ClipEdge edge, double to, double snapPixels) {
    auto const target = to + snapping({to}, snapPixels);
    return change("Trim", [&](DemoProject& project) { moveItemEdge(project, item_, edge, target); });
}

void ItemDrag::takeBack() {
    auto const step = session_.project().undoName();
    if (!step || session_.project().revision() != revision_) return;
    change(std::string(*step), [](DemoProject&) {});
}

}
