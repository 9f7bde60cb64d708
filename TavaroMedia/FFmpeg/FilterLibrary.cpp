#include <TavaroMedia/FFmpeg/Private/FilterLibrary.h>

#include <string>

#include <dlfcn.h>

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/FFmpeg/Private/Failures.h>

extern "C" {
#include <libavutil/macros.h>
}

namespace tavaro::ffmpeg {

namespace {

// The very version that the headers are of.
constexpr char const* libraryName = "libavfilter.so." AV_STRINGIFY(LIBAVFILTER_VERSION_MAJOR);

[[noreturn]] void fail() {
    char const* reason = dlerror();
    throw MediaError(MediaError::Kind::unsupported,
                     std::string("The filters of FFmpeg cannot be loaded: ") + (reason ? reason : libraryName) + ".",
                     "the filters of FFmpeg cannot be loaded");
}

FilterLibrary load() {
    prepareLibraries();
    auto* library = dlopen(libraryName, RTLD_NOW | RTLD_LOCAL); // stays for as long as the process
    if (!library) fail();
    auto const find = [&](auto& function, char const* name) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(library, name));
        if (!function) fail();
    };
    FilterLibrary found;
    find(found.graphAlloc, "avfilter_graph_alloc");
    find(found.graphFree, "avfilter_graph_free");
    find(found.graphCreateFilter, "avfilter_graph_create_filter");
    find(found.graphParse, "avfilter_graph_parse_ptr");
    find(found.graphConfig, "avfilter_graph_config");
    find(found.filterNamed, "avfilter_get_by_name");
    find(found.inOutAlloc, "avfilter_inout_alloc");
    find(found.inOutFree, "avfilter_inout_free");
    find(found.sourceAddFrame, "av_buffersrc_add_frame_flags");
    find(found.sinkGetFrame, "av_buffersink_get_frame");
    return found;
}

}

FilterLibrary const& filters() {
    static FilterLibrary const library = load();
    return library;
}

}
