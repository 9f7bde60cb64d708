#include <TavaroPlatform/Keychain/Private/SecretLibrary.h>

#include <TavaroPlatform/Libraries/LoadedLibrary.h>

#include <optional>

namespace tavaro {

namespace {

std::optional<SecretLibrary> load() {
    auto const library = LoadedLibrary::load("libsecret-1.so.0");
    if (!library) return std::nullopt;
    SecretLibrary found;
    bool const isWhole =
        library->find(found.store, "secret_password_store_sync") &&
        library->find(found.lookup, "secret_password_lookup_nonpageable_sync") &&
        library->find(found.clear, "secret_password_clear_sync") && library->find(found.free, "secret_password_free") &&
        library->find(found.disconnect, "secret_service_disconnect") &&
        library->find(found.errors, "secret_error_get_quark") &&
        library->find(found.newCancellable, "g_cancellable_new") &&
        library->find(found.cancel, "g_cancellable_cancel") && library->find(found.unref, "g_object_unref") &&
        library->find(found.freeError, "g_error_free") && library->find(found.bus, "g_bus_get_sync") &&
        library->find(found.setExitOnClose, "g_dbus_connection_set_exit_on_close");
    return isWhole ? std::optional(found) : std::nullopt;
}

}

SecretLibrary const* secretLibrary() {
    static auto const library = load();
    return library ? &*library : nullptr;
}

}
