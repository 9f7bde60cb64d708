#include <TavaroPlatform/Preferences/Preferences.h>

#include <cstdint>
#include <cstdlib>

// Any bytes are no preferences, or some that are written and read back equal.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using tavaro::Preferences;
    auto const values = Preferences::decode({reinterpret_cast<char const*>(data), size});
    if (values && Preferences::decode(Preferences::encode(*values)) != values) std::abort();
    return 0;
}
