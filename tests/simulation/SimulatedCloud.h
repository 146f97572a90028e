// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <string_view>

#include "cloud/CloudService.h"
#include "support/VirtualRuntime.h"

namespace Simulation {

/// The real cloud with the small catalogue, without a network: it replaces the posts through
/// libcurl. A post blocks its task for as long as the condition says, while all other tasks run.
class SimulatedCloud {
public:
    enum class Condition { kFair, kDown, kSlow, kFailing, kGarbled };

    /// Builds the catalogue from files of this machine. To be called before a root folder is set.
    static void BuildCatalogue();

    SimulatedCloud(VirtualRuntime& runtime, std::mt19937_64& random);
    ~SimulatedCloud();
    SimulatedCloud(const SimulatedCloud&) = delete;
    SimulatedCloud& operator=(const SimulatedCloud&) = delete;

    void Become(Condition condition) { m_condition = condition; }
    bool IsPosting() const { return m_posting; }
    std::uint64_t Posts() const { return m_posts; }

    /// Called when a request has been sent and its task is blocked.
    std::function<void()> onStandstill;

    static SimulatedCloud* Current() { return s_current; }
    /// 0 with the answer, or a reason code of the library.
    int Post(std::string_view body, std::string& answer);

private:
    std::uint32_t Draw(std::uint32_t most) { return static_cast<std::uint32_t>(m_random() % most); }

    static inline SimulatedCloud* s_current = nullptr;
    VirtualRuntime& m_runtime;
    std::mt19937_64& m_random;
    Cloud::CloudService m_service;
    Condition m_condition = Condition::kFair;
    bool m_posting = false;
    std::uint64_t m_posts = 0;
};

}  // namespace Simulation
