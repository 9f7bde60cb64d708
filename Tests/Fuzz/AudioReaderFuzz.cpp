#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Errors/MediaError.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

// Any bytes are refused with a sentence, or read as sound at any time.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    int const file = memfd_create("sound", 0);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    try {
        tavaro::AudioReader reader("/proc/self/fd/" + std::to_string(file));
        std::vector<tavaro::StereoSample> samples(5000);
        for (std::int64_t const position : {0, 4'800, 30'000, 100, -2'000, 1'000'000'000}) {
            if (reader.read(position, samples) > samples.size()) std::abort();
        }
    } catch (tavaro::MediaError const& error) {
        if (error.detail().empty()) std::abort();
    }
    close(file);
    return 0;
}
