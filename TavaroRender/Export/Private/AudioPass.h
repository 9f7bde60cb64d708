#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroPlatform/Queues/BoundedQueue.h>
#include <TavaroRender/Audio/Private/MixRenderer.h>

namespace tavaro {

class AudioEnhancer;
class ProjectPackage;
struct DemoProject;

/// The project's mix, ready to be rendered: every asset in it has been opened once, and those that are to be enhanced
/// are. None where there is nothing to hear. `enhancing` is told how much of the sound is enhanced, 0…1, where any is.
/// Throws `ExportError`.
std::optional<MixRenderer> prepareMix(DemoProject const& project, ProjectPackage const& package,
                                      AudioEnhancer const& enhancer, std::atomic<bool> const& isCancelled,
                                      std::function<void(double)> const& enhancing);

using AudioBlock = std::vector<StereoSample>;

/// What an audio pass works with; everything stays the caller's.
struct AudioPass {
    MixRenderer& mix;
    std::int64_t start = 0; // sample of the mix that comes first
    std::int64_t totalSamples = 0;
    BoundedQueue<AudioBlock>& blocks; // taken out by whoever writes the movie
};

/// Renders the mix from its start to its end into the queue, as fast as blocks are taken out of it, and closes it. Ends
/// early when the queue is closed from the other side. Throws `ExportError`.
void runAudioPass(AudioPass const& pass);

}
