#include "PagePictures.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tavaro {

namespace {

constexpr int reduction = 8;
constexpr int step = 8;     // between two stored values of a colour
constexpr int plainly = 56; // sharp edges move by a fraction of a pixel from machine to machine, and with the factor

int distance(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
}

int coarse(int value) { return std::min((value + step / 2) / step * step, 255); }

template<class Of> void change(QImage& picture, Of const& of) {
    for (int y = 0; y < picture.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) row[x] = of(x, y, row[x]);
    }
}

}

QImage small(QImage const& picture) {
    auto const points = picture.size() / picture.devicePixelRatio();
    auto reduced = picture.scaled(points / reduction, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                       .convertToFormat(QImage::Format_RGB32);
    reduced.setDevicePixelRatio(1);
    change(reduced, [](int, int, QRgb of) { return qRgb(coarse(qRed(of)), coarse(qGreen(of)), coarse(qBlue(of))); });
    return reduced;
}

PageDifference difference(QImage const& stored, QImage const& shown) {
    if (stored.size() != shown.size()) return {255, 1};
    double sum = 0, other = 0;
    for (int y = 0; y < shown.height(); ++y)
        for (int x = 0; x < shown.width(); ++x) {
            auto const by = distance(stored.pixel(x, y), shown.pixel(x, y));
            sum += by;
            other += by > plainly;
        }
    double const pixels = shown.width() * static_cast<double>(shown.height());
    return {sum / pixels, other / pixels};
}

QImage comparison(QImage const& stored, QImage const& shown) {
    constexpr int gap = 8, strength = 4;
    auto differing = shown;
    if (stored.size() == shown.size())
        change(differing, [&](int x, int y, QRgb of) {
            auto const by = std::min(255, strength * distance(of, stored.pixel(x, y)));
            return qRgb(by, by, by);
        });
    QImage sheet(2 * shown.width() + stored.width() + 2 * gap, std::max(shown.height(), stored.height()),
                 QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    painter.drawImage(0, 0, stored);
    painter.drawImage(stored.width() + gap, 0, shown);
    painter.drawImage(stored.width() + shown.width() + 2 * gap, 0, differing);
    return sheet;
}

}
