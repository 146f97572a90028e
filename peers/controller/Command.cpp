// SPDX-License-Identifier: Apache-2.0

#include "controller/Command.h"

#include "ProtoBufs/KeyValues.h"
#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "orlu/Limits.h"
#include "orlu/SystemUtils.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>

#include <sys/stat.h>

using namespace TrellanServiceMessages;

namespace Controller {

namespace {

constexpr const char* kFooter =
    "Answers come as one JSON line each on standard output. The service serves one client, so\n"
    "a controller that stays connected (watch, -) lets others through: watch beside key shows\n"
    "its answers too.\n"
    "\n"
    "KEY is a number or a product key's name without regard to case: 36, ORLU_TV_POWER, tv_power.\n"
    "An empty CODESET (\"\") sends the key by CEC, which takes held keys only: use --hold.\n"
    "\n"
    "Exit: 0 answered or interrupted, 1 no answer (120 s), 2 usage, 3 no service (3 s) or, while\n"
    "it stays connected, no longer.";

/// Words of the command line, as CLI11 fills them.
struct Words {
    std::vector<std::string> sources;
    std::string codeset;
    std::string key;
    std::string vendor;
    std::string address;
    std::string osd;
    std::string file;
    std::string type;
    std::string brand;
    std::string model;
    std::uint32_t holdMs = 0;
};

template <class Message>
ToService Say(std::uint32_t id, Message message)
{
    return {id, std::make_shared<Message>(std::move(message))};
}

/// What a member of a message may hold; `what` names it in the complaint.
const std::string& Text(const std::string& text, const char* what)
{
    if (text.size() > Orlu::Limits::kStringBytes || !StringUtils::IsUtf8(text)) {
        throw CLI::ValidationError(std::string(what) + " is no UTF-8 text, or too long");
    }
    return text;
}

std::uint32_t Number(const std::string& text, const char* what, std::uint32_t max)
{
    const auto number = ReadNumber(text, max);
    if (!number) {
        throw CLI::ValidationError(std::string(what) + " is a number from 0 to " +
                                   std::to_string(max));
    }
    return *number;
}

std::string Bytes(const std::string& path)
{
    struct stat status {};
    std::ifstream file;
    if (::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
        status.st_size <= static_cast<off_t>(Orlu::Limits::kStringBytes)) {
        file.open(path, std::ios::binary);
    } else {
        file.setstate(std::ios::failbit);
    }
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    if (!file || bytes.empty()) {
        throw CLI::ValidationError("FILE cannot be read as an EDID: " + path);
    }
    return bytes;
}

Command Sources(const Words& words)
{
    SrcCiCodeMessage_t message;
    for (const auto& name : words.sources) {
        message.add_cicode(Text(name, "NAME"));
    }
    return {Mode::kTell, Say(TrellanService_MESSAGE_ID_SRC_CICODES, message), {}};
}

Command Key(const Words& words, bool hold)
{
    const auto key = ReadKey(words.key);
    if (!key) {
        throw CLI::ValidationError("KEY is no product key: " + words.key);
    }
    OrluKeyReqMessage_t message;
    message.set_keyval(*key);
    message.set_keyaction(hold ? OrluKeyReqMessage_t::KEY_ACTION_CONTINUOUS_PRESS
                               : OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS);
    message.set_codeset(Text(words.codeset, "CODESET"));
    return {hold ? Mode::kHold : Mode::kAsk, Say(TrellanService_MESSAGE_ID_ORLU_KEY_REQ, message),
            std::chrono::milliseconds(words.holdMs)};
}

Command KeyMap(const Words& words)
{
    KeyMapMessage_t message;
    message.set_cicode(Text(words.codeset, "CODESET"));
    return {Mode::kAsk, Say(TrellanService_MESSAGE_ID_KEYMAP_REQ, message), {}};
}

Command HasKey(const Words& words)
{
    IsKeyInCodesetMessage_t message;
    message.set_cicode(Text(words.codeset, "CODESET"));
    message.set_ueikey(Number(words.key, "N", 255));
    return {Mode::kAsk, Say(TrellanService_MESSAGE_ID_IS_KEY_IN_CODESET, message), {}};
}

Command FindCec(const Words& words)
{
    FindCECDevice_t message;
    message.set_vendorid(Number(words.vendor, "VENDOR", UINT32_MAX));
    message.set_logicaladdr(Number(words.address, "ADDR", UINT32_MAX));
    message.set_osd(Text(words.osd, "OSD"));
    return {Mode::kAsk, Say(TrellanService_MESSAGE_ID_FIND_CEC_DEV_REQ, message), {}};
}

Command FindEdid(const Words& words)
{
    FindEDIDDevice_t message;
    message.set_edid(Bytes(words.file));
    return {Mode::kAsk, Say(TrellanService_MESSAGE_ID_FIND_EDID_DEV_REQ, message), {}};
}

Command Direct(const Words& words)
{
    DirectEntryResp_t message;
    message.set_devicetype(Text(words.type, "TYPE"));
    message.set_brand(Text(words.brand, "BRAND"));
    message.set_model(Text(words.model, "MODEL"));
    return {Mode::kAsk, Say(TrellanService_MESSAGE_ID_DIRECT_ENTRY, message), {}};
}

/// The options, each with what makes its command of the words.
class Parser {
public:
    Parser()
    {
        m_app.name("ProductController");
        m_app.footer(kFooter);
        m_app.set_version_flag("--version", "ProductController " CONTROLLER_VERSION);
        m_app.require_subcommand(0, 1);
        AddPlain();
        AddKeys();
        AddFinds();
    }

    Command Parse(std::vector<std::string> words)
    {
        // CLI11 takes words from the back, and a lone dash for no command's name.
        if (!words.empty() && words.front() == "-") {
            words.front() = "lines";
        }
        m_app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
        if (!m_make) {
            throw CLI::ValidationError("a command is required; --help lists them");
        }
        return m_make();
    }

    std::string Help(const CLI::CallForHelp& /*call*/) const { return m_app.help(); }

private:
    CLI::App* Add(const char* name, const char* what, Command (*make)(const Words&))
    {
        CLI::App* command = m_app.add_subcommand(name, what);
        command->callback([this, make] {
            m_make = [this, make] {
                return make(m_words);
            };
        });
        return command;
    }

    void AddPlain()
    {
        Add("watch", "print every event until Ctrl-C", [](const Words&) {
            return Command{Mode::kWatch, {}, {}};
        });
        Add("lines",
            "written \"-\": send lines \"<id> <json>\" of standard input, print all answers",
            [](const Words&) {
                return Command{Mode::kLines, {}, {}};
            });
        Add("serve",
            "give the local API's page its keys, its state and the devices, and the service the "
            "product's sources, until Ctrl-C",
            [](const Words&) {
                return Command{Mode::kServe, {}, {}};
            });
        Add("cloud", "ask whether the cloud is connected", [](const Words&) {
            return Command{Mode::kAsk,
                           Say(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, CloudConnectState_t()),
                           {}};
        });
        Add("sources", "hand over the source list; no answer, prints {\"sent\": true}", Sources)
            ->add_option("NAME", m_words.sources, "code sets; none: an empty list");
    }

    void AddKeys()
    {
        CLI::App* key = m_app.add_subcommand("key", "press a key");
        AddWord(key, "CODESET", m_words.codeset);
        AddWord(key, "KEY", m_words.key);
        const CLI::Option* hold =
            key->add_option("--hold", m_words.holdMs, "hold it for MS, then let go")
                ->type_name("MS")
                ->check(CLI::Range(0, 3600000));
        key->callback([this, hold] {
            m_make = [this, held = hold->count() > 0] {
                return Key(m_words, held);
            };
        });
        AddWord(Add("keymap", "ask for a code set's keys", KeyMap), "CODESET", m_words.codeset);
        CLI::App* hasKey = Add("has-key", "ask whether a code set has UEI key N", HasKey);
        AddWord(hasKey, "CODESET", m_words.codeset);
        AddWord(hasKey, "N", m_words.key);
    }

    void AddFinds()
    {
        CLI::App* cec = Add("find-cec", "find a device by its CEC data", FindCec);
        AddWord(cec, "VENDOR", m_words.vendor);
        AddWord(cec, "ADDR", m_words.address);
        AddWord(cec, "OSD", m_words.osd);
        AddWord(Add("find-edid", "find a display by its EDID", FindEdid), "FILE", m_words.file);
        CLI::App* direct = Add("direct", "find a code set by type, brand and model", Direct);
        AddWord(direct, "TYPE", m_words.type);
        AddWord(direct, "BRAND", m_words.brand);
        AddWord(direct, "MODEL", m_words.model);
    }

    static void AddWord(CLI::App* command, const char* name, std::string& word)
    {
        command->add_option(name, word)->required();
    }

    CLI::App m_app{"The product controller: TrellanService's client, for hands and scripts."};
    Words m_words;
    std::function<Command()> m_make;
};

std::string OneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

}  // namespace

std::optional<std::uint8_t> ReadKey(std::string_view text)
{
    if (const auto number = ReadNumber(text, UINT8_MAX)) {
        return static_cast<std::uint8_t>(*number);
    }
    return IpcProtocol::KeyValueFromName(text);
}

Arguments ReadArguments(const std::vector<std::string>& words)
{
    Parser parser;
    try {
        return {parser.Parse(words), 0, {}, {}};
    } catch (const CLI::CallForHelp& call) {
        return {{}, 0, parser.Help(call), {}};
    } catch (const CLI::CallForVersion& version) {
        return {{}, 0, std::string(version.what()) + "\n", {}};
    } catch (const CLI::Error& error) {
        return {{}, kUsage, {}, OneLine(error.what())};
    }
}

}  // namespace Controller
