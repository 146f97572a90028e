// SPDX-License-Identifier: Apache-2.0

#include "uei/CurlLibrary.h"

#include <dlfcn.h>

#include "uei/UEILog.h"

namespace TrellanService {

namespace {

template <class Function>
bool Find(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

}  // namespace

bool CurlLibrary::Load()
{
    void* library = dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        kUEILog.Log(1, "libcurl cannot be loaded: {}", dlerror());
        return false;
    }
    const bool complete = Find(library, "curl_global_init", globalInit) &&
                          Find(library, "curl_global_cleanup", globalCleanup) &&
                          Find(library, "curl_easy_init", easyInit) &&
                          Find(library, "curl_easy_setopt", easySetopt) &&
                          Find(library, "curl_easy_perform", easyPerform) &&
                          Find(library, "curl_easy_cleanup", easyCleanup) &&
                          Find(library, "curl_slist_append", slistAppend) &&
                          Find(library, "curl_slist_free_all", slistFreeAll);
    if (!complete) {
        kUEILog.Log(1, "libcurl lacks a function: {}", dlerror());
        // Only after the log line: `dlerror` tells of the last call. A library that is complete
        // stays loaded until the process ends.
        dlclose(library);
    }
    return complete;
}

}  // namespace TrellanService
