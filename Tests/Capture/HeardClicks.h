#pragma once

#include "TestSoundServer.h"

#include <TavaroCapture/Sources/Private/SoundSource.h>

#include <atomic>
#include <memory>
#include <string>

namespace tavaro {

/// Listens to the output of a sound server: when something loud begins to be heard there.
class HeardClicks : public Clicks {
public:
    explicit HeardClicks(std::string const& server);
    ~HeardClicks() override;

    /// How many moments of silence of more than 20 ms there have been amid loud sound.
    int gaps() const { return gaps_; }
    /// How long something loud has been heard in all, in seconds.
    double loudSeconds() const { return loudSeconds_; }

private:
    void listen(SoundBlock const& block);

    double loudAt_ = 0; // moment of the media clock at which it was loud last; the source's thread's
    std::atomic<int> gaps_ = 0;
    std::atomic<double> loudSeconds_ = 0;
    std::unique_ptr<SoundSource> source_;
};

}
