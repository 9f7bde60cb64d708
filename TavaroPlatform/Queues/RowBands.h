#pragma once

#include <TavaroCore/Records/FunctionRef.h>

namespace tavaro {

/// Shares the rows of a picture, perhaps over several threads.
class RowBands {
public:
    using Band = FunctionRef<void(int begin, int end)>;

    virtual ~RowBands() = default;

    /// Calls `band(begin, end)` until every row of 0…rowCount−1 is covered exactly once, and returns when all are done.
    /// Few large bands beat many small ones: neighbouring rows share work. What a band throws, `run` throws.
    virtual void run(int rowCount, Band band) = 0;
};

/// All rows as one band, on the calling thread. Any thread.
class OneBand final : public RowBands {
public:
    void run(int rowCount, Band band) override {
        if (rowCount > 0) band(0, rowCount);
    }
};
inline OneBand oneBand;

}
