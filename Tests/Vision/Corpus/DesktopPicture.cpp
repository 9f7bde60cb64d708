#include "DesktopPicture.h"

#include <algorithm>

namespace tavaro {

PageColors const darkColors{{30, 32, 38},    {212, 214, 218}, {110, 118, 129}, {97, 175, 239},
                            {152, 195, 121}, {44, 48, 56},    {180, 184, 190}, {70, 74, 82}};
PageColors const lightColors{{255, 255, 255}, {36, 41, 47},    {120, 128, 138}, {9, 105, 218},
                             {10, 110, 60},   {232, 234, 237}, {60, 64, 70},    {200, 204, 210}};
PageColors const blackColors{{0, 0, 0},      {230, 230, 230}, {130, 130, 130}, {80, 220, 120},
                             {230, 200, 90}, {60, 60, 60},    {230, 230, 230}, {90, 90, 90}};
PageColors const sandColors{{253, 246, 227}, {88, 110, 117},  {147, 161, 161}, {38, 139, 210},
                            {133, 100, 0},   {238, 232, 213}, {88, 110, 117},  {210, 204, 188}};

namespace {

std::vector<InkRun> runsOf(PageLine const& line, ScreenPage const& page) {
    std::vector<InkRun> runs;
    if (!page.isCode) return runs;
    auto const& text = line.line.text;
    auto const comment = std::min(text.find("// "), text.starts_with("# ") ? 0 : text.find(" # "));
    for (auto at = text.find('"'); at < comment;) {
        auto const end = text.find('"', at + 1);
        if (end == std::string::npos) break;
        runs.push_back({at, end + 1, page.colors.string});
        at = text.find('"', end + 1);
    }
    if (comment != std::string::npos) runs.push_back({comment, text.size(), page.colors.dim});
    return runs;
}

void drawLine(PageLine const& line, ScreenWindow const& window, DrawnScreen& screen) {
    auto const view = window.view();
    int const top = view.y + line.y - window.scrolled;
    if (top > view.bottom() || top + 3 * static_cast<int>(line.face.size) < view.y) return;
    if (line.field) {
        auto box = *line.field;
        box.x += view.x;
        box.y += view.y - window.scrolled;
        screen.fill(box, window.page->colors.border);
        screen.fill({box.x + 1, box.y + 1, box.width - 2, box.height - 2}, window.page->colors.paper);
    }
    screen.write(line.line.text, view.x + line.x, top, line.face, line.ink, runsOf(line, *window.page));
}

/// Blocks of colours that change with every frame.
void drawMovie(PixelBox const& view, int frame, DrawnScreen& screen) {
    constexpr int side = 12;
    auto state = static_cast<std::uint32_t>(frame) * 2654435761U + 1;
    for (int y = view.y; y < view.bottom(); y += side) {
        for (int x = view.x; x < view.right(); x += side) {
            state = state * 1664525 + 1013904223;
            auto const level = static_cast<std::uint8_t>(60 + (state >> 24) / 2 + 30 * ((x + 8 * frame) / 160 % 2));
            screen.fill({x, y, side, side},
                        {level, static_cast<std::uint8_t>(level / 2 + 40), static_cast<std::uint8_t>(200 - level / 2)});
        }
    }
}

void drawWindow(ScreenWindow const& window, DrawnScreen& screen) {
    auto const& colors = window.page->colors;
    auto const& frame = window.frame;
    screen.clip(frame);
    screen.fill(frame, colors.paper);
    screen.fill({frame.x, frame.y, frame.width, window.barHeight}, colors.bar);
    screen.write(window.title, frame.x + window.barHeight / 2, frame.y + window.barHeight / 6,
                 {"Inter", window.barHeight * 0.5}, colors.barText);
    screen.clip(window.view());
    if (window.playing) {
        drawMovie(window.view(), *window.playing, screen);
    } else {
        for (auto const& line : window.page->lines) drawLine(line, window, screen);
        for (auto const& line : window.typed) drawLine(line, window, screen);
    }
    screen.clip({});
}

/// The share of a box that is in its window and not behind those above it; sampled, which is exact enough for letters.
double seenShare(PixelBox const& box, DesktopPicture const& desktop, std::size_t window) {
    constexpr int steps = 6;
    auto const view = desktop.windows[window].view();
    int seen = 0;
    for (int row = 0; row < steps; ++row) {
        for (int column = 0; column < steps; ++column) {
            int const x = box.x + (2 * column + 1) * box.width / (2 * steps),
                      y = box.y + (2 * row + 1) * box.height / (2 * steps);
            auto const holds = [&](PixelBox const& area) {
                return x >= area.x && x < area.right() && y >= area.y && y < area.bottom();
            };
            bool isSeen = holds(view) && holds({0, 0, desktop.width, desktop.height});
            for (auto above = window + 1; isSeen && above < desktop.windows.size(); ++above)
                isSeen = !holds(desktop.windows[above].frame);
            seen += isSeen;
        }
    }
    return double(seen) / (steps * steps);
}

}

PixelBox overlapOf(PixelBox const& a, PixelBox const& b) {
    int const left = std::max(a.x, b.x), top = std::max(a.y, b.y);
    return {left, top, std::max(std::min(a.right(), b.right()) - left, 0),
            std::max(std::min(a.bottom(), b.bottom()) - top, 0)};
}

double areaOf(PixelBox const& box) { return double(box.width) * box.height; }

void draw(DesktopPicture const& desktop, DrawnScreen& screen) {
    screen.clip({});
    screen.fill({0, 0, desktop.width, desktop.height}, desktop.background);
    for (auto const& window : desktop.windows) drawWindow(window, screen);
    if (desktop.pointer) screen.drawPointer(desktop.pointer->first, desktop.pointer->second, desktop.scale);
}

std::vector<ShownLetter> shownLetters(DesktopPicture const& desktop, DrawnScreen& screen) {
    std::vector<ShownLetter> shown;
    std::size_t number = 0;
    for (std::size_t i = 0; i < desktop.windows.size(); ++i) {
        auto const& window = desktop.windows[i];
        if (window.playing) continue;
        auto const view = window.view();
        auto const add = [&](PageLine const& line) {
            ++number;
            if (line.line.marks.empty()) return;
            int const top = view.y + line.y - window.scrolled;
            if (top > view.bottom() || top + 3 * static_cast<int>(line.face.size) < view.y) return;
            auto const& letters = screen.letters(line.line.text, line.face);
            for (auto const& mark : line.line.marks) {
                for (auto const& letter : letters) {
                    if (letter.start < mark.start || letter.start >= mark.end) continue;
                    auto box = letter.box;
                    box.x += view.x + line.x;
                    box.y += top;
                    if (auto const seen = seenShare(box, desktop, i); seen > 0)
                        shown.push_back({mark.secret, number, letter.start, box, seen});
                }
            }
        };
        for (auto const& line : window.page->lines) add(line);
        for (auto const& line : window.typed) add(line);
    }
    return shown;
}

}
