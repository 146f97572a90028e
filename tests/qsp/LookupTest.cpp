// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "ScriptedCloud.h"

namespace {

constexpr int kBadAnswer = 205;

std::string s_logged;

int Log(const char* text)
{
    s_logged += text;
    return 0;
}

class LookupTest : public ScriptedCloud {
protected:
    int RetrieveBrands() { return QSP_retrieve_brands_total(m_session, "TV", "", 1, &m_total); }
    std::uint32_t m_total = 99;
    const char* m_name = nullptr;
};

TEST_F(LookupTest, WalksFromTypesToCodesets)
{
    m_answers = {{"deviceTypes", R"({"status": 0, "types": ["Amplifier", "TV"]})"},
                 {"brands", R"({"status": 0, "brands": ["Acme", "Äon"]})"},
                 {"models", R"({"status": 0, "models": [{"name": "M1", "value": 87}]})"},
                 {"modelCodesets", R"({"status": 0, "codesets": ["T0001"]})"},
                 {"brandCodesets", R"({"status": 0, "codesets": ["T0002", "T0003"]})"}};
    EXPECT_EQ(QSP_retrieve_device_types_total(m_session, &m_total), 0);
    EXPECT_EQ(m_total, 2U);
    EXPECT_EQ(QSP_get_device_type_name(m_session, 1, &m_name), 0);
    EXPECT_EQ(QSP_retrieve_brands_total(m_session, m_name, "a", 1, &m_total), 0);
    EXPECT_EQ(m_request["prefix"], "a");
    EXPECT_EQ(m_request["identity"], "identity");
    EXPECT_EQ(m_request["vector"], "vector");
    EXPECT_EQ(m_url, "http://127.0.0.1:1/qsp/v1");
    EXPECT_EQ(QSP_get_brand_name(m_session, 1, &m_name), 0);
    EXPECT_STREQ(m_name, "Äon");

    EXPECT_EQ(QSP_option_set_minimum_fuzzy_threshold(m_session, 60), 0);
    EXPECT_EQ(QSP_retrieve_models_total(m_session, 1, "m", 1, &m_total), 0);
    EXPECT_EQ(m_request["type"], "TV");
    EXPECT_EQ(m_request["brand"], "Äon");
    EXPECT_EQ(m_request["threshold"], 60);
    std::uint32_t value = 0;
    EXPECT_EQ(QSP_get_model_fuzzy_value(m_session, 0, &value), 0);
    EXPECT_EQ(value, 87U);

    EXPECT_EQ(QSP_retrieve_codesets_by_model_total(m_session, 0, &m_total), 0);
    EXPECT_EQ(m_request["model"], "M1");
    EXPECT_EQ(QSP_retrieve_codesets_by_brand_total(m_session, 0, &m_total), 0);
    EXPECT_EQ(m_request["brand"], "Acme");
    EXPECT_EQ(QSP_get_codeset_name(m_session, 1, &m_name), 0);
    EXPECT_STREQ(m_name, "T0003");
    EXPECT_NE(QSP_get_codeset_name(m_session, 2, &m_name), 0);
    EXPECT_NE(QSP_get_model_name(m_session, 1, &m_name), 0);
    EXPECT_NE(QSP_retrieve_models_total(m_session, 2, "", 1, &m_total), 0);
    EXPECT_EQ(m_total, 0U);
    EXPECT_NE(QSP_retrieve_codesets_by_model_total(m_session, UINT32_MAX, &m_total), 0);
}

TEST_F(LookupTest, ARetrievalWithoutResultLeavesAnEmptyList)
{
    struct {
        const char* answer;
        int postCode;
        int result;
    } const rows[] = {
        {R"({"status": 44})", 0, 44},
        {R"({"status": 0, "brands": []})", 0, 44},
        {R"({"status": 227})", 0, 227},
        {"", 14, 14},
        {"", 0, kBadAnswer},
        {"<html>", 0, kBadAnswer},
        {"[]", 0, kBadAnswer},
        {"{}", 0, kBadAnswer},
        {R"({"status": "0", "brands": ["Acme"]})", 0, kBadAnswer},
        {R"({"status": 99999999999, "brands": ["Acme"]})", 0, kBadAnswer},
        {R"({"status": 0})", 0, kBadAnswer},
        {R"({"status": 0, "brands": {"Acme": 1}})", 0, kBadAnswer},
        {R"({"status": 0, "brands": ["Acme", 7]})", 0, kBadAnswer},
        {R"({"status": 0, "brands": ["Ac\u0000me"]})", 0, kBadAnswer},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.answer);
        m_postCode = 0;
        m_answers["brands"] = R"({"status": 0, "brands": ["Acme"]})";
        EXPECT_EQ(RetrieveBrands(), 0);
        m_postCode = row.postCode;
        m_answers["brands"] = row.answer;
        EXPECT_EQ(RetrieveBrands(), row.result);
        EXPECT_EQ(m_total, 0U);
        EXPECT_NE(QSP_get_brand_name(m_session, 0, &m_name), 0);
    }
    m_postCode = 0;
    m_answers["brands"] = R"({"status": 0, "brands": ["Acme"]})";
    EXPECT_EQ(RetrieveBrands(), 0);
    for (const char* model : {"7", R"({"name": "M"})", R"({"name": "M", "value": 101})",
                              R"({"name": "M", "value": -1})", R"({"name": 1, "value": 1})"}) {
        m_answers["models"] = R"({"status": 0, "models": [)" + std::string(model) + "]}";
        EXPECT_EQ(QSP_retrieve_models_total(m_session, 0, "", 1, &m_total), kBadAnswer) << model;
    }
}

TEST_F(LookupTest, RefusesCallsOutOfOrder)
{
    QSP_set_host_log_function(&Log);
    QSP_set_log_level(50);
    const QSP_SESSION session = m_session;
    EXPECT_NE(QSP_retrieve_device_types_total(nullptr, &m_total), 0);
    EXPECT_EQ(s_logged, "QSP_retrieve_device_types_total failed, reason code 201");
    EXPECT_NE(QSP_retrieve_device_types_total(session, nullptr), 0);
    EXPECT_NE(QSP_retrieve_brands_total(session, nullptr, "", 1, &m_total), 0);
    EXPECT_EQ(QSP_release_lookup_session(session), 0);
    EXPECT_NE(QSP_release_lookup_session(session), 0);
    EXPECT_NE(QSP_retrieve_device_types_total(session, &m_total), 0);

    EXPECT_EQ(m_posts, 0U);
    m_postCode = 12;
    EXPECT_EQ(QSP_get_lookup_session("", 2, &m_session), 12);
    m_postCode = 0;
    EXPECT_EQ(QSP_get_lookup_session("", 2, &m_session), 0);
    m_posts = 0;
    EXPECT_EQ(QSP_stop(), 0);
    EXPECT_NE(QSP_retrieve_device_types_total(m_session, &m_total), 0);
    EXPECT_NE(QSP_get_lookup_session("", 2, &m_session), 0);
    EXPECT_EQ(QSP_start(Config().c_str()), 0);
    EXPECT_NE(QSP_retrieve_device_types_total(m_session, &m_total), 0);
    EXPECT_EQ(m_posts, 0U);
    QSP_set_host_log_function(nullptr);
}

TEST_F(LookupTest, DoesNotStartWithoutAConfiguration)
{
    for (const char* text : {"", "[]", "{}", R"({"cloudUrl": 1})", R"({"cloudUrl": "cloud"})",
                             R"({"cloudUrl": "http://a"} x)"}) {
        Configure(text);
        EXPECT_NE(QSP_start(Config().c_str()), 0) << text;
        EXPECT_NE(QSP_get_lookup_session("", 2, &m_session), 0);
    }
    EXPECT_NE(QSP_start("/"), 0);
    EXPECT_NE(QSP_start("/no/such/file"), 0);
    EXPECT_NE(QSP_start(nullptr), 0);
}

}  // namespace
