#pragma once

#include <Tavaro/Model/Project/OpenProject.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/FunctionRef.h>

#include <cstdint>
#include <string>

namespace tavaro {

/// Makes it that document again; copies what differs.
void restore(DemoProject& project, DemoProject const& before);

/// What a hand does from the button down to the button up, as one step of a project's history. Each change starts from
/// the document as it was when it began, so that what was passed over on the way is as it was, and a way that ends
/// where it began leaves no step. Where somebody else edits meanwhile, that ends it: what was done until then stays.
/// The project outlives it.
class DragStep {
public:
    DragStep(OpenProject& project, std::string name);

    /// The document when it began.
    DemoProject const& before() const { return before_; }
    bool isOver() const { return revision_ != project_.revision(); }
    /// Instead of the change before. False where somebody else has edited. Throws what `OpenProject::edit` throws, and
    /// then nothing has changed.
    bool change(FunctionRef<void(DemoProject&)> change);
    void takeBack();

private:
    OpenProject& project_;
    std::string name_;
    EditGroup group_;
    DemoProject before_;
    std::uint64_t revision_ = 0; // as it left the document
};

}
