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

/// The library's post callback has no user pointer, so this is the engine that started the library.
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
    s_poster = this;
    Http::End();
    if (sessionKind != 0) {
        QSP_release_lookup_session(session);
        sessionKind = 0;
    }
    ResetCache();
    // Its result is ignored, because the library need not have been started before.
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
    // `configFile` is a member, because sessions that are opened later name it again.
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
    // Before the post callback is set: from then on the library may post.
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
    fmt::format_to_n(configFile.data(), configFile.size() - 1, "{}{}{}", "/opt/Orlu/etc/UEI/", stem,
                     "_linux.conf");
}

int UEIInterface::OpenSession(std::uint32_t kind)
{
    if (kind == 0) {
        kind = sessionKind != 0 ? sessionKind : kOnlineKind;
    }
    // The open session is kept, and the cache with it.
    if (kind == sessionKind) {
        return 0;
    }
    if (sessionKind != 0) {
        QSP_release_lookup_session(session);
        sessionKind = 0;
    }
    ResetCache();
    // The library knows three kinds; every other number is its third.
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
        // The post blocks the task, so a held key would be sent without its pauses until the
        // answer.
        s_poster->m_neighbours.EndBurst();
    }
    bool transferFailed = false;
    const int code =
        Http::Post(body, bodyLength, response, responseLength, url, held, transferFailed);
    // For a while posts fail at once instead of blocking the task for a cloud that is out of reach.
    if (transferFailed && s_poster != nullptr && s_poster->retrySeconds != 0) {
        s_poster->StartRetryTimer(s_poster->retrySeconds);
    }
    return code;
}

void UEIInterface::StartRetryTimer(std::uint32_t seconds)
{
    retryTimer->Stop();
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
    // The library empties the lists below one that is retrieved anew, so each reset includes those
    // below it.
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
