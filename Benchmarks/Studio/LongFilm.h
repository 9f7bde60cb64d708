#pragma once

#include <TavaroCore/Project/DemoProject.h>

#include <functional>
#include <vector>

namespace tavaro {

/// An edit with 5,000 zooms, 5,000 captions and 200 clips in three hours, or as many a minute in another length.
DemoProject longFilm(double hours);

/// What the work takes of this thread; what else the machine does is left out.
double threadSeconds(std::function<void()> const& work);

double percentile(std::vector<double> values, double share);

}
