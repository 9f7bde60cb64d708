#pragma once

#include <Tavaro/Studio/Editor/Snapping.h>

#include <TavaroCore/History/History.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/FunctionRef.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tavaro {

class EditorSession;

/// One drag on the timeline, from the button down to the button up: all of it is one step. Each move starts from the
/// document before the drag, so that what a trim took away comes back with the pointer; where somebody else edits
/// meanwhile, it starts from that document instead. The session outlives it.
class ItemDrag {
public:
    /// `item` is the one under the pointer, `items` what moves with it.
    ItemDrag(EditorSession& session, UUID const& item, std::vector<UUID> items);

    /// Moves everything by so many seconds since the drag began. Edges within that many pixels of a target are caught;
    /// 0 catches nothing.
    bool moveBy(double by, double snapPixels);
    /// Moves an edge of the item to a time.
    bool moveEdge(ClipEdge edge, double to, double snapPixels);
    /// Takes back what the drag did, unless somebody else edited since.
    void takeBack();

private:
    bool change(std::string const& step, FunctionRef<void(DemoProject&)> change);
    double snapping(std::vector<double> const& edges, double pixels) const;
    std::vector<double> edgesMovedBy(double by) const;

    EditorSession& session_;
    EditGroup group_;
    DemoProject before_;
    std::uint64_t revision_; // as the drag left the document
    UUID item_;
    std::vector<UUID> items_;
    SnapTargets targets_;
    double moved_ = 0;      // seconds
    double movedFirst_ = 0; // of these, before somebody else edited
};

}
