// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

namespace QSP {

/// The post function of `uei_set_callback_httppost`: gives 0 and a response from malloc, or a
/// reason code.
using PostFunction = int (*)(const char* body, std::uint32_t bodyLength, char** response,
                             std::uint32_t* responseLength, const char* url);

/// Sends requests to the cloud; docs/cloud.md describes the objects of both sides. A call blocks
/// for as long as its post.
class CloudLink {
public:
    void SetUrl(std::string url) { m_url = std::move(url); }
    void SetVector(std::string vector) { m_vector = std::move(vector); }
    void SetIdentity(std::string identity) { m_identity = std::move(identity); }
    void SetPost(PostFunction post) { m_post = post; }

    /// Adds the members that every request has and posts it. If this returns 0, `answer` is an
    /// object with status 0. Otherwise the post's code, the cloud's status, or one of `Reason`.
    int Ask(const char* operation, Json::Value request, Json::Value& answer) const;

private:
    std::string m_url;
    std::string m_vector;
    std::string m_identity;
    PostFunction m_post = nullptr;
};

/// Reads a member that is a text without a zero in it; false for anything else.
bool ReadText(const Json::Value& object, const char* member, std::string& text);
/// Reads a member that is an array of such texts.
bool ReadTexts(const Json::Value& object, const char* member, std::vector<std::string>& texts);
/// Reads a member that is a whole number from 0 to `most`.
bool ReadNumber(const Json::Value& object, const char* member, std::uint32_t most,
                std::uint32_t& number);

}  // namespace QSP
