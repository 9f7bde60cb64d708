#include "FilmedApp.h"

#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

constexpr double width = 1280, height = 720; // of what is drawn, whatever the image's size
constexpr QRgb paper = 0xfff7f8fb, side = 0xff1f2a44, line = 0xffe3e7ef, ink = 0xff1b2333, faint = 0xff7b869c,
               blue = 0xff3f6fe8, green = 0xff2fa36b;

class Drawing {
public:
    explicit Drawing(QImage& image) : painter_(&image) {
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.scale(image.width() / width, image.height() / height);
    }

    void box(QRectF const& place, QRgb color, double radius = 0) {
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(QColor(color));
        painter_.drawRoundedRect(place, radius, radius);
    }
    void text(QPointF const& at, char const* words, int size, QRgb color, QFont::Weight weight = QFont::Normal,
              char const* face = "Inter") {
        QFont font(QString::fromUtf8(face));
        font.setPixelSize(size);
        font.setWeight(weight);
        painter_.setFont(font);
        painter_.setPen(QColor(color));
        painter_.drawText(at, QString::fromUtf8(words));
    }

private:
    QPainter painter_;
};

void drawSide(Drawing& on) {
    on.box({0, 0, 220, height}, side);
    on.text({28, 52}, "Harbour", 24, 0xffffffff, QFont::Bold);
    double y = 110;
    for (auto const* place : {"Overview", "Shipments", "Customers", "Reports"}) {
        if (y == 110) on.box({14, y - 26, 192, 40}, 0xff33426a, 8);
        on.text({28, y}, place, 16, 0xffd5dcec);
        y += 48;
    }
}

void drawChart(Drawing& on, double seconds) {
    on.box({252, 130, 620, 330}, 0xffffffff, 12);
    on.text({280, 170}, "Shipments by week", 17, ink, QFont::DemiBold);
    for (int i = 0; i < 12; ++i) {
        double const full = 60 + 150 * std::abs(std::sin(i * 1.7 + 0.6));
        double const tall = full * std::clamp(seconds - i * 0.25, 0.05, 1.0);
        on.box({284 + i * 48.0, 430 - tall, 30, tall}, i == 7 ? green : blue, 5);
    }
}

void drawTable(Drawing& on, double seconds) {
    on.box({896, 130, 352, 330}, 0xffffffff, 12);
    on.text({924, 170}, "On their way", 17, ink, QFont::DemiBold);
    constexpr std::array places{"Rotterdam", "Gdańsk", "Valparaíso", "Nagasaki", "Halifax"};
    auto const chosen = static_cast<std::size_t>(seconds / 2) % places.size();
    for (std::size_t i = 0; i < places.size(); ++i) {
        double const y = 214 + 48.0 * static_cast<double>(i);
        if (i == chosen) on.box({908, y - 27, 328, 42}, 0xffe6edff, 8);
        on.text({924, y}, places[i], 16, ink);
        on.text({1150, y}, i % 2 ? "on time" : "early", 15, i % 2 ? faint : green);
    }
}

void drawDashboard(Drawing& on, double seconds) {
    on.box({0, 0, width, height}, paper);
    drawSide(on);
    on.text({252, 60}, "Good morning, Ada", 30, ink, QFont::Bold);
    on.text({252, 94}, "Fourteen shipments arrive this week.", 17, faint);
    on.box({1100, 34, 148, 44}, blue, 10);
    on.text({1132, 62}, "New order", 16, 0xffffffff, QFont::DemiBold);
    drawChart(on, seconds);
    drawTable(on, seconds);
    for (int i = 0; i < 3; ++i) {
        on.box({252 + i * 336.0, 488, 324, 196}, 0xffffffff, 12);
        for (int row = 0; row < 4; ++row)
            on.box({280 + i * 336.0, 524 + row * 34.0, 120 + 31.0 * ((i + row) % 4), 10}, line, 5);
    }
}

/// Words of a program are bars, as one sees them from afar.
void drawEditor(Drawing& on) {
    constexpr std::array colors{0xffc792ea, 0xff82aaff, 0xffc3e88d, 0xfff78c6c, 0xff8a93ab};
    on.box({0, 0, width, height}, 0xff1b2030);
    on.box({0, 0, 250, height}, 0xff151928);
    for (int row = 0; row < 13; ++row)
        on.box({28.0 + 18 * (row % 3), 40 + row * 44.0, 90 + 17.0 * (row % 4), 12}, 0xff46506b, 6);
    on.box({250, 268, width - 250, 36}, 0xff252c42);
    for (int row = 0; row < 18; ++row) {
        on.box({276, 30 + row * 38.0, 18, 10}, 0xff3a435d, 5);
        double x = 322 + 36.0 * ((row % 6 + 1) / 2 % 3);
        for (int word = 0; word < 3 + row * 7 % 4; ++word) {
            double const wide = 44 + (row * 31 + word * 47) % 110;
            on.box({x, 28 + row * 38.0, wide, 14}, colors[static_cast<std::size_t>((row + word * 2) % 5)], 7);
            x += wide + 14;
        }
    }
}

void drawDocument(Drawing& on) {
    on.box({0, 0, width, height}, 0xffe9ecf2);
    on.box({0, 0, width, 64}, 0xffffffff);
    for (int i = 0; i < 7; ++i) on.box({32 + i * 62.0, 22, 40, 20}, line, 6);
    on.box({260, 96, 760, height}, 0xffffffff, 6);
    on.text({330, 190}, "What is new in 2.4", 42, ink, QFont::Bold);
    for (int row = 0; row < 3; ++row) on.box({330, 226 + row * 30.0, row == 2 ? 380.0 : 620.0, 11}, 0xffcfd6e3, 5);
    on.box({330, 336, 620, 230}, 0xffdfe8ff, 10);
    on.box({370, 376, 250, 150}, blue, 10);
    on.box({650, 376, 260, 65}, green, 10);
    on.box({650, 461, 260, 65}, 0xfff2b04a, 10);
    for (int row = 0; row < 3; ++row) on.box({330, 600 + row * 30.0, 560.0 - row * 70, 11}, 0xffcfd6e3, 5);
}

void drawTerminal(Drawing& on) {
    constexpr std::array lines{"$ cargo test --release",      "running 42 tests",
                               "test parser::empty ... ok",   "test parser::nested ... ok",
                               "test export::resumes ... ok", "test export::bug_1173 ... FAILED",
                               "expected 1920, found 1918",   "41 passed, 1 failed",
                               "$ git bisect start"};
    on.box({0, 0, width, height}, 0xff12161f);
    on.box({0, 0, width, 48}, 0xff1d2330);
    for (int i = 0; i < 3; ++i)
        on.box({24 + i * 30.0, 16, 16, 16}, std::array{0xffe0605a, 0xffe5b24a, 0xff5fb865}[static_cast<std::size_t>(i)],
               8);
    double y = 116;
    for (std::string_view const each : lines) {
        auto const color = each.starts_with("$")      ? 0xffe8ecf5
                           : each.ends_with("FAILED") ? 0xffff8a84
                           : each.ends_with("ok")     ? 0xff7fd6a4
                                                      : 0xff98a2b8;
        on.text({44, y}, each.data(), 32, color, QFont::Normal, "JetBrains Mono");
        y += 64;
    }
}

void draw(QImage& canvas, FilmedApp app, double seconds) {
    Drawing on(canvas);
    switch (app) {
    case FilmedApp::dashboard: return drawDashboard(on, seconds);
    case FilmedApp::editor: return drawEditor(on);
    case FilmedApp::document: return drawDocument(on);
    case FilmedApp::terminal: return drawTerminal(on);
    }
}

QImage canvasOf(Image& image) {
    return QImage(image.row(0), image.width(), image.height(), image.row(1) - image.row(0), QImage::Format_RGBX8888);
}

}

void drawFilmedApp(Image& image, FilmedApp app, double seconds) {
    auto canvas = canvasOf(image);
    draw(canvas, app, seconds);
}

void drawStill(Image& image, FilmedApp app) {
    constexpr std::array<std::pair<QRgb, QRgb>, 4> grounds{
        {{0xff6a5af9, 0xffd66efd}, {0xff0f2027, 0xff2c7a7b}, {0xfff7b267, 0xfff25c54}, {0xff1f3b73, 0xff6a8fe0}}};
    auto const [from, to] = grounds[static_cast<std::size_t>(app)];
    auto canvas = canvasOf(image);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient ground(0, 0, image.width(), image.height());
    ground.setColorAt(0, from);
    ground.setColorAt(1, to);
    painter.fillRect(canvas.rect(), ground);
    QImage filmed(image.width() * 86 / 100, image.height() * 86 / 100, QImage::Format_RGBX8888);
    draw(filmed, app, 3);
    QPoint const at((image.width() - filmed.width()) / 2, (image.height() - filmed.height()) / 2);
    QPainterPath frame;
    frame.addRoundedRect(QRect(at, filmed.size()), 8, 8);
    painter.setClipPath(frame);
    painter.drawImage(at, filmed);
}

}
