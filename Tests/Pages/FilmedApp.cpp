#include "FilmedApp.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

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
    void text(QPointF const& at, char const* words, int size, QRgb color, QFont::Weight weight = QFont::Normal) {
        QFont font(QStringLiteral("Inter"));
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

}

void drawFilmedApp(Image& image, double seconds) {
    QImage canvas(image.row(0), image.width(), image.height(), image.row(1) - image.row(0), QImage::Format_RGBX8888);
    canvas.fill(QColor(paper));
    Drawing on(canvas);
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

}
