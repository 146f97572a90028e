// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "orlu/Runtime.h"

/// A count on which a task can wait for another task.
class ConditionSemaphore {
public:
    explicit ConditionSemaphore(unsigned count);
    ~ConditionSemaphore();

    /// Blocks until the count is above 0, then takes one. Gives 0.
    int Wait();

    /// Any thread.
    void Signal();

private:
    std::unique_ptr<Orlu::SemaphoreIF> m_semaphore;
};
