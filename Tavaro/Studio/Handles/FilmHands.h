#pragma once

#include <Tavaro/Studio/Editor/DragStep.h>
#include <Tavaro/Studio/Handles/FilmDrag.h>
#include <Tavaro/Studio/Preview/FilmView.h>

#include <TavaroRender/Places/FramePlaces.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

class EditorSession;

enum class FilmTool {
    select,
    hide, // draws an area to be hidden
    crop, // of the recording
};

constexpr std::array<std::string_view, 3> namesOf(FilmTool) { return {"select", "hide", "crop"}; }

/// What hands do to the things on the picture of a film: they select, move, reshape and draw, and each drag is one step
/// of the history. The things are those of the picture that is shown, which follows what the hands do. The session
/// outlives it.
class FilmHands {
public:
    explicit FilmHands(EditorSession& session) : session_(session) {}

    /// The picture that is shown now, with all that was edited; null: none that can be taken hold of.
    void see(std::shared_ptr<FramePlaces const> places);
    /// Looks anew what is selected.
    void refresh();

    FilmTool tool() const { return tool_; }
    void take(FilmTool tool);
    /// How the film is to be looked at for what the hands do.
    FilmView view() const;

    std::vector<FilmThing> const& things() const { return things_; } // the topmost last
    std::vector<FilmThing> const& selected() const { return selected_; }
    std::vector<FilmGuide> const& guides() const { return guides_; }
    std::optional<NormalizedRect> const& drawn() const { return drawn_; } // that is being drawn
    std::optional<FilmHit> hit(FilmPointer const& pointer) const;

    enum class Select { only, also };
    void select(FilmThing const& thing, Select how = Select::only);

    void press(FilmPointer const& pointer, Select how = Select::only);
    void move(FilmPointer const& pointer);
    void release(FilmPointer const& pointer);
    /// Takes back what the drag did.
    void cancel();
    bool isPressed() const { return press_.has_value(); }
    bool isDragging() const { return step_.has_value() && press_.has_value(); }

    /// Moves what is selected by pixels of the film; false without a selection. Until `rest` it is one step.
    bool nudge(double across, double down);
    /// Makes the one thing that is selected larger or smaller about its middle.
    bool grow(double factor);
    void rest();

    /// Shows the whole recording again.
    void clearCrop();

private:
    struct Press {
        FilmPointer pointer;
        std::optional<FilmHit> hit;
        std::optional<FilmThing> leaves; // the selection, where nothing is dragged
    };

    bool isSelected(FilmThing const& thing) const;
    void begin();
    void drag(FilmPointer const& pointer);
    void draw(FilmPointer const& pointer);
    bool changeSelected(FilmGrip grip);
    bool step(FunctionRef<void(DemoProject&)> change);
    void expect(std::vector<FilmThing> things);
    std::string stepName(FilmGrip grip, std::vector<FilmThing> const& things) const;

    EditorSession& session_;
    std::shared_ptr<FramePlaces const> places_;
    FilmTool tool_ = FilmTool::select;
    std::vector<FilmThing> things_, selected_;
    std::vector<FilmThing> expected_; // where edits put them, until a picture shows it
    std::vector<FilmGuide> guides_;
    std::optional<NormalizedRect> drawn_;
    std::optional<ThingKind> chosen_; // of what is no item: the camera's picture where no move put it there, a divider

    std::optional<Press> press_;
    std::optional<FilmDrag> drag_;
    std::optional<DragStep> step_;                  // of a drag, or of keys
    std::shared_ptr<FramePlaces const> stepPlaces_; // of the picture that it began with
    std::vector<FilmThing> keyed_;                  // what the keys move, as it was
    UnitPoint2 keyedBy_;
    double keyedFactor_ = 1;
};

}
