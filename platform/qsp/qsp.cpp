// SPDX-License-Identifier: Apache-2.0

#include "qsp/qsp.h"

#include "qsp/Library.h"
#include "qsp/ReasonCodes.h"

namespace {

using QSP::Session;
namespace Reason = QSP::Reason;

constexpr int kCodesetCallback = 5;

QSP::Library& TheLibrary()
{
    static QSP::Library library;
    return library;
}

/// Runs every call, so that no exception leaves the C interface.
template <typename Call>
int Guarded(const char* name, Call call) noexcept
{
    int code = Reason::kInternal;
    try {
        code = call();
    } catch (...) {
        code = Reason::kInternal;
    }
    if (code != Reason::kSuccess && code != Reason::kNothingFound) {
        TheLibrary().LogFailure(name, code);
    }
    return code;
}

template <typename... Pointers>
bool AnyNull(Pointers... pointers)
{
    return (... || (pointers == nullptr));
}

/// Runs a call on a session; `given` are the pointers that must not be null.
template <typename Call, typename... Pointers>
int OnSession(const char* name, QSP_SESSION handle, Call call, Pointers... given) noexcept
{
    return Guarded(name, [&call, handle, given...] {
        if (!TheLibrary().IsStarted()) {
            return Reason::kNotStarted;
        }
        Session* session = TheLibrary().Find(handle);
        if (session == nullptr) {
            return Reason::kBadSession;
        }
        return AnyNull(given...) ? Reason::kBadArgument : call(*session);
    });
}

}  // namespace

int QSP_stop(void)
{
    return Guarded(__func__, [] {
        TheLibrary().Stop();
        return Reason::kSuccess;
    });
}

int QSP_start(const char* configFile)
{
    return Guarded(__func__, [configFile] {
        return configFile == nullptr ? Reason::kBadArgument : TheLibrary().Start(configFile);
    });
}

int QSP_set_host_log_function(int (*log)(const char* text))
{
    return Guarded(__func__, [log] {
        TheLibrary().SetLog(log);
        return Reason::kSuccess;
    });
}

int QSP_set_log_level(uint32_t level)
{
    return Guarded(__func__, [level] {
        TheLibrary().SetLogLevel(level);
        return Reason::kSuccess;
    });
}

int QSP_set_online_vector(const char* vector)
{
    return Guarded(__func__, [vector] {
        if (vector == nullptr) {
            return Reason::kBadArgument;
        }
        TheLibrary().Cloud().SetVector(vector);
        return Reason::kSuccess;
    });
}

int QSP_set_online_unique_id(const char* identity)
{
    return Guarded(__func__, [identity] {
        if (identity == nullptr) {
            return Reason::kBadArgument;
        }
        TheLibrary().Cloud().SetIdentity(identity);
        return Reason::kSuccess;
    });
}

int QSP_set_host_callback_function(int (*callback)(uint32_t event, void* data))
{
    // This library has no events to report.
    return callback == nullptr ? Reason::kBadArgument : Reason::kSuccess;
}

int uei_set_callback_httppost(int (*post)(const char* body, uint32_t bodyLength, char** response,
                                          uint32_t* responseLength, const char* url))
{
    return Guarded(__func__, [post] {
        TheLibrary().Cloud().SetPost(post);
        return post == nullptr ? Reason::kBadArgument : Reason::kSuccess;
    });
}

int QSP_get_lookup_session(const char* configFile, uint32_t kind, QSP_SESSION* session)
{
    return Guarded(__func__, [configFile, kind, session] {
        if (!TheLibrary().IsStarted()) {
            return Reason::kNotStarted;
        }
        // `QSP_start` has read the configuration; the path is only checked.
        if (AnyNull(configFile, session) || kind == 0) {
            return Reason::kBadArgument;
        }
        return TheLibrary().OpenSession(*session);
    });
}

int QSP_release_lookup_session(QSP_SESSION session)
{
    return Guarded(__func__, [session] { return TheLibrary().ReleaseSession(session); });
}

int QSP_get_version_string(QSP_SESSION session, const char** text)
{
    return OnSession(
        __func__, session, [text](Session& own) { return own.Version(*text); }, text);
}

int QSP_retrieve_device_types_total(QSP_SESSION session, uint32_t* total)
{
    return OnSession(
        __func__, session, [total](Session& own) { return own.RetrieveDeviceTypes(*total); },
        total);
}

int QSP_get_device_type_name(QSP_SESSION session, uint32_t index, const char** name)
{
    return OnSession(
        __func__, session, [index, name](Session& own) { return own.DeviceTypeName(index, *name); },
        name);
}

int QSP_retrieve_brands_total(QSP_SESSION session, const char* type, const char* prefix,
                              uint32_t one, uint32_t* total)
{
    // The host always passes 1; this library has no use for it.
    static_cast<void>(one);
    return OnSession(
        __func__, session,
        [type, prefix, total](Session& own) { return own.RetrieveBrands(type, prefix, *total); },
        type, prefix, total);
}

int QSP_get_brand_name(QSP_SESSION session, uint32_t index, const char** name)
{
    return OnSession(
        __func__, session, [index, name](Session& own) { return own.BrandName(index, *name); },
        name);
}

int QSP_option_set_minimum_fuzzy_threshold(QSP_SESSION session, int32_t threshold)
{
    return OnSession(__func__, session,
                     [threshold](Session& own) { return own.SetThreshold(threshold); });
}

int QSP_retrieve_models_total(QSP_SESSION session, uint32_t brand, const char* hint, uint32_t one,
                              uint32_t* total)
{
    static_cast<void>(one);
    return OnSession(
        __func__, session,
        [brand, hint, total](Session& own) { return own.RetrieveModels(brand, hint, *total); },
        hint, total);
}

int QSP_get_model_name(QSP_SESSION session, uint32_t index, const char** name)
{
    return OnSession(
        __func__, session, [index, name](Session& own) { return own.ModelName(index, *name); },
        name);
}

int QSP_get_model_fuzzy_value(QSP_SESSION session, uint32_t index, uint32_t* value)
{
    return OnSession(
        __func__, session,
        [index, value](Session& own) { return own.ModelFuzzyValue(index, *value); }, value);
}

int QSP_retrieve_codesets_by_model_total(QSP_SESSION session, uint32_t model, uint32_t* total)
{
    return OnSession(
        __func__, session,
        [model, total](Session& own) { return own.RetrieveCodesetsByModel(model, *total); }, total);
}

int QSP_retrieve_codesets_by_brand_total(QSP_SESSION session, uint32_t brand, uint32_t* total)
{
    return OnSession(
        __func__, session,
        [brand, total](Session& own) { return own.RetrieveCodesetsByBrand(brand, *total); }, total);
}

int QSP_get_codeset_name(QSP_SESSION session, uint32_t index, const char** name)
{
    return OnSession(
        __func__, session, [index, name](Session& own) { return own.CodesetName(index, *name); },
        name);
}

int QSP_osm_retrieve_test_keys_total(QSP_SESSION session, const char* type, const char* brand,
                                     uint32_t* total)
{
    return OnSession(
        __func__, session,
        [type, brand, total](Session& own) { return own.RetrieveTestKeys(type, brand, *total); },
        type, brand, total);
}

int QSP_osm_get_first_test_key(QSP_SESSION session, int32_t* key)
{
    return OnSession(
        __func__, session, [key](Session& own) { return own.FirstTestKey(*key); }, key);
}

int QSP_osm_get_next_test_key(QSP_SESSION session, int32_t* key)
{
    return OnSession(
        __func__, session, [key](Session& own) { return own.NextTestKey(*key); }, key);
}

int QSP_osm_get_current_codeset_name(QSP_SESSION session, const char** name)
{
    return OnSession(
        __func__, session, [name](Session& own) { return own.CurrentCodesetName(*name); }, name);
}

int QSP_osm_report_test_result(QSP_SESSION session, int32_t failed, int32_t* status)
{
    return OnSession(
        __func__, session,
        [failed, status](Session& own) { return own.ReportTestResult(failed, *status); }, status);
}

int QSP_osm_retrieve_codesets_total(QSP_SESSION session, uint32_t* total)
{
    return OnSession(
        __func__, session, [total](Session& own) { return own.CodesetsInTest(*total); }, total);
}

int QSP_osm_get_codesets_tested(QSP_SESSION session, uint32_t* tested)
{
    return OnSession(
        __func__, session, [tested](Session& own) { return own.CodesetsTested(*tested); }, tested);
}

int UEI_register_ir_callbacks(void* const table[14])
{
    return Guarded(__func__, [table] {
        if (table == nullptr || table[kCodesetCallback] == nullptr) {
            return Reason::kBadArgument;
        }
        TheLibrary().SetCodesetFunction(
            reinterpret_cast<QSP::CodesetFunction>(table[kCodesetCallback]));
        return Reason::kSuccess;
    });
}

int QSP_send_codeset_by_name(QSP_SESSION session, const char* name, uint32_t two)
{
    // The host always passes 2; this library has no use for it.
    static_cast<void>(two);
    return OnSession(
        __func__, session,
        [name](Session& own) { return own.SendCodeset(name, TheLibrary().DeliverCodeset()); },
        name);
}

int QSP_discover_retrieve_info_cec(QSP_SESSION session, uint32_t vendorId, uint16_t logicalAddr,
                                   const char* osd)
{
    return OnSession(
        __func__, session,
        [vendorId, logicalAddr, osd](Session& own) {
            return own.DiscoverCEC(vendorId, logicalAddr, osd);
        },
        osd);
}

int QSP_discover_retrieve_info_edid(QSP_SESSION session, const uint8_t* edid, uint32_t length)
{
    return OnSession(
        __func__, session,
        [edid, length](Session& own) {
            return own.DiscoverEDID({edid, length});
        },
        edid);
}

int QSP_discover_device_info_get(QSP_SESSION session, const char** type, const char** brand,
                                 const char** codeset, uint8_t* flag)
{
    return OnSession(
        __func__, session,
        [type, brand, codeset, flag](Session& own) {
            return own.DiscoveredDevice(*type, *brand, *codeset, *flag);
        },
        type, brand, codeset, flag);
}
