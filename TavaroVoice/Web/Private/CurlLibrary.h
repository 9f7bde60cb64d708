#pragma once

#include <curl/curl.h>

// Of the library, with its checks of types, which would name functions that are not linked.
#undef curl_easy_setopt
#undef curl_easy_getinfo
#undef curl_multi_setopt

namespace tavaro {

/// What is used of libcurl. What it frees is overwritten before.
struct CurlLibrary {
    decltype(&curl_global_init_mem) init = nullptr;
    decltype(&curl_easy_init) newTransfer = nullptr;
    decltype(&curl_easy_cleanup) releaseTransfer = nullptr;
    decltype(&curl_easy_reset) reset = nullptr;
    decltype(&curl_easy_setopt) set = nullptr;
    decltype(&curl_easy_getinfo) get = nullptr;
    decltype(&curl_easy_strerror) reason = nullptr;
    decltype(&curl_multi_init) newSession = nullptr;
    decltype(&curl_multi_cleanup) releaseSession = nullptr;
    decltype(&curl_multi_add_handle) add = nullptr;
    decltype(&curl_multi_remove_handle) remove = nullptr;
    decltype(&curl_multi_perform) perform = nullptr;
    decltype(&curl_multi_poll) poll = nullptr;
    decltype(&curl_multi_wakeup) wake = nullptr;
    decltype(&curl_multi_info_read) news = nullptr;
};

/// Null where it is not installed.
CurlLibrary const* curlLibrary();

}
