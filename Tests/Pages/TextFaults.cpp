#include "TextFaults.h"

#include <QColor>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tavaro {

namespace {

constexpr double slack = 1.01; // points, since layouts round
constexpr int elidedInTheMiddle = Qt::ElideMiddle;
constexpr double tooMuch = 2; // points, in both directions, that words may be over others

/// A piece of text as it is shown.
struct Shown {
    QQuickItem* item;
    QString text;
    QRectF words; // in the window
    QRectF seen;  // of them
    double opacity;
};

bool is(QQuickItem const* item, char const* type) { return item->inherits(type); }

QQuickItem* above(QQuickItem const* item, char const* type) {
    for (auto* parent = item->parentItem(); parent; parent = parent->parentItem())
        if (is(parent, type)) return parent;
    return nullptr;
}

double opacityOf(QQuickItem const* item) {
    double opacity = 1;
    for (; item; item = item->parentItem()) opacity *= item->opacity();
    return opacity;
}

/// Of what it paints, where it is aligned.
QRectF painted(QQuickItem const& item) {
    double const width = item.property("contentWidth").toDouble(), height = item.property("contentHeight").toDouble();
    double const padLeft = item.property("leftPadding").toDouble(), padTop = item.property("topPadding").toDouble();
    double const roomX = item.width() - padLeft - item.property("rightPadding").toDouble() - width;
    double const roomY = item.height() - padTop - item.property("bottomPadding").toDouble() - height;
    auto const across = item.property("effectiveHorizontalAlignment").toInt(),
               down = item.property("verticalAlignment").toInt();
    double const x = across & Qt::AlignRight ? roomX : across & Qt::AlignHCenter ? roomX / 2 : 0;
    double const y = down & Qt::AlignBottom ? roomY : down & Qt::AlignVCenter ? roomY / 2 : 0;
    return {padLeft + x, padTop + y, width, height};
}

/// The part of the window in which it can be seen.
QRectF seenIn(QQuickItem const* item, QRectF const& window) {
    QRectF seen = window;
    for (auto* parent = item->parentItem(); parent; parent = parent->parentItem())
        if (parent->clip()) seen &= parent->mapRectToScene(parent->boundingRect());
    return seen;
}

void collect(QQuickItem* item, QRectF const& window, std::vector<Shown>& found) {
    if (!item->isVisible() || item->opacity() < 0.05) return;
    if (is(item, "QQuickText") || is(item, "QQuickTextInput") || is(item, "QQuickTextEdit")) {
        auto const text = item->property("text").toString();
        auto const words = item->mapRectToScene(painted(*item));
        if (!text.trimmed().isEmpty())
            found.push_back({item, text, words, words & seenIn(item, window), opacityOf(item)});
    }
    for (auto* child : item->childItems()) collect(child, window, found);
}

/// What the user reads now: behind a dialog nothing is read.
std::vector<Shown> shownIn(QQuickWindow& window) {
    std::vector<Shown> all, front;
    collect(window.contentItem(), QRectF(QPointF(), window.size()), all);
    for (auto const& each : all)
        if (above(each.item, "QQuickOverlay") || above(each.item, "QQuickPopupItem")) front.push_back(each);
    return front.empty() ? all : front;
}

double luminance(QColor const& color) {
    auto const part = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) + 0.0722 * part(color.blueF());
}

double contrast(QColor const& a, QColor const& b) {
    auto const one = luminance(a) + 0.05, other = luminance(b) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

QColor over(QColor const& ink, double opacity, QColor const& ground) {
    auto const a = ink.alphaF() * opacity;
    auto const mixed = [&](double of, double on) { return of * a + on * (1 - a); };
    return QColor::fromRgbF(static_cast<float>(mixed(ink.redF(), ground.redF())),
                            static_cast<float>(mixed(ink.greenF(), ground.greenF())),
                            static_cast<float>(mixed(ink.blueF(), ground.blueF())));
}

/// The colour that most pixels of a place have: what is behind the words.
std::optional<QColor> ground(QImage const& picture, QRectF const& place) {
    auto const factor = picture.devicePixelRatio();
    auto const pixels = QRectF(place.topLeft() * factor, place.size() * factor).toAlignedRect() & picture.rect();
    std::vector<QRgb> colors;
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        auto const* const row = reinterpret_cast<QRgb const*>(picture.constScanLine(y));
        colors.insert(colors.end(), row + pixels.left(), row + pixels.right() + 1);
    }
    std::ranges::sort(colors);
    std::size_t most = 0;
    QRgb found = 0;
    for (std::size_t at = 0, next = 0; at < colors.size(); at = next) {
        while (next < colors.size() && colors[next] == colors[at]) ++next;
        if (next - at > most) most = next - at, found = colors[at];
    }
    return most > 0 ? std::optional(QColor(found)) : std::nullopt;
}

class Faults {
public:
    Faults(QQuickWindow& window, QImage const& picture) : frame_(QPointF(), window.size()), picture_(picture) {}

    void look(Shown const& shown) {
        lookWhetherCut(shown);
        lookWhereItIs(shown);
        lookWhetherReadable(shown);
    }
    void look(Shown const& a, Shown const& b) {
        auto const both = a.seen & b.seen;
        if (both.width() > tooMuch && both.height() > tooMuch && !isAbove(a.item) && !isAbove(b.item))
            add(a, "is over “" + b.text.toStdString() + "”");
    }
    std::vector<std::string> found;

private:
    void add(Shown const& shown, std::string const& what) {
        found.push_back("“" + shown.text.left(60).toStdString() + "” " + what);
    }

    /// What comes over a page for a while, by its meaning.
    static bool isAbove(QQuickItem const* item) {
        for (auto* parent = item->parentItem(); parent; parent = parent->parentItem())
            if (QString::fromUtf8(parent->metaObject()->className()).startsWith(QStringLiteral("Toast_"))) return true;
        return false;
    }

    /// Of which it is a part; what scrolls inside of a control is none of it.
    static QQuickItem const* controlOf(QQuickItem const* item) {
        for (auto* parent = item->parentItem(); parent; parent = parent->parentItem()) {
            if (is(parent, "QQuickFlickable")) return nullptr;
            if (is(parent, "QQuickControl")) return parent;
        }
        return nullptr;
    }

    void lookWhetherCut(Shown const& shown) {
        auto const& item = *shown.item;
        if (!is(shown.item, "QQuickText")) return; // fields scroll
        if (item.property("elide").toInt() != elidedInTheMiddle && item.property("truncated").toBool())
            add(shown, "is cut");
        if (item.property("contentWidth").toDouble() > item.width() + slack) add(shown, "is wider than its place");
        if (item.property("contentHeight").toDouble() > item.height() + slack) add(shown, "is taller than its place");
    }

    void lookWhereItIs(Shown const& shown) {
        auto const holds = [](QRectF const& place, QRectF const& words) {
            return place.adjusted(-slack, -slack, slack, slack).contains(words);
        };
        if (!is(shown.item, "QQuickText")) return;
        if (auto const* control = controlOf(shown.item);
            control && !holds(control->mapRectToScene(control->boundingRect()), shown.words))
            add(shown, "is outside of its control");
        if (!above(shown.item, "QQuickFlickable") && !holds(frame_, shown.words))
            add(shown, "is outside of the window");
    }

    void lookWhetherReadable(Shown const& shown) {
        auto const& seen = shown.seen;
        if (!shown.item->isEnabled() || seen.width() < 2 || seen.height() < shown.words.height() / 2) return;
        auto const behind = ground(picture_, seen);
        if (!behind) return;
        bool const isSelected = *behind == shown.item->property("selectionColor").value<QColor>();
        auto const color = shown.item->property(isSelected ? "selectedTextColor" : "color").value<QColor>();
        auto const ink = over(color, shown.opacity, *behind);
        if (auto const ratio = contrast(ink, *behind); ratio < leastContrast - 0.005)
            add(shown, "has a contrast of " + std::to_string(ratio).substr(0, 4) + ": " + ink.name().toStdString() +
                           " on " + behind->name().toStdString());
    }

    QRectF const frame_;
    QImage const& picture_;
};

}

std::vector<std::string> textFaults(QQuickWindow& window, QImage const& picture) {
    auto const shown = shownIn(window);
    Faults faults(window, picture);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        faults.look(shown[i]);
        for (std::size_t j = i + 1; j < shown.size(); ++j) faults.look(shown[i], shown[j]);
    }
    return faults.found;
}

}
