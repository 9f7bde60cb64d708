#pragma once

#include <optional>
#include <string>

namespace tavaro {

/// A shared library that is loaded when it is first used: linked, it would make every start of every program longer.
/// It stays for as long as the process.
class LoadedLibrary {
public:
    /// None where it is not installed, or lacks something itself.
    static std::optional<LoadedLibrary> load(std::string const& name);

    /// Sets a pointer to the function of that name, of the library or of those that it brings. False where there is
    /// none.
    template<class Function> bool find(Function*& function, char const* name) const {
        function = reinterpret_cast<Function*>(symbol(name));
        return function != nullptr;
    }

private:
    explicit LoadedLibrary(void* handle) : handle_(handle) {}
    void* symbol(char const* name) const;

    void* handle_;
};

}
