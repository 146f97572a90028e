// SPDX-License-Identifier: Apache-2.0

#include "orlu/ConditionSemaphore.h"

#include "orlu/DPrint.h"

ConditionSemaphore::ConditionSemaphore(unsigned count)
    : m_semaphore(Orlu::Runtime().CreateSemaphore(count))
{
}

ConditionSemaphore::~ConditionSemaphore() = default;

int ConditionSemaphore::Wait()
{
    // The lines that this task has gathered would otherwise appear only after the wait.
    DPrint::Flush();
    m_semaphore->Wait();
    return 0;
}

void ConditionSemaphore::Signal()
{
    m_semaphore->Signal();
}
