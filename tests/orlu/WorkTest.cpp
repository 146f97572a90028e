// SPDX-License-Identifier: Apache-2.0

#include "orlu/Work.h"

#include <array>
#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace {

using Orlu::Work;

/// Moves the work, runs it twice, and checks what it captured.
template <std::size_t kBytes>
void TryWork()
{
    const auto count = std::make_shared<int>(0);
    {
        Work work = [count, weight = std::array<char, kBytes>()] {
            *count += 1 + weight[0];
        };
        EXPECT_EQ(count.use_count(), 2);
        Work other = std::move(work);
        work = std::move(other);
        Work& same = work;
        work = std::move(same);
        work();
        work();
        EXPECT_EQ(*count, 2);
        EXPECT_EQ(count.use_count(), 2);
        work = [count] {
            *count = 10;
        };
        EXPECT_EQ(count.use_count(), 2) << "what was held before is gone";
        work();
        work = nullptr;
        EXPECT_EQ(count.use_count(), 1);
        work();
        EXPECT_EQ(*count, 10);
        work = [count, weight = std::array<char, kBytes>()] {
        };
    }
    EXPECT_EQ(count.use_count(), 1);
}

TEST(Work, IsHeldOnceWhateverItsSize)
{
    TryWork<1>();
    TryWork<32>();
    TryWork<33>();
    TryWork<500>();
}

TEST(Work, OfAnEmptyFunctionIsEmpty)
{
    EXPECT_FALSE(Work(std::function<void()>()));
    EXPECT_TRUE(Work(std::function<void()>([] {})));
}

}  // namespace
