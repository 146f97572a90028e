// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "orlu/Runtime.h"

namespace Orlu {

/// Makes `queue` this thread's `CurrentTaskQueue` during its lifetime. For runtimes.
class CurrentQueueScope {
public:
    explicit CurrentQueueScope(TaskQueueIF* queue);
    ~CurrentQueueScope();
    CurrentQueueScope(const CurrentQueueScope&) = delete;
    CurrentQueueScope& operator=(const CurrentQueueScope&) = delete;

private:
    TaskQueueIF* m_before;
};

}  // namespace Orlu
