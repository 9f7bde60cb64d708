#pragma once

#include <string>
#include <vector>

class QImage;
class QQuickWindow;

namespace tavaro {

/// What of the words in a window cannot be read: cut off, wider or taller than their place, outside of their control or
/// of the window, over other words, or too like what is behind them in the picture, which is of the window as it is.
std::vector<std::string> textFaults(QQuickWindow& window, QImage const& picture);

/// The least contrast of words with what is behind them, after WCAG 2.
inline constexpr double leastContrast = 4.5;

}
