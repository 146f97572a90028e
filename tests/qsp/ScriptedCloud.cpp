// SPDX-License-Identifier: Apache-2.0

#include "ScriptedCloud.h"

#include <cstdlib>
#include <cstring>

#include "orlu/StrictJson.h"

ScriptedCloud* ScriptedCloud::s_current = nullptr;

ScriptedCloud::ScriptedCloud()
{
    s_current = this;
    Configure(R"({"cloudUrl": "http://127.0.0.1:1/qsp/v1"})");
    QSP_stop();
    QSP_set_online_vector("vector");
    QSP_set_online_unique_id("identity");
    EXPECT_EQ(QSP_start(Config().c_str()), 0);
    EXPECT_EQ(uei_set_callback_httppost(&Post), 0);
    EXPECT_EQ(m_posts, 0U);
    m_answers["version"] = R"({"status": 0, "version": "1"})";
    EXPECT_EQ(QSP_get_lookup_session(Config().c_str(), 2, &m_session), 0);
    m_posts = 0;
}

ScriptedCloud::~ScriptedCloud()
{
    QSP_stop();
    s_current = nullptr;
}

int ScriptedCloud::Post(const char* body, std::uint32_t bodyLength, char** response,
                        std::uint32_t* responseLength, const char* url)
{
    ScriptedCloud& cloud = *s_current;
    ++cloud.m_posts;
    cloud.m_url = url;
    std::string error;
    cloud.m_request = Orlu::ParseStrictJson({body, bodyLength}, error).value();
    EXPECT_EQ(std::strlen(body), bodyLength);
    if (cloud.m_postCode != 0) {
        return cloud.m_postCode;
    }
    const auto found = cloud.m_answers.find(cloud.m_request["operation"].asString());
    const std::string answer = found == cloud.m_answers.end() ? R"({"status": 44})" : found->second;
    *responseLength = static_cast<std::uint32_t>(answer.size());
    *response = static_cast<char*>(std::malloc(answer.size() + 1));
    std::memcpy(*response, answer.c_str(), answer.size() + 1);
    return 0;
}
