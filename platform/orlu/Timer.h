// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "orlu/Task.h"

/// A timer whose callback runs on one task. All operations are called on that task.
///
/// A timer keeps deadlines, not delays: if it is started again from its own callback, it counts
/// from the time at which that callback was due, so that a chain of 10 ms steps does not drift with
/// the load. At most 100 ms are made up for. After `Stop` it counts from now.
class APTimer {
public:
    /// The name is for logs.
    static std::shared_ptr<APTimer> Create(NotifyTargetTaskIF* task, const std::string& name);

    /// Milliseconds to the first call, and between the later calls; 0 as the second means one call.
    /// Takes effect with the next `Start`.
    virtual void SetTimeouts(std::uint32_t firstMs, std::uint32_t repeatMs) = 0;

    /// Arms the timer; a timer that was armed is armed anew.
    virtual void Start(std::function<void()> callback) = 0;

    /// No call comes after this, not even one that is already queued.
    virtual void Stop() = 0;

    /// `Stop`, and every later `Start` is ignored.
    virtual void Shutdown() = 0;

    virtual ~APTimer() = default;
};
