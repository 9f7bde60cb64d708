#include "ScreenScenes.h"

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

using Page = std::shared_ptr<ScreenPage>;
using Block = std::vector<std::string>;

Block blockOf(std::string const& name, std::size_t number) {
    auto const blocks = SecretPlanting::blocks(name);
    return blocks[number % blocks.size()];
}

/// A scene while it is made.
struct Making {
    explicit Making(SceneLook const& look) : look(look), planting(look.seed) {}

    PageStyle style(int width) const { return {look.colors, look.textSize * look.scale, width}; }
    int barHeight() const { return static_cast<int>(28 * look.scale); }
    Page page(std::string const& kind, std::size_t block, int width) {
        auto const make = kind == "terminal"   ? terminalPage
                          : kind == "harmless" ? terminalPage
                          : kind == "editor"   ? editorPage
                          : kind == "browser"  ? browserPage
                                               : formPage;
        return make(blockOf(kind, block), style(width), planting);
    }
    ScreenWindow window(PixelBox const& frame, std::string const& kind, std::size_t block) {
        return {.frame = frame,
                .title = kind + " " + std::to_string(block + 1),
                .barHeight = barHeight(),
                .page = page(kind, block, frame.width)};
    }
    DesktopPicture desktop() const { return {.width = look.width, .height = look.height, .scale = look.scale}; }
    ScreenScene scene(std::string const& happens, std::function<DesktopPicture(double)> at) const {
        return {happens, look.name, look.width, look.height, look.fps, look.seconds, planting.secrets(), std::move(at)};
    }

    SceneLook look;
    SecretPlanting planting;
};

/// From 0 to 1 while `t` goes from `start` to `end`, slow at both ends.
double eased(double t, double start, double end) {
    auto const x = std::clamp((t - start) / (end - start), 0.0, 1.0);
    return x * x * (3 - 2 * x);
}

PixelBox inside(SceneLook const& look, double x, double y, double width, double height) {
    return {static_cast<int>(x * look.width), static_cast<int>(y * look.height), static_cast<int>(width * look.width),
            static_cast<int>(height * look.height)};
}

/// A hand that wanders over the screen.
std::pair<int, int> pointerAt(SceneLook const& look, double t) {
    return {static_cast<int>(look.width * (0.5 + 0.35 * std::sin(t * 0.9))),
            static_cast<int>(look.height * (0.5 + 0.3 * std::sin(t * 1.3 + 1)))};
}

/// A long page of blocks of that kind.
Page longPage(Making& making, std::string const& kind, int width, int blocks) {
    auto page = std::make_shared<ScreenPage>(*making.page(kind, making.look.seed, width));
    for (int n = 1; n < blocks; ++n)
        append(*page, *making.page(kind, making.look.seed + static_cast<std::size_t>(n), width));
    return page;
}

}

ScreenScene restingScene(SceneLook const& look) {
    constexpr double restSeconds = 5;
    Making making(look);
    std::vector<DesktopPicture> desktops;
    auto const count = std::max<std::size_t>(2, static_cast<std::size_t>(look.seconds / restSeconds));
    for (std::size_t n = 0; n < count; ++n) {
        bool const isFirst = n % 2 == 0;
        auto desktop = making.desktop();
        desktop.windows = {
            making.window(inside(look, 0.02, 0.04, 0.55, 0.9), isFirst ? "terminal" : "editor", look.seed + n / 2),
            making.window(inside(look, 0.59, 0.04, 0.39, 0.9), isFirst ? "forms" : "browser", look.seed + n / 2)};
        desktops.push_back(std::move(desktop));
    }
    return making.scene("resting", [=](double t) {
        auto desktop = desktops[std::min(count - 1, static_cast<std::size_t>(t * double(count) / look.seconds))];
        desktop.pointer = pointerAt(look, t);
        return desktop;
    });
}

ScreenScene printingScene(SceneLook const& look) {
    constexpr double linesASecond = 7;
    Making making(look);
    auto const frame = inside(look, 0.1, 0.08, 0.8, 0.84);
    auto const blocks = 1 + static_cast<int>(look.seconds * linesASecond / 20);
    auto const page = longPage(making, "terminal", frame.width, blocks);
    ScreenWindow empty{.frame = frame, .title = "terminal", .barHeight = making.barHeight()};
    auto const paper = std::make_shared<ScreenPage>();
    paper->colors = look.colors;
    empty.page = paper;
    auto const desktop = making.desktop();
    return making.scene("printing", [=](double t) {
        auto picture = desktop;
        auto window = empty;
        // In bursts, as programs print: three lines at once.
        auto const count = std::min(page->lines.size(), 8 + 3 * static_cast<std::size_t>(t * linesASecond / 3));
        window.typed.assign(page->lines.begin(), page->lines.begin() + static_cast<std::ptrdiff_t>(count));
        auto const& last = window.typed.back();
        window.scrolled = std::max(0, last.y + static_cast<int>(2.2 * last.face.size) - window.view().height);
        picture.windows = {window};
        return picture;
    });
}

ScreenScene scrollingScene(SceneLook const& look) {
    constexpr double secondsOfBlock = 3;
    Making making(look);
    bool const isEditor = look.seed % 2 == 0;
    auto const frame = inside(look, 0.06, 0.06, 0.88, 0.9);
    auto const blocks = std::max(4, static_cast<int>(look.seconds / secondsOfBlock));
    auto const page = longPage(making, isEditor ? "editor" : "browser", frame.width, blocks);
    ScreenWindow const window{.frame = frame, .title = "page", .barHeight = making.barHeight(), .page = page};
    auto const desktop = making.desktop();
    auto const furthest = std::max(0, page->height - window.view().height);
    return making.scene("scrolling", [=](double t) {
        auto picture = desktop;
        picture.windows = {window};
        // A second and a half each way over half of a window, then a rest; back at the end.
        auto const steps = std::max(1.0, std::ceil(2.0 * furthest / window.view().height));
        auto const turn = look.seconds / (steps + 1);
        double scrolled = 0;
        for (int n = 0; n < static_cast<int>(steps); ++n)
            scrolled += eased(t, (n + 0.4) * turn, (n + 1) * turn) / steps;
        scrolled -= eased(t, look.seconds - 0.8, look.seconds - 0.2);
        picture.windows[0].scrolled = static_cast<int>(std::max(scrolled, 0.0) * furthest);
        picture.pointer = std::pair{look.width / 2, look.height / 2};
        return picture;
    });
}

ScreenScene typingScene(SceneLook const& look) {
    constexpr double lettersASecond = 14, pause = 0.35;
    Making making(look);
    auto window = making.window(inside(look, 0.08, 0.1, 0.8, 0.8), "editor", look.seed + 3);
    static Block const typed{"# what the server needs",
                             "DATABASE_PASSWORD={password}",
                             "owner: {mail}",
                             "GITHUB_TOKEN={github}",
                             "PORT=8080",
                             "AWS_ACCESS_KEY_ID={aws}",
                             "phone: {usphone}",
                             "region: eu-west-1",
                             "card: {card}",
                             "NPM_TOKEN={npm}",
                             "# {name} knows about {word}",
                             "SESSION_SECRET={hex}",
                             "limit: 20"};
    auto const below = editorPage(typed, making.style(window.frame.width), making.planting);
    std::vector<PageLine> lines;
    for (auto line : below->lines) {
        line.y += window.page->height;
        lines.push_back(std::move(line));
    }
    auto const desktop = making.desktop();
    window.scrolled = std::max(0, window.page->height + below->height - window.view().height);
    return making.scene("typing", [=](double t) {
        auto picture = desktop;
        auto now = window;
        double left = t;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            auto const& line = lines[i];
            auto const& text = line.line.text;
            if (i + 1 < lines.size() && lines[i + 1].y == line.y) { // the line's number
                now.typed.push_back(line);
                continue;
            }
            // Long keys are pasted.
            auto const pasted =
                text.find('=') != std::string::npos && text.size() > 34 ? text.find('=') + 1 : text.size();
            auto const letters = static_cast<std::size_t>(std::max(left, 0.0) * lettersASecond);
            auto shown = line;
            shown.line = line.line.part(0, letters > pasted ? text.size() : letters);
            now.typed.push_back(shown);
            left -= static_cast<double>(pasted) / lettersASecond + pause;
            if (left <= 0) break;
        }
        picture.windows = {now};
        return picture;
    });
}

ScreenScene movingScene(SceneLook const& look) {
    constexpr double cycleSeconds = 10;
    Making making(look);
    auto const count = std::max<std::size_t>(1, static_cast<std::size_t>(look.seconds / cycleSeconds));
    std::vector<ScreenWindow> lower, upper;
    for (std::size_t n = 0; n < count; ++n) {
        lower.push_back(
            making.window(inside(look, 0.04, 0.06, 0.6, 0.88), n % 2 ? "editor" : "browser", look.seed + n));
        upper.push_back(
            making.window(inside(look, 0.5, 0.2, 0.46, 0.6), n % 2 ? "forms" : "terminal", look.seed + 2 + n));
    }
    auto const desktop = making.desktop();
    return making.scene("moving", [=](double t) {
        auto picture = desktop;
        auto const s = look.seconds / double(count);
        auto const cycle = std::min(count - 1, static_cast<std::size_t>(t / s));
        auto const at = t - double(cycle) * s;
        auto moved = upper[cycle];
        auto const share = eased(at, 0.2 * s, 0.4 * s) - eased(at, 0.6 * s, 0.85 * s);
        moved.frame.x -= static_cast<int>(share * 0.42 * look.width);
        moved.frame.y += static_cast<int>(share * 0.13 * look.height);
        picture.windows = {lower[cycle], moved};
        picture.pointer = std::pair{moved.frame.x + 200, moved.frame.y + 12};
        return picture;
    });
}

ScreenScene switchingScene(SceneLook const& look) {
    constexpr double cycleSeconds = 10;
    static constexpr std::array order{0U, 1U, 0U, 2U, 1U, 2U};
    Making making(look);
    auto const whole = inside(look, 0, 0, 1, 1);
    auto const count = std::max<std::size_t>(1, static_cast<std::size_t>(look.seconds / cycleSeconds));
    std::vector<ScreenWindow> windows; // three of each cycle
    for (std::size_t n = 0; n < count; ++n) {
        windows.push_back(making.window(whole, "editor", look.seed + n));
        windows.push_back(making.window(whole, "terminal", look.seed + n));
        windows.push_back(making.window(inside(look, 0.2, 0.1, 0.6, 0.8), "forms", look.seed + n));
    }
    auto const desktop = making.desktop();
    return making.scene("switching", [=](double t) {
        auto picture = desktop;
        auto const turn = static_cast<std::size_t>(t / 1.3);
        auto const cycle = (turn / order.size()) % count;
        picture.windows = {windows[3 * cycle + order[turn % order.size()]]};
        picture.pointer = pointerAt(look, t * 0.5);
        return picture;
    });
}

ScreenScene harmlessScene(SceneLook const& look) {
    Making making(look);
    auto const frame = inside(look, 0.06, 0.06, 0.88, 0.9);
    ScreenWindow window{.frame = frame, .title = "notes", .barHeight = making.barHeight()};
    window.page = longPage(making, "harmless", frame.width, 4);
    auto const furthest = std::max(0, window.page->height - window.view().height);
    auto const desktop = making.desktop();
    return making.scene("harmless", [=](double t) {
        auto picture = desktop;
        picture.windows = {window};
        picture.windows[0].scrolled = static_cast<int>(eased(t, 0.3 * look.seconds, 0.7 * look.seconds) * furthest);
        return picture;
    });
}

ScreenScene playingScene(SceneLook const& look) {
    Making making(look);
    auto const terminal = making.window(inside(look, 0.02, 0.04, 0.5, 0.92), "terminal", look.seed);
    auto movie = making.window(inside(look, 0.54, 0.2, 0.44, 0.5), "browser", 2);
    auto const desktop = making.desktop();
    return making.scene("playing", [=](double t) {
        auto picture = desktop;
        picture.windows = {terminal, movie};
        picture.windows[1].playing = static_cast<int>(t * 25);
        return picture;
    });
}

RedactionSettings sceneSettings() {
    RedactionSettings settings;
    settings.kinds.insert(SensitiveKind::custom);
    settings.customWords = {"Nordlicht", "Bluebird"};
    return settings;
}

}
