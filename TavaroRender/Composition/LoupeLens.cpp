#include <TavaroRender/Composition/Private/LoupeLens.h>

#include <TavaroCore/Values/Smoothstep.h>

namespace tavaro {

namespace {

/// Magnification at a radius, as a share of the lens's.
double magnificationAt(double middle, double radius) {
    return middle + (1 - middle) * smoothstep(loupeFlatRadius, 1, radius);
}

}

CanvasPoint LoupeLens::seen(CanvasPoint point) const {
    if (presence <= 0 || radius <= 0 || magnification <= 1.0001) return point;
    auto const offset = point - center;
    double const distance = offset.length();
    if (distance <= 1e-9 || distance >= radius) return point;
    double const d = distance / radius;
    double const flat = magnification * d;
    if (flat <= loupeFlatRadius) return center + offset * magnification;

    // In the rim r ÷ m(r) grows with r, so the r that shows this distance is found by halving.
    double low = loupeFlatRadius;
    double high = 1;
    for (int step = 0; step < 24; ++step) {
        double const r = (low + high) / 2;
        (r / magnificationAt(magnification, r) < d ? low : high) = r;
    }
    return center + offset * ((low + high) / 2 / d);
}

}
