// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/MemoryLibrary.h"

#include <algorithm>
#include <cctype>

#include <fmt/format.h>

#include "qsp/qsp.h"

namespace Bench {

namespace {

constexpr std::string_view kFirst = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr int kRefused = 1;
constexpr int kNothingFound = 44;

std::string Head(std::string_view name, std::size_t length)
{
    std::string head(name.substr(0, length));
    std::ranges::transform(head, head.begin(), [](unsigned char c) { return std::tolower(c); });
    return head;
}

}  // namespace

void MemoryLibrary::Fill(std::size_t count)
{
    s_names.clear();
    for (std::size_t i = 0; i < count; ++i) {
        s_names.push_back(fmt::format("{}rand {:06}", kFirst[i % kFirst.size()], i));
    }
    std::ranges::sort(s_names);
}

std::size_t MemoryLibrary::Retrieve(std::string_view prefix)
{
    const auto head = [prefix](const std::string& name) {
        return Head(name, prefix.size());
    };
    const std::string first = Head(prefix, prefix.size());
    const auto begin = std::ranges::lower_bound(s_names, first, {}, head);
    const auto end = std::ranges::upper_bound(s_names, first, {}, head);
    s_begin = static_cast<std::size_t>(begin - s_names.begin());
    s_end = static_cast<std::size_t>(end - s_names.begin());
    return s_end - s_begin;
}

const std::string* MemoryLibrary::Name(std::size_t index)
{
    return index < s_end - s_begin ? &s_names[s_begin + index] : nullptr;
}

}  // namespace Bench

// The functions of the library that a session and a brand list need.

int QSP_stop()
{
    return 0;
}
int QSP_start(const char*)
{
    return 0;
}
int QSP_set_host_log_function(int (*)(const char*))
{
    return 0;
}
int QSP_set_log_level(uint32_t)
{
    return 0;
}
int QSP_set_online_vector(const char*)
{
    return 0;
}
int QSP_set_online_unique_id(const char*)
{
    return 0;
}
int QSP_set_host_callback_function(int (*)(uint32_t, void*))
{
    return 0;
}
int uei_set_callback_httppost(int (*)(const char*, uint32_t, char**, uint32_t*, const char*))
{
    return 0;
}
int UEI_register_ir_callbacks(void* const*)
{
    return 0;
}

int QSP_get_lookup_session(const char*, uint32_t, QSP_SESSION* session)
{
    static int place = 0;
    *session = reinterpret_cast<QSP_SESSION>(&place);
    return 0;
}
int QSP_release_lookup_session(QSP_SESSION)
{
    return 0;
}
int QSP_get_version_string(QSP_SESSION, const char** text)
{
    *text = "memory";
    return 0;
}

int QSP_retrieve_device_types_total(QSP_SESSION, uint32_t* total)
{
    *total = 1;
    return 0;
}
int QSP_retrieve_brands_total(QSP_SESSION, const char*, const char* prefix, uint32_t,
                              uint32_t* total)
{
    *total = static_cast<uint32_t>(Bench::MemoryLibrary::Retrieve(prefix));
    return *total == 0 ? Bench::kNothingFound : 0;
}
int QSP_get_brand_name(QSP_SESSION, uint32_t index, const char** name)
{
    const auto* found = Bench::MemoryLibrary::Name(index);
    if (found == nullptr) {
        return Bench::kRefused;
    }
    *name = found->c_str();
    return 0;
}

int QSP_get_device_type_name(QSP_SESSION, uint32_t, const char**)
{
    return Bench::kRefused;
}
int QSP_option_set_minimum_fuzzy_threshold(QSP_SESSION, int32_t)
{
    return Bench::kRefused;
}
int QSP_retrieve_models_total(QSP_SESSION, uint32_t, const char*, uint32_t, uint32_t*)
{
    return Bench::kRefused;
}
int QSP_get_model_name(QSP_SESSION, uint32_t, const char**)
{
    return Bench::kRefused;
}
int QSP_get_model_fuzzy_value(QSP_SESSION, uint32_t, uint32_t*)
{
    return Bench::kRefused;
}
int QSP_retrieve_codesets_by_model_total(QSP_SESSION, uint32_t, uint32_t*)
{
    return Bench::kRefused;
}
int QSP_retrieve_codesets_by_brand_total(QSP_SESSION, uint32_t, uint32_t*)
{
    return Bench::kRefused;
}
int QSP_get_codeset_name(QSP_SESSION, uint32_t, const char**)
{
    return Bench::kRefused;
}
int QSP_osm_retrieve_test_keys_total(QSP_SESSION, const char*, const char*, uint32_t*)
{
    return Bench::kRefused;
}
int QSP_osm_get_first_test_key(QSP_SESSION, int32_t*)
{
    return Bench::kRefused;
}
int QSP_osm_get_next_test_key(QSP_SESSION, int32_t*)
{
    return Bench::kRefused;
}
int QSP_osm_get_current_codeset_name(QSP_SESSION, const char**)
{
    return Bench::kRefused;
}
int QSP_osm_report_test_result(QSP_SESSION, int32_t, int32_t*)
{
    return Bench::kRefused;
}
int QSP_osm_retrieve_codesets_total(QSP_SESSION, uint32_t*)
{
    return Bench::kRefused;
}
int QSP_osm_get_codesets_tested(QSP_SESSION, uint32_t*)
{
    return Bench::kRefused;
}
int QSP_send_codeset_by_name(QSP_SESSION, const char*, uint32_t)
{
    return Bench::kRefused;
}
int QSP_discover_retrieve_info_cec(QSP_SESSION, uint32_t, uint16_t, const char*)
{
    return Bench::kRefused;
}
int QSP_discover_retrieve_info_edid(QSP_SESSION, const uint8_t*, uint32_t)
{
    return Bench::kRefused;
}
int QSP_discover_device_info_get(QSP_SESSION, const char**, const char**, const char**, uint8_t*)
{
    return Bench::kRefused;
}
