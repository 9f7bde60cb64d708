#pragma once

#include <QString>

namespace tavaro {

/// How far work is that goes through what was recorded, in its seconds.
struct RecordedProgress {
    double seconds = 0;
    double total = 0; // 0 while that is not known

    /// 0…1; negative while that is not known.
    double share() const;
    /// "0:12 of 1:40"
    QString words() const;
};

}
