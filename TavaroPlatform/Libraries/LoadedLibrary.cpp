#include <TavaroPlatform/Libraries/LoadedLibrary.h>

#include <dlfcn.h>

namespace tavaro {

std::optional<LoadedLibrary> LoadedLibrary::load(std::string const& name) {
    auto* const handle = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    return handle ? std::optional(LoadedLibrary(handle)) : std::nullopt;
}

void* LoadedLibrary::symbol(char const* name) const { return ::dlsym(handle_, name); }

}
