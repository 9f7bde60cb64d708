#pragma once

#include <array>
#include <string_view>

namespace tavaro {

/// What kind of demo a project is: the preset of Auto Polish.
enum class DemoMode { website, desktopApp, mobileApp, dashboard, terminal, plain };

constexpr std::array<std::string_view, 6> namesOf(DemoMode) {
    return {"website", "desktopApp", "mobileApp", "dashboard", "terminal", "plain"};
}

std::string_view displayName(DemoMode mode);
std::string_view summary(DemoMode mode);

}
