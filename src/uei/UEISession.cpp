// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include <json/value.h>

#include "uei/HttpPost.h"
#include "uei/UEIInterface.h"
#include "uei/UEILog.h"

using DeviceManagerPb::DeviceInfo;

namespace TrellanService {

namespace {

struct Country {
    std::string_view code;
    std::string_view stem;
};

/// The first row is the default one.
constexpr std::array<Country, 7> CountryConfig = {{{"US", "WRLD"},
                                                   {"GB", "WRLD"},
                                                   {"JP", "WRLD"},
                                                   {"TW", "WRLD"},
                                                   {"CN", "WRLD"},
                                                   {"IN", "WRLD"},
                                                   {"NZ", "WRLD"}}};

constexpr const char* kDefaultUserId = "58203917461125QZX";
constexpr const char* kOnlineVector = "k7#Vq!2xZ(9dLr&T";
constexpr std::uint32_t kLibraryLogLevel = 50;
constexpr std::uint32_t kOnlineKind = 2;
constexpr std::size_t kShortestSerialNumber = 5;

/// Posts come from the library without a word about whose they are.
UEIInterface* s_poster = nullptr;

int IgnoreLog(const char*)
{
    return 0;
}

int IgnoreEvent(std::uint32_t, void*)
{
    return 0;
}

}  // namespace

UEIInterface::UEIInterface(UEINeighboursIF& neighbours) : m_neighbours(neighbours) {}

UEIInterface::~UEIInterface()
{
    if (s_poster == this) {
        s_poster = nullptr;
    }
}

int UEIInterface::Init(NotifyTargetTaskIF* initTask, const DeviceInfo& deviceInfo)
{
    osmActive = false;
    osmCodeset = nullptr;
    testKey = -1;
    testKeysTotal = codesetsOffered = codesetsTested = 0;
    lastResult = "LAST_RESULT_SUCCESS";
    deBrand.clear();
    deModel.clear();
    deType.clear();
    deCodeset = "";

    task = initTask;
    skipPrefixSweep = true;
    loadFirstCodeset = false;
    loadFuzzyValues = true;
    retryTimer = APTimer::Create(task, "UEITimer");
    // The library posts through a plain function, which finds its object here.
    s_poster = this;
    // The network may have changed since; the old connections are given up.
    Http::End();
    // Before `QSP_stop`: a session belongs to the started library.
    if (sessionKind != 0) {
        QSP_release_lookup_session(session);
        sessionKind = 0;
    }
    ResetCache();
    // The library may still run since an earlier start.
    QSP_stop();
    if (QSP_set_host_log_function(&IgnoreLog) != 0) {
        return -1;
    }
    QSP_set_log_level(kLibraryLogLevel);
    QSP_set_online_vector(kOnlineVector);
    const std::string country = GetCountry(deviceInfo);
    const std::string identity = GetUserId(deviceInfo);
    SetConfigFile(country);
    kUEILog.Log(3, "OSM TRConfigFile: {} UserID: {} country {}", configFile.data(), identity,
                country);
    return StartLibrary(identity) ? 0 : -1;
}

bool UEIInterface::StartLibrary(const std::string& identity)
{
    if (QSP_set_online_unique_id(identity.c_str()) != 0 || QSP_start(configFile.data()) != 0) {
        return false;
    }
    if (QSP_set_host_callback_function(&IgnoreEvent) != 0) {
        QSP_stop();
        return false;
    }
    // After `QSP_start`, which needs no transfer, and before the first post.
    Http::Begin();
    if (uei_set_callback_httppost(&UEIInterface::HttpPost) != 0) {
        QSP_stop();
        return false;
    }
    return true;
}

std::string UEIInterface::GetCountry(const DeviceInfo& deviceInfo)
{
    if (deviceInfo.countrycode().empty()) {
        kUEILog.Put(3, "OSM - Could not read country - using default\n");
        return std::string(CountryConfig[0].code);
    }
    kUEILog.Log(3, "OSM country code from mfg data is {}", deviceInfo.countrycode());
    return deviceInfo.countrycode();
}

std::string UEIInterface::GetUserId(const DeviceInfo& deviceInfo)
{
    // The cloud counts downloads by this identity, so all products without a serial number share
    // one quota.
    if (deviceInfo.serialnumber().size() < kShortestSerialNumber) {
        return kDefaultUserId;
    }
    kUEILog.Log(3, "Setting serial number to {}", deviceInfo.serialnumber());
    return deviceInfo.serialnumber();
}

void UEIInterface::SetConfigFile(const std::string& country)
{
    const auto* row = std::ranges::find(CountryConfig, std::string_view(country), &Country::code);
    const std::string_view stem = row == CountryConfig.end() ? CountryConfig[0].stem : row->stem;
    configFile.fill('\0');
    // One byte stays zero, because the library takes the path as a C string.
    fmt::format_to_n(configFile.data(), configFile.size() - 1, "{}{}{}", "/opt/Orlu/etc/UEI/", stem,
                     "_linux.conf");
}

int UEIInterface::OpenSession(std::uint32_t kind)
{
    if (kind == 0) {
        kind = sessionKind != 0 ? sessionKind : kOnlineKind;
    }
    // One session serves all requests of its kind; opening one costs a post.
    if (kind == sessionKind) {
        return 0;
    }
    if (sessionKind != 0) {
        QSP_release_lookup_session(session);
        sessionKind = 0;
    }
    ResetCache();
    // The library knows three kinds; all others are its third.
    const std::uint32_t libraryKind = kind == 1 || kind == 2 ? kind : 3;
    if (const int code = QSP_get_lookup_session(configFile.data(), libraryKind, &session);
        code != 0) {
        kUEILog.Log(3, "Can't open session, reason code {}", code);
        return -1;
    }
    sessionKind = kind;
    return 0;
}

int UEIInterface::GetVersion(Json::Value& version, std::uint32_t kind)
{
    if (OpenSession(kind) != 0) {
        return -1;
    }
    const char* text = nullptr;
    if (const int code = QSP_get_version_string(session, &text); code != 0 || text == nullptr) {
        kUEILog.Log(3, "get TR version {}", code);
        return -1;
    }
    kUEILog.Log(3, "get TR version {}", text);
    version["TRVersion"] = text;
    return 0;
}

bool UEIInterface::TestConnection()
{
    kUEILog.Put(3, "Testing UEI connection by opening UEI session");
    return OpenSession(kOnlineKind) == 0;
}

int UEIInterface::HttpPost(const char* body, std::uint32_t bodyLength, char** response,
                           std::uint32_t* responseLength, const char* url)
{
    const bool held = s_poster != nullptr && s_poster->retryHold;
    if (s_poster != nullptr && !held) {
        // The task waits for the cloud now, and could not end a burst.
        s_poster->m_neighbours.EndBurst();
    }
    bool transferFailed = false;
    const int code =
        Http::Post(body, bodyLength, response, responseLength, url, held, transferFailed);
    if (transferFailed && s_poster != nullptr && s_poster->retrySeconds != 0) {
        s_poster->StartRetryTimer(s_poster->retrySeconds);
    }
    return code;
}

void UEIInterface::StartRetryTimer(std::uint32_t seconds)
{
    retryTimer->Stop();
    // Posts fail at once until the timer ends the hold.
    retryHold = true;
    retryTimer->SetTimeouts(seconds * 1000, 0);
    retryTimer->Start([this] { retryHold = false; });
}

void UEIInterface::ResetCache()
{
    typeName.fill('\0');
    deviceTypesTotal = 0;
    ResetBrands();
}

void UEIInterface::ResetBrands()
{
    brandName.fill('\0');
    brandsTotal = 0;
    brandIndex = -1;
    ResetModels();
}

void UEIInterface::ResetModels()
{
    modelName.fill('\0');
    modelsTotal = 0;
    modelIndex = -1;
    ResetCodesets();
}

void UEIInterface::ResetCodesets()
{
    codesetName.fill('\0');
    codesetsTotal = 0;
    codesetIndex = -1;
}

}  // namespace TrellanService
