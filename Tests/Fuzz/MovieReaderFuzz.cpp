#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

// Any bytes are refused with a sentence, or read as a movie that shows a picture at any time.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    int const file = memfd_create("movie", 0);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    try {
        tavaro::MovieReader reader("/proc/self/fd/" + std::to_string(file), {.threads = 1});
        tavaro::FrameConverter converter;
        tavaro::Image image;
        for (auto const time : {0.0, 0.7, 0.1, 1e9, 0.0}) {
            auto const frame = reader.frame(time);
            if (frame.isEmpty()) std::abort();
            // Larger pictures are as valid, but a fuzzer's time is better spent on the reader.
            if (std::int64_t{frame.width()} * frame.height() <= 1 << 20) converter.convert(frame, image);
        }
    } catch (tavaro::MediaError const& error) {
        if (error.detail().empty()) std::abort();
    }
    close(file);
    return 0;
}
