#include <TavaroCore/Project/DemoMode.h>

namespace tavaro {

std::string_view displayName(DemoMode mode) {
    constexpr std::array<std::string_view, 6> names{"Website",        "Desktop App",     "Mobile App",
                                                    "SaaS Dashboard", "Terminal / Code", "Plain"};
    return names[static_cast<std::size_t>(mode)];
}

std::string_view summary(DemoMode mode) {
    constexpr std::array<std::string_view, 6> texts{
        "Browser frame, wide zooms, soft gradient.",     "Rounded window, deep shadow, medium zooms.",
        "Device frame, tight zooms, vertical-friendly.", "Gentle zooms — large UI stays readable.",
        "Strong zooms and crisp cursor for small text.", "No polish. Exactly what you recorded.",
    };
    return texts[static_cast<std::size_t>(mode)];
}

}
