// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <gtest/gtest.h>
#include <json/value.h>

#include "qsp/qsp.h"
#include "support/TemporaryRoot.h"

/// The library, started, with a session, over a cloud that answers as written here.
class ScriptedCloud : public testing::Test {
protected:
    ScriptedCloud();
    ~ScriptedCloud() override;

    /// As the library takes it; `code` of the answers is what the post comes back with.
    static int Post(const char* body, std::uint32_t bodyLength, char** response,
                    std::uint32_t* responseLength, const char* url);
    static std::string Config() { return "/qsp.conf"; }
    void Configure(const std::string& text) const { m_root.Write("/qsp.conf", text); }

    /// By operation; an operation without one gets status 44.
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
