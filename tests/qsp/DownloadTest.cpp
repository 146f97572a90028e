// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <string>
#include <vector>

#include "ScriptedCloud.h"

namespace {

constexpr int kBadAnswer = 205;

std::string s_delivered;
int s_result = 0;

int Deliver(const char* name, const std::uint8_t* data, std::uint32_t size)
{
    s_delivered = std::string(name) + ":" + std::string(data, data + size);
    return s_result;
}

class DownloadTest : public ScriptedCloud {
protected:
    DownloadTest()
    {
        s_delivered.clear();
        s_result = 0;
        void* table[14] = {};
        EXPECT_NE(UEI_register_ir_callbacks(table), 0);
        table[5] = reinterpret_cast<void*>(&Deliver);
        EXPECT_EQ(UEI_register_ir_callbacks(table), 0);
    }
    int Send(const std::string& answer)
    {
        s_delivered.clear();
        m_answers["codeset"] = answer;
        return QSP_send_codeset_by_name(m_session, "T0001", 2);
    }
    std::int32_t Report(bool worked)
    {
        std::int32_t status = 99;
        EXPECT_EQ(QSP_osm_report_test_result(m_session, worked ? 0 : 1, &status), 0);
        return status;
    }
    std::string Codeset()
    {
        const char* name = "";
        QSP_osm_get_current_codeset_name(m_session, &name);
        return name;
    }
    std::uint32_t m_total = 99;
    std::int32_t m_key = 0;
};

TEST_F(DownloadTest, DeliversTheBinaryBeforeItReturns)
{
    struct {
        const char* data;
        const char* delivered;
    } const rows[] = {
        {"", "T0001:"},         {"YQ==", "T0001:a"}, {"YWI=", "T0001:ab"},
        {"YWJj", "T0001:abc"},  {"YQ", ""},          {"YQ=", ""},
        {"YR==", ""},           {"YWJ=", ""},        {"Y===", ""},
        {"====", ""},           {"YQ==YQ==", ""},    {"YW Jj", ""},
        {"YWJjYW\\u0000=", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.data);
        const bool good = *row.delivered != '\0';
        EXPECT_EQ(Send(R"({"status": 0, "data": ")" + std::string(row.data) + "\"}"),
                  good ? 0 : kBadAnswer);
        EXPECT_EQ(s_delivered, row.delivered);
    }
    EXPECT_EQ(Send(R"({"status": 227})"), 227);
    EXPECT_EQ(Send(R"({"status": 0, "data": 5})"), kBadAnswer);
    EXPECT_EQ(s_delivered, "");
    s_result = 4;
    EXPECT_EQ(Send(R"({"status": 0, "data": "YQ=="})"), 4);
}

TEST_F(DownloadTest, LeadsThroughAGuidedTest)
{
    EXPECT_EQ(Report(true), -1);
    EXPECT_EQ(QSP_osm_retrieve_test_keys_total(m_session, "TV", "Acme", &m_total), 44);
    m_answers["guidedTest"] = R"({"status": 0, "codesets": [
        {"name": "T0001", "weight": 5, "signals": [[10, 1], [11, 1]]},
        {"name": "T0002", "weight": 2, "signals": [[10, 2], [11, 2]]}]})";
    EXPECT_EQ(QSP_osm_retrieve_test_keys_total(m_session, "TV", "Acme", &m_total), 0);
    EXPECT_EQ(m_total, 2U);
    EXPECT_EQ(QSP_osm_get_first_test_key(m_session, &m_key), 0);
    EXPECT_EQ(m_key, 10);
    EXPECT_EQ(Codeset(), "T0001");
    EXPECT_EQ(Report(false), 1);
    EXPECT_EQ(QSP_osm_get_codesets_tested(m_session, &m_total), 0);
    EXPECT_EQ(m_total, 1U);
    EXPECT_EQ(QSP_osm_get_next_test_key(m_session, &m_key), 0);
    EXPECT_EQ(Codeset(), "T0002");
    EXPECT_EQ(Report(true), 2);
    EXPECT_EQ(Codeset(), "T0002");
    EXPECT_EQ(QSP_osm_get_next_test_key(m_session, &m_key), 0);
    EXPECT_EQ(m_key, -1);
    EXPECT_EQ(QSP_osm_get_first_test_key(m_session, &m_key), 0);
    for (const int status : {1, 1, 1, 3, -1}) {
        EXPECT_EQ(Report(false), status);
    }
    EXPECT_NE(QSP_osm_report_test_result(m_session, 2, &m_key), 0);

    struct {
        const char* codesets;
        int result;
    } const rows[] = {
        {"[]", 44},
        {R"([{"name": "T1", "weight": 1, "signals": []}])", 44},
        {"{}", kBadAnswer},
        {R"([{"name": "T1", "weight": 1}])", kBadAnswer},
        {R"([{"name": "T1", "weight": 1.5, "signals": []}])", kBadAnswer},
        {R"([{"name": "T1", "weight": 1, "signals": [[1]]}])", kBadAnswer},
        {R"([{"name": "T1", "weight": 1, "signals": [["1", 2]]}])", kBadAnswer},
        {R"([{"name": "T1", "weight": 1, "signals": [[3000000000, 2]]}])", kBadAnswer},
    };
    for (const auto& row : rows) {
        m_answers["guidedTest"] = R"({"status": 0, "codesets": )" + std::string(row.codesets) + "}";
        EXPECT_EQ(QSP_osm_retrieve_test_keys_total(m_session, "TV", "", &m_total), row.result)
            << row.codesets;
        EXPECT_EQ(m_total, 0U);
        EXPECT_NE(QSP_osm_get_first_test_key(m_session, &m_key), 0);
    }
}

TEST_F(DownloadTest, DiscoversADevice)
{
    const char* type = nullptr;
    const char* brand = nullptr;
    const char* codeset = nullptr;
    std::uint8_t flag = 0;
    const auto get = [&type, &brand, &codeset, &flag, this] {
        return QSP_discover_device_info_get(m_session, &type, &brand, &codeset, &flag);
    };
    EXPECT_NE(get(), 0);
    const std::string device =
        R"({"status": 0, "type": "TV", "brand": "Acme", "codeset": "T9999",)";
    m_answers["discoverCec"] = device + R"("flag": 255})";
    EXPECT_EQ(QSP_discover_retrieve_info_cec(m_session, 0xF0, 4, "osd"), 0);
    EXPECT_EQ(m_request["vendorId"], 0xF0);
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(std::string(brand) + codeset + std::to_string(flag), "AcmeT9999255");

    m_answers["discoverEdid"] = device + R"("flag": 256})";
    const std::vector<std::uint8_t> edid(257, 0xFF);
    EXPECT_EQ(QSP_discover_retrieve_info_edid(m_session, edid.data(), 256), kBadAnswer);
    EXPECT_NE(get(), 0);
    EXPECT_EQ(m_request["edid"].asString(), std::string(340, '/') + "/w==");
    EXPECT_NE(QSP_discover_retrieve_info_edid(m_session, edid.data(), 257), 0);
    EXPECT_NE(QSP_discover_retrieve_info_edid(m_session, edid.data(), 0), 0);
}

}  // namespace
