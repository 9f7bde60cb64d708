#pragma once

#include <QImage>
#include <QString>

#include <string>

namespace tavaro {

/// A picture of a page as it is stored: an eighth as wide and as high as the window in points, whatever the factor, in
/// few colours.
QImage small(QImage const& picture);

struct PageDifference {
    double mean = 0;  // of the colours, 0…255
    double share = 0; // of the pixels that are plainly of another colour
};
/// Nothing in common where the sizes differ.
PageDifference difference(QImage const& stored, QImage const& shown);

/// Side by side: what was stored, what is shown, and how they differ, four times as strong.
QImage comparison(QImage const& stored, QImage const& shown);

}
