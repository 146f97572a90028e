// SPDX-License-Identifier: Apache-2.0

#include "support/World.h"

#include <filesystem>
#include <utility>

#include "datacollection/DataCollectionClient.h"
#include "orlu/DPrint.h"
#include "orlu/MfgData.h"

namespace {

std::string& CollectedLog()
{
    static std::string log;
    return log;
}

}  // namespace

World::World() : effects(runtime), lpm(effects), qsp(effects), portico(effects)
{
    MfgData::Reload();
    DataCollection::DataCollectionClient::Reload();
    CollectedLog().clear();
    DPrint::SetSink(&World::Collect);
}

World::~World()
{
    house.Server().Stop();
    DPrint::SetSink(nullptr);
}

void World::Start()
{
    house.Manager().CreateAllTasks();
    house.Manager().StartAllTasks();
    runtime.RunUntilIdle();
    effects.Take();
}

void World::KnowProduct()
{
    std::filesystem::create_directories(root.Path() + kStaging);
    portico.Put("/payload/cfg", std::string(R"({"stagingDirectory":")") + kStaging + "\"}");
    portico.Put("/system/info", R"({"serialNumber":"A1234"})");
    portico.Put("/network/status", R"({"isPrimaryUp":true})");
    runtime.RunUntilIdle();
}

std::string World::TakeLog()
{
    return std::exchange(CollectedLog(), {});
}

void World::Collect(int level, std::string_view logger, std::string_view text)
{
    CollectedLog() +=
        std::to_string(level) + " " + std::string(logger) + ": " + std::string(text) + "\n";
}
