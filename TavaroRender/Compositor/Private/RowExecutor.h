#pragma once

#include <TavaroCore/Records/FunctionRef.h>

namespace tavaro {

/// Draws the rows of a picture in bands, perhaps on several threads at once.
class RowExecutor {
public:
    virtual ~RowExecutor() = default;

    /// Calls `band(begin, end)` until every row of 0…rowCount−1 is covered exactly once, and returns when all are done.
    /// Few large bands beat many small ones: neighbouring rows share work. What a band throws, `run` throws.
    virtual void run(int rowCount, FunctionRef<void(int rowBegin, int rowEnd)> band) = 0;
};

}
