// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

namespace QSP {

/// As `uei_set_callback_httppost` takes it: 0 and a response from malloc, or a reason code.
using PostFunction = int (*)(const char* body, std::uint32_t bodyLength, char** response,
                             std::uint32_t* responseLength, const char* url);

/// Asks the cloud; docs/cloud.md has both sides' objects. A call lasts as long as its post.
class CloudLink {
public:
    void SetUrl(std::string url) { m_url = std::move(url); }
    void SetVector(std::string vector) { m_vector = std::move(vector); }
    void SetIdentity(std::string identity) { m_identity = std::move(identity); }
    void SetPost(PostFunction post) { m_post = post; }

    /// Posts the request with the members that each request has; `answer` is an object with status
    /// 0 whenever this returns 0. Else the post's code, the cloud's status, or a reason of ours.
    int Ask(const char* operation, Json::Value request, Json::Value& answer) const;

private:
    std::string m_url;
    std::string m_vector;
    std::string m_identity;
    PostFunction m_post = nullptr;
};

/// A member that is text, without a zero in it; false for anything else.
bool ReadText(const Json::Value& object, const char* member, std::string& text);
/// A member that is an array of such texts.
bool ReadTexts(const Json::Value& object, const char* member, std::vector<std::string>& texts);
/// A member that is a whole number from 0 to `most`.
bool ReadNumber(const Json::Value& object, const char* member, std::uint32_t most,
                std::uint32_t& number);

}  // namespace QSP
