// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <json/forwards.h>

#include "ProtoBufs/DeviceInfo.pb.h"
#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "orlu/Callback.h"
#include "orlu/Timer.h"
#include "qsp/qsp.h"
#include "uei/CodesetTransferBuffer.h"

namespace TrellanService {

class Trellan_ServiceBlasterProxy;
class Trellan_ServiceCodesetHandler;

/// What the engine calls: the targets of its downloads, and the place for brand lists.
class UEINeighboursIF {
public:
    virtual ~UEINeighboursIF() = default;
    virtual Trellan_ServiceCodesetHandler& CodesetHandler() = 0;
    virtual Trellan_ServiceBlasterProxy& BlasterProxy() = 0;
    /// The folder for brand list files; empty while it is not known.
    virtual std::string StagingDirectory() = 0;
    /// The name of the brand list file, without directory.
    virtual std::string BrandListFileName() = 0;
    /// To be called before a post blocks the task: ends a burst that would otherwise last too long.
    virtual void EndBurst() = 0;
};

/// The only user of the UEI library: its start, its session and posts, the download of code sets,
/// the catalogue, the guided test, direct entry and discovery. On the server task. Every call of
/// the library blocks the task for as long as its posts take. The constructor calls nothing; the
/// destructor ends neither the library nor the session.
class UEIInterface {
public:
    using OSMCallback = Callback<TrellanServiceMessages::OSMControlResp_t>;
    using DirectEntryCallback = Callback<TrellanServiceMessages::DirectEntryResp_t>;

    explicit UEIInterface(UEINeighboursIF& neighbours);
    virtual ~UEIInterface();
    UEIInterface(const UEIInterface&) = delete;
    UEIInterface& operator=(const UEIInterface&) = delete;

    /// Starts the library for the product of this information; a running library is stopped first.
    /// Callbacks made later are bound to `task`. 0, or -1.
    int Init(NotifyTargetTaskIF* task, const DeviceManagerPb::DeviceInfo& deviceInfo);

    static std::string GetCountry(const DeviceManagerPb::DeviceInfo& deviceInfo);
    static std::string GetUserId(const DeviceManagerPb::DeviceInfo& deviceInfo);
    void SetConfigFile(const std::string& country);

    /// Opens a session of a kind (1 to 3; 0: the kind of the open one, or 2) with an empty cache.
    /// An open session of that kind is kept with its cache. 0, or -1 and no session.
    int OpenSession(std::uint32_t kind);

    /// Puts the library's version text into "TRVersion" of `version`. 0, or -1.
    int GetVersion(Json::Value& version, std::uint32_t kind);

    /// Whether a session of kind 2 is open or could be opened.
    bool TestConnection();

    /// The first valid name of a comma-separated list, as exactly 5 bytes, filled with zeros; empty
    /// if there is none. A name is a letter of "TCNSVYRMADH" and a number. The first four digits
    /// count; the number must be below 4096 for H and below 8192 for the others.
    std::string ValidateCodesetName(const char* name);

    /// Downloads a code set into the transfer buffer. 0, or -1.
    int GetCodesetBinary(const char* name, std::uint32_t kind);

    /// Downloads a code set, stores its fingerprint and begins its transfer to the blaster. The
    /// callback gets the result of the transfer; `BULK_TRANSFER_ERROR`, before this returns, if the
    /// download failed or its result cannot be transferred.
    void LoadCodeset(const std::string& name,
                     const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                     std::uint32_t kind);

    /// The last download.
    static const CodesetTransferBuffer& TransferBuffer();

    // --- The catalogue, by the library's names of types. A look-up gives an index from 0 in the
    // library's list, -1 if the library failed, -2 if there is no such entry; the others give 0 or
    // -1. The session remembers what was looked up last, so that nothing is asked twice. A name of
    // 200 bytes and more is not remembered. ---

    /// "types".
    int GetDeviceTypes(Json::Value& out, std::uint32_t kind);
    /// "type", "prefix", "brands"; none is a success.
    int GetBrands(const std::string& type, const std::string& prefix, Json::Value& out,
                  std::uint32_t kind);
    /// Retrieves the library's list of brands, unless there is one of this type and `force` is not
    /// set. 0, -1 or -2.
    int LoadBrands(const std::string& type, const std::string& prefix, bool force);
    int FindBrandIndex(const std::string& type, const std::string& brand, std::uint32_t kind);
    int FindModelIndex(const std::string& type, const std::string& brand, const std::string& model,
                       std::uint32_t kind);
    /// Appends a model and, if the flags ask for them, its fuzzy value and its first code set. 0,
    /// -1, or -3 if `unique` is set and the model is in the array already.
    int LoadModel(std::uint32_t index, Json::Value& models, Json::Value& codesets,
                  Json::Value& fuzzyValues, bool unique);
    int LoadModels(std::uint32_t brand, const std::string& hint, std::int32_t threshold,
                   Json::Value& out);
    /// "models", "type", "brand", "hint", "fuzzyThold", and "fuzzyVals" in step with the models.
    int GetModels(const std::string& type, const std::string& brand, const std::string& hint,
                  std::int32_t threshold, Json::Value& out, std::uint32_t kind);
    int LoadAllModels(std::uint32_t brand, Json::Value& out);
    int GetAllModels(const std::string& type, const std::string& brand, Json::Value& out,
                     std::uint32_t kind);
    /// "codesets", and "type", "brand", "model" where they are given.
    int GetModelCodesets(std::uint32_t model, Json::Value& out);
    int GetModelCodesets(const std::string& type, const std::string& brand,
                         const std::string& model, Json::Value& out, std::uint32_t kind);
    int GetBrandCodesets(std::uint32_t brand, Json::Value& out);
    int GetBrandCodesets(const std::string& type, const std::string& brand, Json::Value& out,
                         std::uint32_t kind);

    /// Writes a `BrandListResp_t` of all brands from the filter on, as JSON, into the manager's
    /// file. False if the file was not written. Blocks for the whole walk.
    bool GetBrandList(const TrellanServiceMessages::BrandListReq_t& request);

    // --- The guided test. Each step calls its callback once, if it is set: at once, or with the
    // blaster's answer. Steps may come in any order; one that is not possible is
    // answered with an error. ---

    void OSMStart(const TrellanServiceMessages::OSMControlMsg_t& request,
                  const OSMCallback& callback);
    /// A code set name without a device number gets no answer.
    void OSMSendKey(const OSMCallback& callback);
    void OSMUserResponse(bool worked, const OSMCallback& callback);
    /// Always 0.
    int OSMCancel();
    void OSMComplete(const OSMCallback& callback);
    bool IsOSMActive() const { return osmActive; }
    /// Clears the response and sets every field.
    void FillOSMControlResp(TrellanServiceMessages::OSMControlResp_t& response) const;

    /// Finds the code set of a device by its names. If `load` is set, loads it into the blaster:
    /// the answer then comes with the result of the load, and a test counts as active.
    void DirectEntryBrandModel(const TrellanServiceMessages::DirectEntryReq_t& request, bool load,
                               const DirectEntryCallback& callback);
    /// Sets all fields but `lastResult`.
    void FillDirectEntryResp(TrellanServiceMessages::DirectEntryResp_t& response) const;

    /// Both answer before they return. An EDID shorter than 256 bytes is filled with zeros, of a
    /// longer one the first 256 bytes count.
    void FindCECDevice(const TrellanServiceMessages::FindCECDevice_t& request,
                       const Callback<TrellanServiceMessages::FindCECDevice_t>& callback);
    void FindEDIDDevice(const TrellanServiceMessages::FindEDIDDevice_t& request,
                        const Callback<TrellanServiceMessages::FindEDIDDevice_t>& callback);

    /// Callbacks of the library. `HttpPost` makes a post, see `Http::Post`. `HandleCodesetBinary`
    /// takes a code set and gives 0, or 4 if there is no data or more than the blaster can store.
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
    void StoreInBlaster();

    int LoadDeviceTypes();
    int RetrieveBrands(const std::string& type, const std::string& prefix);
    /// Calls `add` with each brand that has the prefix. 0, or -1, which may come after some calls.
    int WalkBrands(const std::string& type, const std::string& prefix, std::uint32_t kind,
                   const std::function<void(const char*)>& add);
    int SearchBrand(const std::string& brand);
    int LoadFirstCodeset(std::uint32_t model, Json::Value& codesets);
    int AddModels(const std::string& hint, std::uint32_t brand, bool unique, Json::Value& out);
    int AddCodesets(Json::Value& out, bool trace);
    const char* StartTest(const TrellanServiceMessages::OSMControlMsg_t& request);
    int GetCurrentCodesetName();
    bool FirstTestKey();
    void OSMLoadCodeset(const std::string& name, const OSMCallback& callback, std::uint32_t kind);
    bool ReportTestResult(bool worked, std::int32_t& status);
    void EndTest(const char* result, const char* codeset, const OSMCallback& callback);
    void NextTestKey(const std::string& previous,
                     TrellanServiceMessages::OSMControlResp_t& reported,
                     const OSMCallback& callback);
    void FailTest(const OSMCallback& callback);
    void ChangeCodeset(const std::string& previous, const OSMCallback& callback);
    bool FindCodeset(const TrellanServiceMessages::DirectEntryReq_t& request);
    void DirectEntryLoadCodeset(const std::string& name, const DirectEntryCallback& callback,
                                std::uint32_t kind);

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
    std::string lastResult = "LAST_RESULT_SUCCESS";
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
    std::string m_osmText;  ///< Copies of the library's texts. `osmCodeset` and `deCodeset` point
    std::string m_deText;   ///< into these or into `validCodeset`.
};

}  // namespace TrellanService
