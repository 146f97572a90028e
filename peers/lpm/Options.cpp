// SPDX-License-Identifier: Apache-2.0

#include "lpm/Options.h"

#include "common/CommandLine.h"
#include "infrared/RenderText.h"

#include <CLI/CLI.hpp>

#include <utility>

namespace Lpm {

namespace {

constexpr const char* kSimulated = "sim";
constexpr const char* kLircPrefix = "lirc:";

/// Changes `sim` to the empty text and `lirc:DEVICE` to the device. Returns what is wrong, as CLI11
/// expects it of a validator: empty if nothing is.
std::string ParseEmitter(std::string& text)
{
    if (text == kSimulated) {
        text.clear();
        return {};
    }
    const std::string prefix = kLircPrefix;
    if (!text.starts_with(prefix) || text.size() == prefix.size()) {
        return "sim or lirc:DEVICE is asked for";
    }
    text.erase(0, prefix.size());
    return {};
}

/// The same for the CEC bus, where a device has no prefix.
std::string ParseCec(std::string& text)
{
    if (text == kSimulated) {
        text.clear();
        return {};
    }
    return text.empty() ? "sim or a device is asked for" : std::string();
}

void AddOptions(CLI::App& app, Options& options)
{
    app.set_version_flag("--version", std::string("LpmService ") + TRELLAN_VERSION);
    app.add_option("--record", options.record,
                   "Append what is received to this file, a JSON line each")
        ->type_name("FILE");
    app.add_option("--script", options.script, "Answer otherwise than normal: {\"replies\": [...]}")
        ->type_name("FILE");
    app.add_option("--codesets", options.codesets,
                   "Hold the code sets of this folder (T2051.bin) at start")
        ->type_name("DIR");
    app.add_option("--devices", options.devices,
                   "The devices in front of the blaster and on the CEC bus")
        ->type_name("FILE");
    app.add_option("--emit", options.lirc, "Where the light goes: sim (default) or lirc:/dev/lirc0")
        ->transform(CLI::Validator(ParseEmitter, "sim|lirc:DEVICE"))
        ->type_name("");
    app.add_option("--cec", options.cec, "The CEC bus: sim (default) or /dev/cec0")
        ->transform(CLI::Validator(ParseCec, "sim|DEVICE"))
        ->type_name("");
    auto* render = app.add_option("--render", options.render, "Print one press as pulses and end")
                       ->type_name("PROTOCOL:SCANCODE");
    app.add_option("--toggle", options.toggle, "The toggle bit of the press")
        ->check(CLI::IsMember({"0", "1"}))
        ->type_name("0|1")
        ->needs(render);
    app.add_option("--repeats", options.repeats, "Repeats behind the press")
        ->check(CLI::Range(0U, kMaximumRenderedRepeats))
        ->type_name("N")
        ->needs(render);
}

}  // namespace

std::optional<Options> ParseOptions(int argc, const char* const* argv, int& exitCode)
{
    Options options;
    CLI::App app(
        "The microcontroller of the product: blaster, CEC, and what stands in front of them",
        "LpmService");
    AddOptions(app, options);
    if (!Peers::ParseCommandLine(app, argc, argv, exitCode)) {
        return std::nullopt;
    }
    return options;
}

}  // namespace Lpm
