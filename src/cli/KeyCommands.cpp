// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <iterator>

#include "cli/Arguments.h"
#include "cli/CommandLog.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "keys/Trellan_ServiceKeyHandler.h"

namespace TrellanService {

namespace {

constexpr std::uint32_t kMinimumKeyDelay = 25;
constexpr std::uint32_t kSafeKeyDelay = 200;
constexpr std::uint32_t kDefaultMaxBlastTime = 120;

/// A callback that turns the blaster's reply into the answer of a command. Without a status byte it
/// answers 0: the state machine calls it with an empty text.
AsyncCallback<std::string> StatusCallback(const char* text,
                                          const AsyncCallback<std::string>& answer,
                                          NotifyTargetTaskIF& task)
{
    return {[text, answer](const std::string& reply) {
                const auto status = static_cast<std::uint8_t>(reply.size() > 1 ? reply[1] : 0);
                answer(fmt::format("{}0x{:02x}", text, status));
            },
            &task};
}

}  // namespace

int Trellan_ServiceCommandLine::HandleSendKey(const Arguments& arguments, const Answer& answer,
                                              std::string& /*response*/)
{
    if (arguments.empty()) {
        answer("No key provided.");
        return 1;
    }
    const auto key = ReadKey(arguments.front());
    if (!key || arguments.size() > 3) {
        answer("Invalid arg");
        return 1;
    }
    const bool named = arguments.size() > 1;
    const std::string codeset = named ? *std::next(arguments.begin()) : "";
    return OnServerTask([this, &answer, &arguments, &codeset, key, named] {
        std::uint16_t device = 0;
        if (named && !Trellan_ServiceCodesetHandler::devStringTodevNum(codeset, device)) {
            answer(codeset + "not a valid codeset");
            return;
        }
        auto& keyHandler = m_neighbours.KeyHandler();
        if (arguments.size() == 3) {
            keyHandler.sendSingleKey(
                codeset, *key,
                StatusCallback("Send key status ", answer, m_neighbours.ServerTask()));
            return;
        }
        // Forced: the command must reach the blaster even if that is not in step with the source
        // list.
        keyHandler.sendContinuousKey(codeset, *key, Answer(), true);
        answer("Key sent.");
    });
}

int Trellan_ServiceCommandLine::HandleEndKey(const Arguments& arguments, const Answer& answer,
                                             std::string& /*response*/)
{
    return OnServerTask([this, &arguments, &answer] {
        auto& keyHandler = m_neighbours.KeyHandler();
        if (arguments.empty()) {
            keyHandler.sendEndKey("", answer, true);
            return;
        }
        const auto status =
            StatusCallback("End key with status ", answer, m_neighbours.ServerTask());
        const Answer ended(
            [status](const std::string& reply) {
                kCommandLog.Put(3, "End key response received");
                status(reply);
            },
            &m_neighbours.ServerTask());
        keyHandler.sendEndKey(arguments.front(), ended, true);
    });
}

int Trellan_ServiceCommandLine::HandleKeyDelay(const Arguments& arguments, const Answer& answer,
                                               std::string& /*response*/)
{
    if (arguments.size() > 2) {
        answer("Incorrect usage");
        return 1;
    }
    return OnServerTask([this, &arguments, &answer] {
        auto& keyHandler = m_neighbours.KeyHandler();
        if (arguments.empty()) {
            const KeyTiming timing = keyHandler.GetKeyDelay();
            answer(fmt::format("Key delay: {}msec, Max blast: {}msec", timing.keyDelay,
                               timing.maxBlastTime));
            return;
        }
        std::uint32_t keyDelay = ReadUnsigned(arguments.front());
        const std::uint32_t maxBlastTime =
            arguments.size() > 1 ? ReadUnsigned(arguments.back()) : kDefaultMaxBlastTime;
        constexpr const char* kWarning =
            "msec (!!!WARNING!!! DELAY < 200MSEC MAY RESULT IN HARDWARE DAMAGE)";
        std::string text;
        // A long duty cycle can burn out the diode. The maximum blast time has no limit here.
        if (keyDelay < kMinimumKeyDelay) {
            keyDelay = kMinimumKeyDelay;
            text = fmt::format("Enforcing minimum key delay of {}{}", keyDelay, kWarning);
        } else if (keyDelay < kSafeKeyDelay) {
            text = fmt::format("Key delay setting now set to: {}{}", keyDelay, kWarning);
        }
        text += fmt::format("Setting key delay: {}msec, max blast {}", keyDelay, maxBlastTime);
        keyHandler.SetKeyDelay(keyDelay, maxBlastTime);
        answer(text);
    });
}

int Trellan_ServiceCommandLine::HandleAllowContinuous(const Arguments& arguments,
                                                      const Answer& answer,
                                                      std::string& /*response*/)
{
    return OnServerTask([this, &arguments, &answer] {
        bool& allowed = m_neighbours.KeyHandler().m_allowContinuous;
        if (arguments.empty()) {
            answer(std::string("Continuous blasting is ") + (allowed ? "enabled" : "disabled"));
            return;
        }
        allowed = ReadNumber(arguments.front()) != 0;
        answer(std::string(allowed ? "Enabling" : "Disabling") + " continuous key blasting");
    });
}

int Trellan_ServiceCommandLine::HandleGetHistory(const Arguments& arguments, const Answer& answer,
                                                 std::string& /*response*/)
{
    if (!arguments.empty()) {
        answer("Usage is get_history");
        return 1;
    }
    return OnServerTask([this, &answer] {
        kCommandLog.Put(3, "Printing Blaster Key History");
        std::string text = "Keys Blasted\n============\n";
        for (const std::string& line : m_neighbours.KeyHandler().GetKeyHistory()) {
            text += "\t" + line + "\n";
        }
        answer(text);
    });
}

int Trellan_ServiceCommandLine::HandleClearHistory(const Arguments& arguments, const Answer& answer,
                                                   std::string& /*response*/)
{
    if (!arguments.empty()) {
        answer("Usage is clear_history");
        return 1;
    }
    return OnServerTask([this, &answer] {
        kCommandLog.Put(3, "Clearing Blaster Key History");
        m_neighbours.KeyHandler().ClearKeyHistory();
        answer("Clearing IR Blaster history");
    });
}

}  // namespace TrellanService
