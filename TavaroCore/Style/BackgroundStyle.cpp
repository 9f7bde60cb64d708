#include <TavaroCore/Style/BackgroundStyle.h>

namespace tavaro {

std::string_view BackgroundStyle::displayName() const {
    constexpr std::array<std::string_view, 7> names{
        "Solid", "Linear Gradient", "Radial Gradient", "Mesh", "Aurora", "Image", "None"};
    return names[content.index()];
}

}
