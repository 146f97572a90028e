// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <curl/curl.h>

namespace TrellanService {

/// The functions of libcurl that the posts need, from the shared library.
struct CurlLibrary {
    decltype(&curl_global_init) globalInit = nullptr;
    decltype(&curl_global_cleanup) globalCleanup = nullptr;
    decltype(&curl_easy_init) easyInit = nullptr;
    decltype(&curl_easy_setopt) easySetopt = nullptr;
    decltype(&curl_easy_perform) easyPerform = nullptr;
    decltype(&curl_easy_cleanup) easyCleanup = nullptr;
    decltype(&curl_slist_append) slistAppend = nullptr;
    decltype(&curl_slist_free_all) slistFreeAll = nullptr;

    /// Loads the library. False, with a log line, if it or one of the functions is missing.
    bool Load();
};

}  // namespace TrellanService
