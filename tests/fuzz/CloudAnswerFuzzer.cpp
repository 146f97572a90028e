// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "qsp/qsp.h"
#include "support/TemporaryRoot.h"

namespace {

constexpr const char* kConfig = "/qsp.conf";

/// The cloud's answer to every request after the opening of the session.
std::string s_answer;

int Post(const char*, std::uint32_t, char** response, std::uint32_t* responseLength, const char*)
{
    *responseLength = static_cast<std::uint32_t>(s_answer.size());
    *response = static_cast<char*>(std::malloc(s_answer.size() + 1));
    std::memcpy(*response, s_answer.c_str(), s_answer.size() + 1);
    return 0;
}

int TakeCodeset(const char* name, const std::uint8_t* data, std::uint32_t size)
{
    std::uint32_t sum = static_cast<std::uint32_t>(std::strlen(name));
    for (std::uint32_t i = 0; i < size; ++i) {
        sum += data[i];
    }
    return sum == 0 ? 4 : 0;
}

/// Checks that a returned text is terminated and not longer than the cloud's answer.
void Read(int code, const char* text)
{
    if (code == 0 && std::strlen(text) > s_answer.size()) {
        __builtin_trap();
    }
}

void WalkCatalogue(QSP_SESSION session)
{
    std::uint32_t total = 0;
    std::uint32_t value = 0;
    const char* name = nullptr;
    QSP_retrieve_device_types_total(session, &total);
    Read(QSP_get_device_type_name(session, total - 1, &name), name);
    QSP_retrieve_brands_total(session, "TV", "", 1, &total);
    Read(QSP_get_brand_name(session, total - 1, &name), name);
    QSP_retrieve_models_total(session, 0, "", 1, &total);
    Read(QSP_get_model_name(session, total - 1, &name), name);
    QSP_get_model_fuzzy_value(session, 0, &value);
    QSP_retrieve_codesets_by_model_total(session, 0, &total);
    Read(QSP_get_codeset_name(session, total - 1, &name), name);
    QSP_retrieve_codesets_by_brand_total(session, 0, &total);
}

void PlayTest(QSP_SESSION session, const std::uint8_t* answers, std::size_t count)
{
    std::uint32_t number = 0;
    std::int32_t key = 0;
    std::int32_t status = 0;
    const char* name = nullptr;
    QSP_osm_retrieve_test_keys_total(session, "TV", "Acme", &number);
    QSP_osm_get_first_test_key(session, &key);
    for (std::size_t i = 0; i < count && status <= 1; ++i) {
        Read(QSP_osm_get_current_codeset_name(session, &name), name);
        QSP_osm_report_test_result(session, answers[i] & 1, &status);
        QSP_osm_retrieve_codesets_total(session, &number);
        QSP_osm_get_codesets_tested(session, &number);
        QSP_osm_get_next_test_key(session, &key);
    }
}

void LookUp(QSP_SESSION session)
{
    std::array<void*, 14> callbacks{};
    callbacks[5] = reinterpret_cast<void*>(&TakeCodeset);
    UEI_register_ir_callbacks(callbacks.data());
    QSP_send_codeset_by_name(session, "T0001", 2);
    const char* type = nullptr;
    const char* brand = nullptr;
    const char* codeset = nullptr;
    std::uint8_t flag = 0;
    if (QSP_discover_retrieve_info_cec(session, 1, 0, "TV") == 0) {
        Read(QSP_discover_device_info_get(session, &type, &brand, &codeset, &flag), codeset);
    }
}

}  // namespace

// The first byte is the length of a guided test, the bytes behind it are its user's answers. The
// rest is the cloud's answer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TemporaryRoot root;
    static const bool configured = [] {
        root.Write(kConfig, R"({"cloudUrl": "http://127.0.0.1:1/qsp/v1"})");
        return true;
    }();
    if (!configured || size == 0) {
        return 0;
    }
    const std::size_t played = std::min<std::size_t>(data[0] % 32U, size - 1);
    s_answer = R"({"status": 0, "version": "1"})";
    QSP_stop();
    QSP_set_online_vector("vector");
    QSP_set_online_unique_id("identity");
    QSP_start(kConfig);
    uei_set_callback_httppost(&Post);
    QSP_SESSION session = nullptr;
    if (QSP_get_lookup_session(kConfig, 2, &session) != 0) {
        __builtin_trap();
    }
    s_answer.assign(data + 1 + played, data + size);
    WalkCatalogue(session);
    PlayTest(session, data + 1, played);
    LookUp(session);
    QSP_release_lookup_session(session);
    return 0;
}
