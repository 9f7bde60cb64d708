#include <TavaroVoice/Web/Private/CurlLibrary.h>

#include <TavaroPlatform/Libraries/LoadedLibrary.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <optional>
#include <string.h>

namespace tavaro {

namespace {

// Requests are put together in memory of the library's, headers and all.
void wipeAndFree(void* memory) {
    if (memory) ::explicit_bzero(memory, ::malloc_usable_size(memory));
    std::free(memory);
}

void* wipeAndMove(void* memory, std::size_t size) {
    auto* const moved = std::malloc(size);
    if (!moved || !memory) return moved;
    std::memcpy(moved, memory, std::min(size, ::malloc_usable_size(memory)));
    wipeAndFree(memory);
    return moved;
}

std::optional<CurlLibrary> load() {
    auto const library = LoadedLibrary::load("libcurl.so.4");
    if (!library) return std::nullopt;
    CurlLibrary found;
    bool const isWhole =
        library->find(found.init, "curl_global_init_mem") && library->find(found.newTransfer, "curl_easy_init") &&
        library->find(found.releaseTransfer, "curl_easy_cleanup") && library->find(found.reset, "curl_easy_reset") &&
        library->find(found.set, "curl_easy_setopt") && library->find(found.get, "curl_easy_getinfo") &&
        library->find(found.reason, "curl_easy_strerror") && library->find(found.newSession, "curl_multi_init") &&
        library->find(found.releaseSession, "curl_multi_cleanup") &&
        library->find(found.add, "curl_multi_add_handle") && library->find(found.remove, "curl_multi_remove_handle") &&
        library->find(found.perform, "curl_multi_perform") && library->find(found.poll, "curl_multi_poll") &&
        library->find(found.wake, "curl_multi_wakeup") && library->find(found.news, "curl_multi_info_read");
    if (!isWhole) return std::nullopt;
    if (found.init(CURL_GLOBAL_ALL, std::malloc, wipeAndFree, wipeAndMove, ::strdup, std::calloc) != CURLE_OK)
        return std::nullopt;
    return found;
}

}

CurlLibrary const* curlLibrary() {
    static auto const library = load();
    return library ? &*library : nullptr;
}

}
