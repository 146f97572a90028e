// SPDX-License-Identifier: Apache-2.0

#include "support/ScriptedQsp.h"

#include <cstddef>

#include <fmt/format.h>

#include "qsp/qsp.h"

struct QSP_session_s {};

namespace {

constexpr int kNoLibrary = 1;
constexpr int kNothingFound = 44;
constexpr int kBadArgument = 45;
constexpr std::size_t kCodesetCallback = 5;

QSP_session_s s_session;

const char* OrNull(const char* text)
{
    return text == nullptr ? "(null)" : text;
}

/// Records the call and returns its scripted result.
template <class... Args>
int Note(std::string_view function, const Args&... args)
{
    ScriptedQsp* qsp = ScriptedQsp::Current();
    if (qsp == nullptr) {
        return kNoLibrary;
    }
    std::string arguments;
    ((arguments += fmt::format(" {}", args)), ...);
    return qsp->Called(function, arguments);
}

template <class... Args>
int Total(std::string_view function, std::string_view list, std::uint32_t* total,
          const Args&... args)
{
    const int code = Note(function, args...);
    if (code == 0) {
        auto& lists = ScriptedQsp::Current()->lists;
        const auto found = lists.find(list);
        *total = found == lists.end() ? 0 : static_cast<std::uint32_t>(found->second.size());
    }
    return code;
}

int Name(std::string_view function, std::uint32_t index, const char** name)
{
    if (const int code = Note(function, index); code != 0) {
        return code;
    }
    auto& lists = ScriptedQsp::Current()->lists;
    const auto found = lists.find(function);
    if (found == lists.end() || index >= found->second.size()) {
        return kBadArgument;
    }
    const std::string& text = found->second[index];
    *name = text == ScriptedQsp::kNull ? nullptr : text.c_str();
    return 0;
}

template <class T, class... Args>
int Number(std::string_view function, T* value, const Args&... args)
{
    const int code = Note(function, args...);
    if (code == 0) {
        *value = static_cast<T>(ScriptedQsp::Current()->NextNumber(function));
    }
    return code;
}

int Text(std::string_view function, const char** text)
{
    const int code = Note(function);
    if (code == 0) {
        *text = ScriptedQsp::Current()->Text(function);
    }
    return code;
}

}  // namespace

ScriptedQsp::ScriptedQsp(Effects& effects) : m_effects(effects)
{
    s_current = this;
}

ScriptedQsp::~ScriptedQsp()
{
    s_current = nullptr;
}

int ScriptedQsp::Called(std::string_view function, std::string_view arguments)
{
    m_effects.Add(fmt::format("qsp {}{}", function, arguments));
    const auto result = results.find(function);
    return result == results.end() ? 0 : result->second;
}

std::int32_t ScriptedQsp::NextNumber(std::string_view function)
{
    const auto found = numbers.find(function);
    if (found == numbers.end() || found->second.empty()) {
        return 0;
    }
    const std::int32_t number = found->second.front();
    if (found->second.size() > 1) {
        found->second.erase(found->second.begin());
    }
    return number;
}

const char* ScriptedQsp::Text(std::string_view function)
{
    if (const auto list = textLists.find(function); list != textLists.end()) {
        // The text is valid until the next call.
        m_text = list->second.front();
        if (list->second.size() > 1) {
            list->second.erase(list->second.begin());
        }
        return m_text.c_str();
    }
    const auto found = texts.find(function);
    if (found == texts.end()) {
        return "";
    }
    return found->second == kNull ? nullptr : found->second.c_str();
}

int QSP_stop()
{
    return Note("stop");
}

int QSP_start(const char* configFile)
{
    return Note("start", OrNull(configFile));
}

int QSP_set_host_log_function(int (*)(const char*))
{
    return Note("set_host_log_function");
}

int QSP_set_log_level(uint32_t level)
{
    return Note("set_log_level", level);
}

int QSP_set_online_vector(const char* vector)
{
    return Note("set_online_vector", OrNull(vector));
}

int QSP_set_online_unique_id(const char* identity)
{
    return Note("set_online_unique_id", OrNull(identity));
}

int QSP_set_host_callback_function(int (*)(uint32_t, void*))
{
    return Note("set_host_callback_function");
}

int uei_set_callback_httppost(int (*post)(const char*, uint32_t, char**, uint32_t*, const char*))
{
    const int code = Note("set_callback_httppost");
    if (code == 0) {
        ScriptedQsp::Current()->post = post;
    }
    return code;
}

int QSP_get_lookup_session(const char* configFile, uint32_t kind, QSP_SESSION* session)
{
    const int code = Note("get_lookup_session", OrNull(configFile), kind);
    if (code == 0) {
        *session = &s_session;
    }
    return code;
}

int QSP_release_lookup_session(QSP_SESSION)
{
    return Note("release_lookup_session");
}

int QSP_get_version_string(QSP_SESSION, const char** text)
{
    return Text("get_version_string", text);
}

int QSP_retrieve_device_types_total(QSP_SESSION, uint32_t* total)
{
    return Total("retrieve_device_types_total", "get_device_type_name", total);
}

int QSP_get_device_type_name(QSP_SESSION, uint32_t index, const char** name)
{
    return Name("get_device_type_name", index, name);
}

int QSP_retrieve_brands_total(QSP_SESSION, const char* type, const char* prefix, uint32_t one,
                              uint32_t* total)
{
    return Total("retrieve_brands_total", "get_brand_name", total, OrNull(type), OrNull(prefix),
                 one);
}

int QSP_get_brand_name(QSP_SESSION, uint32_t index, const char** name)
{
    return Name("get_brand_name", index, name);
}

int QSP_option_set_minimum_fuzzy_threshold(QSP_SESSION, int32_t threshold)
{
    return Note("option_set_minimum_fuzzy_threshold", threshold);
}

int QSP_retrieve_models_total(QSP_SESSION, uint32_t brand, const char* hint, uint32_t one,
                              uint32_t* total)
{
    return Total("retrieve_models_total", "get_model_name", total, brand, OrNull(hint), one);
}

int QSP_get_model_name(QSP_SESSION, uint32_t index, const char** name)
{
    return Name("get_model_name", index, name);
}

int QSP_get_model_fuzzy_value(QSP_SESSION, uint32_t index, uint32_t* value)
{
    return Number("get_model_fuzzy_value", value, index);
}

int QSP_retrieve_codesets_by_model_total(QSP_SESSION, uint32_t model, uint32_t* total)
{
    return Total("retrieve_codesets_by_model_total", "get_codeset_name", total, model);
}

int QSP_retrieve_codesets_by_brand_total(QSP_SESSION, uint32_t brand, uint32_t* total)
{
    return Total("retrieve_codesets_by_brand_total", "get_codeset_name", total, brand);
}

int QSP_get_codeset_name(QSP_SESSION, uint32_t index, const char** name)
{
    return Name("get_codeset_name", index, name);
}

int QSP_osm_retrieve_test_keys_total(QSP_SESSION, const char* type, const char* brand,
                                     uint32_t* total)
{
    return Number("osm_retrieve_test_keys_total", total, OrNull(type), OrNull(brand));
}

int QSP_osm_get_first_test_key(QSP_SESSION, int32_t* key)
{
    return Number("osm_get_first_test_key", key);
}

int QSP_osm_get_next_test_key(QSP_SESSION, int32_t* key)
{
    return Number("osm_get_next_test_key", key);
}

int QSP_osm_get_current_codeset_name(QSP_SESSION, const char** name)
{
    return Text("osm_get_current_codeset_name", name);
}

int QSP_osm_report_test_result(QSP_SESSION, int32_t failed, int32_t* status)
{
    const int code = Note("osm_report_test_result", failed);
    if (ScriptedQsp::Current() != nullptr) {
        // Some failures have a status too: code 4 has status 3.
        *status = ScriptedQsp::Current()->NextNumber("osm_report_test_result");
    }
    return code;
}

int QSP_osm_retrieve_codesets_total(QSP_SESSION, uint32_t* total)
{
    return Number("osm_retrieve_codesets_total", total);
}

int QSP_osm_get_codesets_tested(QSP_SESSION, uint32_t* tested)
{
    return Number("osm_get_codesets_tested", tested);
}

int UEI_register_ir_callbacks(void* const table[14])
{
    std::string filled;
    for (std::size_t i = 0; i < 14; ++i) {
        filled += table[i] == nullptr ? '-' : '*';
    }
    const int code = Note("register_ir_callbacks", filled);
    if (code == 0) {
        using Deliver = int (*)(const char*, const std::uint8_t*, std::uint32_t);
        ScriptedQsp::Current()->deliver = reinterpret_cast<Deliver>(table[kCodesetCallback]);
    }
    return code;
}

int QSP_send_codeset_by_name(QSP_SESSION, const char* name, uint32_t two)
{
    if (const int code = Note("send_codeset_by_name", OrNull(name), two); code != 0) {
        return code;
    }
    const ScriptedQsp& qsp = *ScriptedQsp::Current();
    const auto binary = qsp.binaries.find(OrNull(name));
    if (binary == qsp.binaries.end() || qsp.deliver == nullptr) {
        return kNothingFound;
    }
    const auto* data = reinterpret_cast<const std::uint8_t*>(binary->second.data());
    return qsp.deliver(name, data, static_cast<std::uint32_t>(binary->second.size()));
}

int QSP_discover_retrieve_info_cec(QSP_SESSION, uint32_t vendorId, uint16_t logicalAddr,
                                   const char* osd)
{
    return Note("discover_retrieve_info_cec", vendorId, logicalAddr, OrNull(osd));
}

int QSP_discover_retrieve_info_edid(QSP_SESSION, const uint8_t*, uint32_t length)
{
    return Note("discover_retrieve_info_edid", length);
}

int QSP_discover_device_info_get(QSP_SESSION, const char** type, const char** brand,
                                 const char** codeset, uint8_t* flag)
{
    const int code = Note("discover_device_info_get");
    if (code == 0) {
        const auto& answer = ScriptedQsp::Current()->lists["discover_device_info_get"];
        const auto text = [&answer](std::size_t i) {
            return i < answer.size() ? answer[i].c_str() : "";
        };
        *type = text(0);
        *brand = text(1);
        *codeset = text(2);
        *flag = static_cast<std::uint8_t>(
            ScriptedQsp::Current()->NextNumber("discover_device_info_get"));
    }
    return code;
}
