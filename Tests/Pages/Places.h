#pragma once

#include "PageStage.h"

#include <QString>

#include <functional>
#include <vector>

namespace tavaro {

/// Whether Tab goes through it: not where arrows do, nor where it goes by itself.
enum class Tab { goesThrough, doesNot };

/// Something of the program that is looked at: its name is its picture's.
struct Place {
    QString name;
    std::function<void(PageStage&)> show; // from the library; afterwards `goHome` leads back
    Tab tab = Tab::goesThrough;
    std::function<void(PageStage&)> takeBack = [](PageStage&) {}; // what showing it did
};

/// Every page, menu and dialog. Pages of the editor's side are found by themselves, so a new one is here from its first
/// day; anything else is a line here.
std::vector<Place> places(PageStage& stage);

/// Slow to come, so that a picture of it waits for this.
inline QString const filmShown = QStringLiteral("The film of ");

}
