// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <json/forwards.h>

#include "ProtoBufs/DeviceInfo.pb.h"
#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "orlu/Callback.h"
#include "orlu/Timer.h"
#include "qsp/qsp.h"
#include "uei/CodesetTransferBuffer.h"

namespace TrellanService {

class Trellan_ServiceBlasterProxy;
class Trellan_ServiceCodesetHandler;

/// Where the engine takes what it downloads.
class UEINeighboursIF {
public:
    virtual ~UEINeighboursIF() = default;
    virtual Trellan_ServiceCodesetHandler& CodesetHandler() = 0;
    virtual Trellan_ServiceBlasterProxy& BlasterProxy() = 0;
};

/// The one door to the UEI library: its start, its session and posts, and the download of code
/// sets. On the server task, which every call of the library blocks, for as long as its posts take.
/// Building one touches nothing; neither the library nor the session is ended with it.
class UEIInterface {
public:
    explicit UEIInterface(UEINeighboursIF& neighbours);
    virtual ~UEIInterface();
    UEIInterface(const UEIInterface&) = delete;
    UEIInterface& operator=(const UEIInterface&) = delete;

    /// Starts the library, anew if it runs, for the product of this information; callbacks that are
    /// made later are bound to `task`. 0, or -1.
    int Init(NotifyTargetTaskIF* task, const DeviceManagerPb::DeviceInfo& deviceInfo);

    static std::string GetCountry(const DeviceManagerPb::DeviceInfo& deviceInfo);
    static std::string GetUserId(const DeviceManagerPb::DeviceInfo& deviceInfo);
    void SetConfigFile(const std::string& country);

    /// Sees to an open session of a kind (1 to 3; 0: the open one's, or 2) with an empty cache, or
    /// leaves the one of that kind as it is. 0, or -1 and no session.
    int OpenSession(std::uint32_t kind);

    /// The library's version text goes to "TRVersion" of `version`. 0, or -1.
    int GetVersion(Json::Value& version, std::uint32_t kind);

    /// Whether a session of kind 2 is open or could be opened.
    bool TestConnection();

    /// The first valid name of a comma-separated list, as exactly 5 bytes, filled with zeros; empty
    /// if there is none. A name is a letter of "TCNSVYRMADH" with a number behind it of which four
    /// digits count, below 4096 for H and below 8192 for the others.
    std::string ValidateCodesetName(const char* name);

    /// Downloads a code set into the transfer buffer. 0, or -1.
    int GetCodesetBinary(const char* name, std::uint32_t kind);

    /// Downloads a code set, notes its fingerprint and begins its transfer to the blaster. The
    /// callback gets the transfer's result; `BULK_TRANSFER_ERROR`, before this returns, if the
    /// download failed or its result can't be transferred.
    void LoadCodeset(const std::string& name,
                     const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                     std::uint32_t kind);

    /// What was downloaded last.
    static const CodesetTransferBuffer& TransferBuffer();

    /// Given to the library: a post, see `Http::Post`, and a code set, which gives 0, or 4 if
    /// there is no data or more of it than the blaster takes.
    static int HttpPost(const char* body, std::uint32_t bodyLength, char** response,
                        std::uint32_t* responseLength, const char* url);
    static int HandleCodesetBinary(const char* name, const std::uint8_t* data, std::uint32_t size);

private:
    using Text = std::array<char, 200>;

    bool StartLibrary(const std::string& identity);
    void ResetCache();
    void ResetBrands();
    void ResetModels();
    void ResetCodesets();
    void StartRetryTimer(std::uint32_t seconds);

    QSP_SESSION session = nullptr;
    std::uint32_t sessionKind = 0;  ///< 0: no session is open.
    bool skipPrefixSweep = false;
    bool loadFirstCodeset = false;
    bool loadFuzzyValues = false;
    Text configFile{};
    Text typeName{};
    std::uint32_t deviceTypesTotal = 0;
    Text brandName{};
    std::uint32_t brandsTotal = 0;
    std::int32_t brandIndex = -1;
    Text modelName{};
    std::uint32_t modelsTotal = 0;
    std::int32_t modelIndex = -1;
    Text codesetName{};
    std::uint32_t codesetsTotal = 0;
    std::int32_t codesetIndex = -1;
    bool osmActive = false;
    const char* osmCodeset = nullptr;
    std::uint32_t testKeysTotal = 0;
    std::int32_t testKey = -1;
    std::uint32_t codesetsOffered = 0;
    std::uint32_t codesetsTested = 0;
    std::string lastResult;
    const char* deCodeset = "";
    std::string deBrand;
    std::string deModel;
    std::string deType;
    std::string validCodeset;
    std::shared_ptr<APTimer> retryTimer;
    bool retryHold = false;
    NotifyTargetTaskIF* task = nullptr;
    std::uint32_t retrySeconds = 0;
    UEINeighboursIF& m_neighbours;
};

}  // namespace TrellanService
