// SPDX-License-Identifier: Apache-2.0

#include "support/World.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "datacollection/DataCollectionClient.h"
#include "orlu/MfgData.h"

World::World() : effects(runtime), lpm(effects), qsp(effects), portico(effects)
{
    MfgData::Reload();
    DataCollection::DataCollectionClient::Reload();
}

World::~World()
{
    service.Server().Stop();
}

void World::Start()
{
    EXPECT_TRUE(service.Manager().CreateAllTasks());
    service.Manager().StartAllTasks();
    runtime.RunUntilIdle();
    effects.Take();
}

void World::PutProductValues()
{
    std::filesystem::create_directories(root.Path() + kStaging);
    portico.Put("/payload/cfg", std::string(R"({"stagingDirectory":")") + kStaging + "\"}");
    portico.Put("/system/info", R"({"serialNumber":"A1234"})");
    portico.Put("/network/status", R"({"isPrimaryUp":true})");
    runtime.RunUntilIdle();
}
