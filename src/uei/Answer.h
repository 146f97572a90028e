// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "orlu/Callback.h"

namespace TrellanService {

/// Gives a response to whoever waits for it, if anybody does, with this `lastResult`.
template <class Response>
void Answer(const Callback<Response>& callback, Response& response, const char* result)
{
    response.set_lastresult(result);
    if (callback) {
        callback(response);
    }
}

}  // namespace TrellanService
