// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "orlu/Callback.h"

namespace TrellanService {

/// Calls the callback, if it is set, with the response and this `lastResult`.
template <class Response>
void Answer(const Callback<Response>& callback, Response& response, const char* result)
{
    response.set_lastresult(result);
    if (callback) {
        callback(response);
    }
}

}  // namespace TrellanService
