#pragma once

#include <string>
#include <vector>

namespace tavaro {

/// What one run of a program took.
struct ProcessCost {
    double seconds = 0;       // on the clock
    double coreSeconds = 0;   // of all cores together
    double peakMebibytes = 0; // of memory in use at once
};

/// Runs the program to its end, its output left out unless it fails. Throws `std::runtime_error` with what it printed.
ProcessCost runMeasured(std::vector<std::string> const& arguments);

double median(std::vector<double> values);

}
