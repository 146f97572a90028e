// SPDX-License-Identifier: Apache-2.0

// Measures the service's brand list, from reading the library's rows to the written file, compared
// with the same rows and the same file written directly. The library has its rows in memory, so
// that only the service is measured.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "benchmarks/Figures.h"
#include "benchmarks/MemoryLibrary.h"
#include "benchmarks/TemporaryFolder.h"
#include "orlu/DPrint.h"
#include "orlu/Task.h"
#include "qsp/qsp.h"
#include "uei/UEIInterface.h"

namespace Bench {

namespace {

using Clock = std::chrono::steady_clock;

/// A brand list needs the local API only for the folder of its file.
class Neighbours : public TrellanService::UEINeighboursIF {
public:
    TrellanService::Trellan_ServiceCodesetHandler& CodesetHandler() override
    {
        throw std::logic_error("a brand list needs no code set handler");
    }
    TrellanService::Trellan_ServiceBlasterProxy& BlasterProxy() override
    {
        throw std::logic_error("a brand list needs no blaster");
    }
    std::string StagingDirectory() override { return "/staging"; }
    std::string BrandListFileName() override { return "brandList0"; }
    void EndBurst() override {}
};

void Check(bool good, const char* what)
{
    if (!good) {
        throw std::runtime_error(std::string(what) + " failed");
    }
}

/// The limit of the list. The letter in which it is reached is cut off, as in the service.
constexpr std::uint32_t kMostBrands = 10'000;

void AppendRows(const char* prefix, std::string& text, std::uint32_t& count)
{
    std::uint32_t total = 0;
    if (QSP_retrieve_brands_total(nullptr, "TV", prefix, 1, &total) != 0) {
        return;
    }
    total = count < kMostBrands ? std::min(total, kMostBrands - count) : total;
    count += total;
    for (std::uint32_t i = 0; i < total; ++i) {
        const char* name = nullptr;
        QSP_get_brand_name(nullptr, i, &name);
        text.append(text.back() == '[' ? "\"" : ",\"").append(name).append("\"");
    }
}

void ReplaceFile(const std::string& text, const std::filesystem::path& path)
{
    const std::string temporary = path.string() + ".new";
    const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    Check(::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "write");
    Check(::fsync(file) == 0 && ::close(file) == 0, "fsync");
    Check(::rename(temporary.c_str(), path.c_str()) == 0, "rename");
    const int folder = ::open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    Check(::fsync(folder) == 0 && ::close(folder) == 0, "fsync of the folder");
}

void ListByHand(const std::filesystem::path& path)
{
    std::string text = "{\"brandList\":[";
    std::uint32_t count = 0;
    for (const std::string_view range : {"09", "az"}) {
        for (char first = range[0]; first <= range[1]; ++first) {
            const std::array<char, 2> prefix = {first, '\0'};
            AppendRows(prefix.data(), text, count);
        }
    }
    text += "]}";
    ReplaceFile(text, path);
}

std::string ReadText(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

template <class Work>
double Millis(Work work)
{
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double PeakKiB()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss);
}

/// The other sizes show how the time grows.
std::optional<Goal> GoalOf(std::size_t names)
{
    return names == kMostBrands ? std::optional(Goal{Goal::Kind::AtMost, 1.6}) : std::nullopt;
}

std::vector<Figure> Measure(std::size_t names, std::size_t rounds)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.Path() / "staging");
    ::setenv("ORLU_ROOT", folder.Path().c_str(), 1);
    MemoryLibrary::Fill(names);
    Neighbours neighbours;
    const auto task = IL::CreateTask("bench", "");
    TrellanService::UEIInterface engine(neighbours);
    Check(engine.Init(task.get(), {}) == 0, "the engine's start");
    TrellanServiceMessages::BrandListReq_t request;
    request.set_devicetype("DEVICE_TYPE_TV");
    request.set_filter(".");
    const auto list = [&engine, &request] {
        Check(engine.GetBrandList(request), "the list");
    };

    const double before = PeakKiB();
    list();
    const double taken = PeakKiB() - before;
    ListByHand(folder.Path() / "byHand");
    Check(ReadText(folder.Path() / "staging/brandList0") == ReadText(folder.Path() / "byHand"),
          "the comparison of the two files");

    std::vector<double> service;
    std::vector<double> floor;
    for (std::size_t round = 0; round < rounds; ++round) {
        service.push_back(Millis(list));
        floor.push_back(Millis([&folder] { ListByHand(folder.Path() / "byHand"); }));
    }
    task->Stop();
    task->Queue()->Join();
    const auto what = fmt::format("brand list of {} names to file", names);
    return {CompareRounds(what, "ms", 2, service, floor, GoalOf(names)),
            {what + ", peak memory on top", "KiB", 0, taken, {}, {}, {}}};
}

int Main(int argc, char** argv)
{
    CLI::App app("Measures a brand list beside the same list made by hand.", "BrandListBench");
    std::size_t names = 10'000;
    std::size_t rounds = 50;
    app.add_option("--names", names, "Brands in the library")->check(CLI::PositiveNumber);
    app.add_option("--rounds", rounds, "Lists of each kind")->check(CLI::PositiveNumber);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    DPrint::SetLevel(2);
    fmt::print("{}", RenderTable(Measure(names, rounds)));
    return 0;
}

}  // namespace

}  // namespace Bench

int main(int argc, char** argv)
{
    try {
        return Bench::Main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "BrandListBench: %s\n", error.what());
        return 1;
    }
}
