// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

/// The library's requests, carried out by libcurl, which is loaded at the first one: most starts of
/// the service need none. One handle for the process, reused from post to post. On the server task,
/// which a post blocks for up to 55 s.
namespace TrellanService::Http {

/// Ends libcurl, if it was loaded, and drops what earlier posts left: the handle and its
/// connections.
void End();

/// Initializes libcurl again, if it was loaded. If it was not, or if this fails, the next post does
/// it.
void Begin();

/// Posts a zero-terminated JSON text. On 0 `response` holds `responseLength` bytes from `malloc`
/// with a zero behind them; they belong to the caller. Otherwise a reason code of the library, and
/// no response: 45 for a missing argument, 14 while `held` (no request goes out), 1 without
/// libcurl, else `ReasonCode` of libcurl's result. A status of 400 or above is a failure.
/// `transferFailed` becomes true only if a request went out and failed.
///
/// https goes anywhere, plain http to this machine only and never by a redirect; no proxy of the
/// environment is used; a response of more than 4 MiB fails.
int Post(const char* body, std::uint32_t bodyLength, char** response, std::uint32_t* responseLength,
         const char* url, bool held, bool& transferFailed);

/// The library's reason code for a `CURLcode`.
int ReasonCode(int curlCode);

}  // namespace TrellanService::Http
