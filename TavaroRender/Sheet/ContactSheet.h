#pragma once

#include <memory>
#include <string>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Sheet/SheetLayout.h>

namespace tavaro {

/// Moments of a film side by side on a dark sheet, under a title and with a label each.
class ContactSheet {
public:
    ContactSheet(SheetLayout const& layout, std::string const& title, std::string const& detail);
    ~ContactSheet();
    ContactSheet(ContactSheet const&) = delete;
    ContactSheet& operator=(ContactSheet const&) = delete;

    /// Places a picture of the layout's size, in reading order; no more than the layout has room for.
    void add(ImageView picture, std::string const& label);

    /// The opaque sheet. Ends it.
    std::shared_ptr<Image const> finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
