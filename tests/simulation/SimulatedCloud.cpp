// SPDX-License-Identifier: Apache-2.0

#include "simulation/SimulatedCloud.h"

#include <cstdlib>
#include <cstring>

#include "cloud/OwnCatalogue.h"
#include "uei/HttpPost.h"

namespace Simulation {

namespace {

constexpr std::uint32_t kTimeOutMs = 55'000;
constexpr std::uint32_t kConnectMs = 15'000;

enum Reason : int { kUnreachable = 7, kStatus = 17, kTimedOut = 20 };

/// One for the process: opening it takes most of the time of a run.
Cloud::Catalogue& TheCatalogue()
{
    static const auto catalogue = Cloud::OpenOwn();
    return *catalogue;
}

}  // namespace

void SimulatedCloud::BuildCatalogue()
{
    TheCatalogue();
}

SimulatedCloud::SimulatedCloud(VirtualRuntime& runtime, std::mt19937_64& random)
    : m_runtime(runtime), m_random(random), m_service(TheCatalogue())
{
    s_current = this;
}

SimulatedCloud::~SimulatedCloud()
{
    s_current = nullptr;
}

int SimulatedCloud::Post(std::string_view body, std::string& answer)
{
    ++m_posts;
    m_posting = true;
    m_runtime.Advance(1);
    if (onStandstill) {
        onStandstill();
    }
    const auto condition = m_condition;
    const auto delay = condition == Condition::kSlow   ? Draw(kTimeOutMs + 10'000)
                       : condition == Condition::kDown ? Draw(kConnectMs)
                                                       : Draw(40);
    m_runtime.Advance(std::min(delay, kTimeOutMs));
    m_posting = false;
    if (condition == Condition::kDown) {
        return kUnreachable;
    }
    if (condition == Condition::kFailing) {
        return kStatus;
    }
    if (delay > kTimeOutMs) {
        return kTimedOut;
    }
    answer = m_service.Answer(body).body;
    if (condition == Condition::kGarbled) {
        answer.resize(Draw(static_cast<std::uint32_t>(answer.size()) + 1));
    }
    return 0;
}

}  // namespace Simulation

namespace TrellanService::Http {

void End() {}

void Begin() {}

int Post(const char* body, std::uint32_t bodyLength, char** response, std::uint32_t* responseLength,
         const char* /*url*/, bool held, bool& transferFailed)
{
    auto* const cloud = Simulation::SimulatedCloud::Current();
    if (held || cloud == nullptr) {
        return 14;
    }
    std::string answer;
    const int code = cloud->Post({body, bodyLength}, answer);
    transferFailed = code != 0;
    if (code == 0) {
        *responseLength = static_cast<std::uint32_t>(answer.size());
        *response = static_cast<char*>(std::malloc(answer.size() + 1));
        std::memcpy(*response, answer.c_str(), answer.size() + 1);
    }
    return code;
}

}  // namespace TrellanService::Http
