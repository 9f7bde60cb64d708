#include "Pictures.h"

#include <array>
#include <cmath>

#include <cairo/cairo.h>

#include "Canvas.h"

namespace tavaro::gallery {

namespace {

using Color = Canvas::Color;
using TextStyle = Canvas::TextStyle;

constexpr Color ink{0x111827};
constexpr Color muted{0x6B7280};
constexpr Color hairline{0xE5E7EB};
constexpr Color brand{0x4F46E5};
constexpr Color white{0xFFFFFF};

void drawSideBar(Canvas& c) {
    c.box(0, 0, 264, 1000, 0, {0xF9FAFB});
    c.line(264, 0, 264, 1000, 1, hairline);
    c.box(28, 30, 34, 34, 10, brand);
    c.text("Harbor", 74, 34, {22, true}, ink);
    std::array<char const*, 6> const items{"Overview", "Orders", "Customers", "Products", "Reports", "Settings"};
    for (std::size_t i = 0; i < items.size(); ++i) {
        auto const y = 112 + 52.0 * static_cast<double>(i);
        bool const isChosen = i == 0;
        if (isChosen) c.box(16, y - 10, 232, 42, 10, {0xEEF2FF});
        c.box(32, y, 20, 20, 5, isChosen ? brand : Color{0xD1D5DB});
        c.text(items[i], 68, y - 1, {17, isChosen}, isChosen ? brand : Color{0x374151});
    }
    c.disc(46, 944, 20, 20, {0xF59E0B});
    c.text("Mira Lindqvist", 78, 926, {15, true}, ink);
    c.text("Admin", 78, 946, {13}, muted);
}

void drawCard(Canvas& c, double x, char const* title, char const* value, char const* change, bool isUp) {
    c.box(x, 148, 300, 132, 14, hairline);
    c.box(x + 1, 149, 298, 130, 13, white);
    c.text(title, x + 24, 168, {15}, muted);
    c.text(value, x + 24, 196, {34, true}, ink);
    c.box(x + 24, 244, 74, 24, 12, isUp ? Color{0xDCFCE7} : Color{0xFEE2E2});
    c.text(change, x + 36, 247, {13, true}, isUp ? Color{0x15803D} : Color{0xB91C1C});
}

void drawChart(Canvas& c) {
    c.box(296, 308, 836, 392, 14, hairline);
    c.box(297, 309, 834, 390, 13, white);
    c.text("Revenue", 322, 332, {19, true}, ink);
    c.text("Last 30 days", 322, 360, {14}, muted);
    for (int i = 0; i < 5; ++i) c.line(322, 430 + 56 * i, 1106, 430 + 56 * i, 1, {0xF3F4F6});
    auto const height = [](double t) { return 610 - 70 * t - 46 * std::sin(t * 3.1) - 16 * std::sin(t * 9.7 + 1); };
    auto* cairo = c.cairo();
    for (auto const isArea : {true, false}) {
        cairo_move_to(cairo, 322, height(0));
        for (int x = 322; x <= 1106; x += 4) cairo_line_to(cairo, x, height((x - 322) / 392.0));
        if (isArea) {
            cairo_line_to(cairo, 1106, 676);
            cairo_line_to(cairo, 322, 676);
            c.setColor({0x4F46E5, 0.10});
            cairo_fill(cairo);
        } else {
            c.setColor(brand);
            cairo_set_line_width(cairo, 4);
            cairo_stroke(cairo);
        }
    }
}

void drawOrders(Canvas& c) {
    c.box(296, 728, 836, 244, 14, hairline);
    c.box(297, 729, 834, 242, 13, white);
    c.text("Latest orders", 322, 748, {19, true}, ink);
    std::array<std::array<char const*, 4>, 4> const rows{{{"#4821", "Aster Coffee", "€ 128.00", "Paid"},
                                                          {"#4820", "Nordhaus", "€ 64.50", "Paid"},
                                                          {"#4819", "Studio Kiln", "€ 310.00", "Open"},
                                                          {"#4818", "Lumen & Co", "€ 92.20", "Paid"}}};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        auto const y = 794 + 43.0 * static_cast<double>(i);
        c.line(322, y - 6, 1106, y - 6, 1, {0xF3F4F6});
        c.text(rows[i][0], 322, y + 4, {15, false, true}, muted);
        c.text(rows[i][1], 440, y + 4, {16}, ink);
        c.text(rows[i][2], 800, y + 4, {16, true}, ink);
        c.text(rows[i][3], 1030, y + 4, {15, true}, rows[i][3][0] == 'P' ? Color{0x15803D} : Color{0xB45309});
    }
}

void drawGoals(Canvas& c) {
    c.box(1160, 308, 408, 664, 14, hairline);
    c.box(1161, 309, 406, 662, 13, white);
    c.text("Goals", 1186, 332, {19, true}, ink);
    std::array<char const*, 5> const goals{"Launch spring range", "Reply in an hour", "Ship to Norway", "Newsletter",
                                           "Photo session"};
    std::array const shares{0.86, 0.64, 0.45, 0.92, 0.3};
    for (std::size_t i = 0; i < goals.size(); ++i) {
        auto const y = 384 + 82.0 * static_cast<double>(i);
        c.text(goals[i], 1186, y, {16}, ink);
        c.box(1186, y + 32, 356, 10, 5, {0xEEF2FF});
        c.box(1186, y + 32, 356 * shares[i], 10, 5, i % 2 ? Color{0x06B6D4} : brand);
    }
    c.gradient(1186, 816, 356, 130, 12, {0x6366F1}, {0x4338CA});
    c.text("Try the new planner", 1210, 840, {19, true}, white);
    c.text("Plan a week in five minutes.", 1210, 870, {14}, {0xE0E7FF});
    c.box(1210, 902, 104, 28, 14, white);
    c.text("Open", 1242, 906, {14, true}, brand);
}

/// Head and shoulders.
void drawFigure(Canvas& c, bool isMatte) {
    auto const paint = [&](Color color) { return isMatte ? Color{0xFFFFFF} : color; };
    c.disc(640, 820, 330, 300, paint({0x1F3A5F}));    // shoulders
    c.box(585, 430, 110, 130, 50, paint({0xC98B62})); // neck
    c.disc(640, 250, 168, 176, paint({0x2B1D16}));    // hair
    c.disc(640, 320, 132, 168, paint({0xE2A577}));    // face
    if (isMatte) return;
    c.disc(640, 190, 134, 84, {0x2B1D16});
    for (auto const x : {588.0, 692.0}) {
        c.disc(x, 312, 17, 11, {0xFFFFFF});
        c.disc(x, 312, 9, 9, {0x3B2A20});
        c.line(x - 24, 282, x + 24, 280, 8, {0x2B1D16});
    }
    c.line(640, 330, 634, 366, 5, {0xC07F57});
    c.line(634, 366, 648, 368, 5, {0xC07F57});
    auto* cairo = c.cairo();
    c.setColor({0xA2453D});
    cairo_set_line_width(cairo, 9);
    cairo_arc(cairo, 640, 384, 42, 0.35, M_PI - 0.35);
    cairo_stroke(cairo);
    c.disc(640, 548, 62, 34, {0xF3F4F6}); // collar
}

}

Image drawApplication() {
    Canvas c(1600, 1000);
    c.box(0, 0, 1600, 1000, 0, white);
    drawSideBar(c);
    c.text("Good morning, Mira", 296, 36, {30, true}, ink);
    c.text("Here is what happened since yesterday.", 296, 80, {17}, muted);
    c.box(1388, 40, 180, 46, 12, brand);
    c.text("New order", 1434, 51, {17, true}, white);
    drawCard(c, 296, "Revenue", "€ 24,310", "+12.4 %", true);
    drawCard(c, 618, "Orders", "1,284", "+3.1 %", true);
    drawCard(c, 940, "Returns", "38", "−1.8 %", false);
    drawCard(c, 1262, "Visitors", "52,907", "+8.9 %", true);
    drawChart(c);
    drawOrders(c);
    drawGoals(c);
    return c.image();
}

Image drawPerson() {
    Canvas c(1280, 720);
    c.gradient(0, 0, 1280, 720, 0, {0xE9DCC9}, {0xB89F86});
    c.box(70, 60, 300, 420, 6, {0x8A6B52});
    for (int shelf = 0; shelf < 3; ++shelf)
        for (int book = 0; book < 9; ++book) {
            std::array<unsigned, 4> const spines{0xB4533C, 0x2F5D62, 0xD9A441, 0x5E548E};
            auto const height = 84 + (book * 37 + shelf * 11) % 30;
            c.box(86 + 30 * book, 190 + 136 * shelf - height, 24, height, 2, {spines[(book + shelf) % 4]});
        }
    c.gradient(930, 40, 270, 360, 8, {0xDCEBF7}, {0xA9C8E2});
    c.line(1065, 40, 1065, 400, 8, {0xF5EFE6});
    for (int leaf = -3; leaf <= 3; ++leaf) {
        auto const rise = 150 - 26 * std::abs(leaf);
        c.disc(1130 + 24 * leaf, 560 - rise / 2.0, 19, rise / 2.0, {leaf % 2 ? 0x4D7C4Au : 0x5F9259u});
    }
    c.box(1085, 560, 90, 120, 14, {0xC66B3D});
    drawFigure(c, false);
    return c.image();
}

Image drawPersonMatte() {
    Canvas c(1280, 720);
    c.box(0, 0, 1280, 720, 0, {0x000000});
    drawFigure(c, true);
    return c.image();
}

}
