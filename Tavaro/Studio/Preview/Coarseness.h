#pragma once

#include <vector>

namespace tavaro {

/// How coarse pictures of a moving film are drawn, so that they keep up: at one in so many pixels a side, the fewest
/// with which drawing fits into its time.
class Coarseness {
public:
    static constexpr int coarsest = 4;

    int divisor() const { return divisor_; }
    /// A picture was drawn with the present divisor: seconds that its sources took, which no coarseness makes less, and
    /// that its drawing took.
    void note(double reading, double drawing);

private:
    void become(int divisor);

    int divisor_ = 1;
    int patience_ = 1;           // how often so many pictures must be drawn in time before finer ones are tried
    bool wasTried_ = false;      // the present divisor is a finer one that may not keep up
    std::vector<double> latest_; // seconds of drawing, each over what it may take
};

}
