// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Bench {

/// The value below which `share` (0 to 1) of the samples lie. There must be a sample.
double Quantile(std::vector<double> samples, double share);

inline double Median(std::vector<double> samples)
{
    return Quantile(std::move(samples), 0.5);
}

/// The goal of a figure: for the ratio to the floor if there is one, else for the value.
struct Goal {
    enum class Kind { AtMost, AtLeast };
    Kind kind;
    double value;
};

/// One row of the table.
struct Figure {
    std::string what;
    std::string unit;
    int decimals = 0;
    double service = 0;
    std::optional<double> floor;
    std::optional<double> ratio;
    std::optional<Goal> goal;

    bool IsMet() const;
};

/// A row from one value for each round. The ratio is the median of the rounds' ratios.
Figure CompareRounds(const std::string& what, const std::string& unit, int decimals,
                     const std::vector<double>& service, const std::vector<double>& floor,
                     std::optional<Goal> goal = std::nullopt);

/// A row for memory in KiB, whose goal is a growth of at most 64 KiB.
Figure GrowthFigure(const std::string& what, std::uint64_t before, std::uint64_t after);

/// The rows as a table in Markdown.
std::string RenderTable(const std::vector<Figure>& figures);

}  // namespace Bench
