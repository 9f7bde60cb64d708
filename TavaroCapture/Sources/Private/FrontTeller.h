#pragma once

#include <TavaroCapture/Sources/Private/EventSource.h>

namespace tavaro {

/// Somebody who may know which window has the keyboard. One thread.
class FrontTeller {
public:
    virtual ~FrontTeller() = default;

    /// What to wait for by `poll`, and how many milliseconds at most; below 0: for ever.
    virtual int descriptor() const = 0;
    virtual short awaited() const = 0;
    virtual int patience() const = 0;
    /// Takes in what has been said since, without waiting; false once nobody tells any more.
    virtual bool listen() = 0;

    /// As it is known now.
    virtual FrontWindow window() const = 0;
};

}
