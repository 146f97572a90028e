// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "cloud/Catalogue.h"
#include "cloud/builder/CatalogueWriter.h"
#include "cloud/builder/SourceText.h"
#include "orlu/SystemUtils.h"

namespace Cloud {

/// Builds the small catalogue into a file and returns its path.
inline std::string BuildOwn()
{
    const std::string folder = OWN_SOURCE_FOLDER;
    std::string path = testing::TempDir() + "own." + std::to_string(getpid());
    const auto text = SystemUtils::ReadFile(folder + "/own.json");
    Collection collection;
    std::string why;
    EXPECT_TRUE(AddSource(text.value_or(""), folder, collection, why)) << why;
    EXPECT_TRUE(WriteCatalogue(collection, path, why)) << why;
    return path;
}

/// Opens the small catalogue. Its file has been removed already.
inline std::unique_ptr<Catalogue> OpenOwn()
{
    const std::string path = BuildOwn();
    std::string why;
    auto catalogue = Catalogue::Open(path, why);
    EXPECT_TRUE(catalogue) << why;
    std::remove(path.c_str());
    return catalogue;
}

}  // namespace Cloud
