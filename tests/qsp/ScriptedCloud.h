// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <gtest/gtest.h>
#include <json/value.h>

#include "qsp/qsp.h"
#include "support/TemporaryRoot.h"

/// The started library with a session, and a scripted cloud.
class ScriptedCloud : public testing::Test {
protected:
    ScriptedCloud();
    ~ScriptedCloud() override;

    /// The post function of the library. The answer's `code` is its result.
    static int Post(const char* body, std::uint32_t bodyLength, char** response,
                    std::uint32_t* responseLength, const char* url);
    static std::string Config() { return "/qsp.conf"; }
    void Configure(const std::string& text) const { m_root.Write("/qsp.conf", text); }

    /// By operation. An operation without an entry gets status 44.
    std::map<std::string, std::string> m_answers;
    int m_postCode = 0;
    Json::Value m_request;
    std::string m_url;
    unsigned m_posts = 0;
    QSP_SESSION m_session = nullptr;

private:
    static ScriptedCloud* s_current;
    TemporaryRoot m_root;
};
