// SPDX-License-Identifier: Apache-2.0

#include "uei/HttpPost.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "uei/CurlLibrary.h"

namespace TrellanService {

namespace {

constexpr long kTransferTimeoutMs = 55000;
constexpr long kConnectTimeoutMs = 15000;
constexpr std::size_t kMaxResponseBytes = std::size_t{4} * 1024 * 1024;
constexpr const char* kContentType = "Content-Type: application/json; charset=utf-8";

constexpr int kReasonFailed = 1;
constexpr int kReasonTransport = 5;
constexpr int kReasonHeld = 14;
constexpr int kReasonArgument = 45;

struct HttpResponseBuffer {
    char* pointer = nullptr;
    std::size_t length = 0;
};

/// Kept from post to post. The handle keeps its connection, so that a series of posts needs one TLS
/// handshake.
struct State {
    std::optional<CurlLibrary> curl;
    bool initialized = false;
    CURL* handle = nullptr;
    curl_slist* headers = nullptr;
};

State& TheState()
{
    static State state;
    return state;
}

std::size_t WriteToBuffer(const char* data, std::size_t size, std::size_t count, void* user)
{
    auto& buffer = *static_cast<HttpResponseBuffer*>(user);
    const std::size_t bytes = size * count;
    // Fewer bytes than were given make libcurl end the transfer with an error.
    if (bytes > kMaxResponseBytes - buffer.length) {
        return 0;
    }
    void* grown = buffer.pointer == nullptr
                      ? std::malloc(bytes + 1)
                      : std::realloc(buffer.pointer, buffer.length + bytes + 1);
    if (grown == nullptr) {
        return 0;
    }
    buffer.pointer = static_cast<char*>(grown);
    std::memcpy(buffer.pointer + buffer.length, data, bytes);
    buffer.length += bytes;
    // The library takes the response as a zero-terminated text.
    buffer.pointer[buffer.length] = '\0';
    return bytes;
}

bool Load(State& state)
{
    if (CurlLibrary curl; !state.curl && curl.Load()) {
        state.curl = curl;
    }
    Http::Begin();
    return state.initialized;
}

bool SetUp(State& state)
{
    const CurlLibrary& curl = *state.curl;
    state.handle = curl.easyInit();
    if (state.handle == nullptr) {
        return false;
    }
    const auto set = [&curl, &state](CURLoption option, auto value) {
        return curl.easySetopt(state.handle, option, value) == CURLE_OK;
    };
    // No signals: libcurl may use SIGALRM for the time limit of a name look-up, which is not safe
    // in a process with several threads.
    const bool asked =
        set(CURLOPT_WRITEFUNCTION, &WriteToBuffer) && set(CURLOPT_FOLLOWLOCATION, 1L) &&
        set(CURLOPT_MAXREDIRS, 50L) && set(CURLOPT_FAILONERROR, 1L) &&
        set(CURLOPT_TIMEOUT_MS, kTransferTimeoutMs) &&
        set(CURLOPT_CONNECTTIMEOUT_MS, kConnectTimeoutMs) && set(CURLOPT_NOSIGNAL, 1L) &&
        set(CURLOPT_SSL_VERIFYHOST, 2L) && set(CURLOPT_SSL_VERIFYPEER, 1L);
    state.headers = curl.slistAppend(nullptr, kContentType);
    return asked && state.headers != nullptr && set(CURLOPT_HTTPHEADER, state.headers) &&
           // An empty text, not null, which would take the proxy of the environment.
           set(CURLOPT_PROXY, "");
}

void TearDown(State& state)
{
    const CurlLibrary& curl = *state.curl;
    curl.slistFreeAll(std::exchange(state.headers, nullptr));
    if (state.handle != nullptr) {
        curl.easyCleanup(std::exchange(state.handle, nullptr));
    }
}

bool IsPlainAndLocal(std::string_view url)
{
    constexpr std::array<std::string_view, 3> kLocal = {"http://127.0.0.1", "http://localhost",
                                                        "http://[::1]"};
    if (url.find('@') != std::string_view::npos) {
        return false;  // the text before the @ is a user name, not the host
    }
    return std::ranges::any_of(kLocal, [url](std::string_view local) {
        return url.starts_with(local) &&
               (url.size() == local.size() || url[local.size()] == ':' || url[local.size()] == '/');
    });
}

/// The target of a redirect cannot be checked before libcurl follows it, so only https is allowed
/// there.
CURLcode Aim(State& state, const char* body, const char* url, HttpResponseBuffer& buffer)
{
    const CurlLibrary& curl = *state.curl;
    const bool local = IsPlainAndLocal(url);
    CURLcode code = CURLE_OK;
    const auto set = [&curl, &state, &code](CURLoption option, auto value) {
        if (code == CURLE_OK) {
            code = curl.easySetopt(state.handle, option, value);
        }
    };
    set(CURLOPT_WRITEDATA, &buffer);
    set(CURLOPT_URL, url);
    set(CURLOPT_POSTFIELDS, body);
    set(CURLOPT_PROTOCOLS_STR, local ? "http,https" : "https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    return code;
}

}  // namespace

void Http::End()
{
    State& state = TheState();
    if (!state.curl) {
        return;
    }
    TearDown(state);
    if (std::exchange(state.initialized, false)) {
        state.curl->globalCleanup();
    }
}

void Http::Begin()
{
    State& state = TheState();
    if (state.curl && !state.initialized) {
        // On failure `initialized` stays false, and the next post tries again.
        state.initialized = state.curl->globalInit(CURL_GLOBAL_ALL) == CURLE_OK;
    }
}

int Http::Post(const char* body, std::uint32_t bodyLength, char** response,
               std::uint32_t* responseLength, const char* url, bool held, bool& transferFailed)
{
    if (body == nullptr || bodyLength == 0 || url == nullptr || response == nullptr ||
        responseLength == nullptr) {
        return kReasonArgument;
    }
    *response = nullptr;
    *responseLength = 0;
    HttpResponseBuffer buffer;
    State& state = TheState();
    if (state.handle == nullptr) {
        if (!Load(state)) {
            return kReasonFailed;
        }
        if (!SetUp(state)) {
            // Nothing stays set up in part, so the next post begins anew.
            TearDown(state);
            return kReasonFailed;
        }
    }
    // Checked after the set-up: a missing libcurl is reported as such even during the hold.
    if (held) {
        return kReasonHeld;
    }
    CURLcode code = Aim(state, body, url, buffer);
    if (code == CURLE_OK) {
        code = state.curl->easyPerform(state.handle);
        transferFailed = code != CURLE_OK;
    }
    if (code != CURLE_OK) {
        // A failed transfer may have brought part of a response.
        std::free(buffer.pointer);
        return ReasonCode(code);
    }
    *response = buffer.pointer;
    *responseLength = static_cast<std::uint32_t>(buffer.length);
    return 0;
}

int Http::ReasonCode(int curlCode)
{
    // `CURLcode`, reason code of the library. Codes that are not here are transport failures.
    static constexpr std::array<std::pair<int, int>, 21> kCodes = {{
        {0, 0},    {1, 7},   {2, 1},   {3, 8},   {5, 10},  {6, 9},   {7, 12},
        {9, 13},   {22, 17}, {23, 46}, {27, 46}, {28, 14}, {34, 18}, {35, 60},
        {42, 205}, {55, 15}, {56, 16}, {58, 61}, {59, 62}, {60, 63}, {66, 65},
    }};
    const auto* row = std::ranges::find(kCodes, curlCode, &std::pair<int, int>::first);
    return row == kCodes.end() ? kReasonTransport : row->second;
}

}  // namespace TrellanService
