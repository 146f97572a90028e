// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ProtoBufs/ciStart.pb.h"
#include "datacollection/DataCollectionClient.h"
#include "orlu/DPrint.h"
#include "support/Effects.h"
#include "support/LogCapture.h"
#include "support/ScriptedPortico.h"
#include "support/TemporaryRoot.h"

namespace DataCollection {

/// A product without a configuration file, a local API, and the log of a client.
class CollectionFixture : public testing::Test {
protected:
    CollectionFixture()
    {
        DataCollectionClient::Reload();
        DPrint::SetLevel(4);
    }
    ~CollectionFixture() override
    {
        task->Stop();
        DPrint::SetLevel(3);
    }

    void Configure(const std::string& properties)
    {
        root.Write("/opt/Orlu/etc/DataCollection.json", "{\"properties\": [" + properties + "]}");
    }

    std::string TakeLog() { return capture.Take(); }
    bool Logged(const std::string& line) const
    {
        return ("\n" + capture.Lines()).find("\n" + line + "\n") != std::string::npos;
    }

    /// All effects and log lines since the last call.
    std::string Run()
    {
        runtime.RunUntilIdle();
        return effects.Take();
    }

    /// Records each change that a client reports, as "enabled 1".
    Callback<bool> Noting(const std::string& what)
    {
        return [this, what](bool value) {
            effects.Add(what + " " + std::to_string(value));
        };
    }

    static std::shared_ptr<ciStart> Record(const std::string& brand)
    {
        auto record = std::make_shared<ciStart>();
        record->set_action("ACTION_START");
        record->set_devicetype("DEVICE_TYPE_TV");
        record->set_devicebrand(brand);
        record->set_inputroute("");
        record->set_databasever("1.2");
        return record;
    }

    LogCapture capture{[](std::string_view logger) {
        return logger.starts_with("DataCollection");
    }};
    TemporaryRoot root;
    VirtualRuntime runtime;
    Effects effects{runtime};
    ScriptedPortico portico{effects};
    std::shared_ptr<NotifyTargetTaskIF> task = IL::CreateTask("task", "");
};

}  // namespace DataCollection
