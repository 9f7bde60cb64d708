#pragma once

#include <TavaroCore/Records/FunctionRef.h>

namespace tavaro {

/// Shares the rows of a picture: called with a row count and a job, it calls the job with bands `[begin, end)` that
/// cover 0…rowCount exactly once, on any threads, and returns when all are done.
using RowBands = FunctionRef<void(int rowCount, FunctionRef<void(int begin, int end)> band)>;

/// All rows as one band, on the calling thread.
struct OneBand {
    void operator()(int rowCount, FunctionRef<void(int begin, int end)> band) const { band(0, rowCount); }
};
inline constexpr OneBand oneBand;

}
