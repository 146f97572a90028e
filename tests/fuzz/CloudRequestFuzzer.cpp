// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <string>

#include "cloud/CloudService.h"

// For every body the answer can be read by the library and is within the limit.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static std::string why;
    static const auto catalogue = Cloud::Catalogue::Open(OWN_CATALOGUE, why);
    if (!catalogue) {
        __builtin_trap();
    }
    Cloud::CloudService service(*catalogue);
    const auto answer = service.Answer({reinterpret_cast<const char*>(data), size});
    if (answer.body.size() > Cloud::kAnswerBytes ||
        (answer.httpStatus == 200) != (answer.body.find("\"status\"") != std::string::npos)) {
        __builtin_trap();
    }
    return 0;
}
