// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/Figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include <fmt/format.h>

namespace Bench {

namespace {

constexpr std::size_t kColumns = 6;
using Row = std::array<std::string, kColumns>;

std::string Show(std::optional<double> value, int decimals)
{
    return value ? fmt::format("{:.{}f}", *value, decimals) : "";
}

std::string ShowGoal(const Figure& figure)
{
    if (!figure.goal) {
        return "";
    }
    return fmt::format("{} {:g}", figure.goal->kind == Goal::Kind::AtMost ? "at most" : "at least",
                       figure.goal->value);
}

Row RowOf(const Figure& figure)
{
    return {fmt::format("{}, {}", figure.what, figure.unit),
            Show(figure.service, figure.decimals),
            Show(figure.floor, figure.decimals),
            Show(figure.ratio, 2),
            ShowGoal(figure),
            !figure.goal     ? ""
            : figure.IsMet() ? "yes"
                             : "no"};
}

}  // namespace

double Quantile(std::vector<double> samples, double share)
{
    const auto rank = static_cast<std::ptrdiff_t>(share * static_cast<double>(samples.size()));
    const auto last = static_cast<std::ptrdiff_t>(samples.size()) - 1;
    const auto place = samples.begin() + std::min(rank, last);
    std::nth_element(samples.begin(), place, samples.end());
    return *place;
}

bool Figure::IsMet() const
{
    if (!goal) {
        return true;
    }
    const double value = ratio.value_or(service);
    return goal->kind == Goal::Kind::AtMost ? value <= goal->value : value >= goal->value;
}

Figure CompareRounds(const std::string& what, const std::string& unit, int decimals,
                     const std::vector<double>& service, const std::vector<double>& floor,
                     std::optional<Goal> goal)
{
    std::vector<double> ratios;
    std::transform(service.begin(), service.end(), floor.begin(), std::back_inserter(ratios),
                   [](double ours, double least) { return ours / least; });
    return {what, unit, decimals, Median(service), Median(floor), Median(ratios), goal};
}

Figure GrowthFigure(const std::string& what, std::uint64_t before, std::uint64_t after)
{
    constexpr double kMostKiB = 64;
    const double growth = static_cast<double>(after) - static_cast<double>(before);
    return {what, "KiB", 0, growth, {}, {}, Goal{Goal::Kind::AtMost, kMostKiB}};
}

std::string RenderTable(const std::vector<Figure>& figures)
{
    std::vector<Row> rows = {{"What", "service", "floor", "ratio", "goal", "met"}};
    std::transform(figures.begin(), figures.end(), std::back_inserter(rows), RowOf);
    std::array<std::size_t, kColumns> widths{};
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < kColumns; ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string table;
    for (std::size_t line = 0; line < rows.size(); ++line) {
        for (std::size_t i = 0; i < kColumns; ++i) {
            table += fmt::format("| {:<{}} ", rows[line][i], widths[i]);
        }
        table += "|\n";
        if (line == 0) {
            for (const auto width : widths) {
                table += fmt::format("|{:-<{}}", "", width + 2);
            }
            table += "|\n";
        }
    }
    return table;
}

}  // namespace Bench
