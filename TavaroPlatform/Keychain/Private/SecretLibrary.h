#pragma once

#include <libsecret/secret.h>

namespace tavaro {

/// What is used of libsecret, and of the libraries that it brings.
struct SecretLibrary {
    decltype(&secret_password_store_sync) store = nullptr;
    decltype(&secret_password_lookup_nonpageable_sync) lookup = nullptr;
    decltype(&secret_password_clear_sync) clear = nullptr;
    decltype(&secret_password_free) free = nullptr;
    decltype(&secret_service_disconnect) disconnect = nullptr;
    decltype(&secret_error_get_quark) errors = nullptr;
    decltype(&g_cancellable_new) newCancellable = nullptr;
    decltype(&g_cancellable_cancel) cancel = nullptr;
    decltype(&g_object_unref) unref = nullptr;
    decltype(&g_error_free) freeError = nullptr;
    decltype(&g_bus_get_sync) bus = nullptr;
    decltype(&g_dbus_connection_set_exit_on_close) setExitOnClose = nullptr;
};

/// Null where it is not installed.
SecretLibrary const* secretLibrary();

}
