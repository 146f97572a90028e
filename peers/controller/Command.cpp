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

/// Arguments of the command line; CLI11 fills them.
struct CommandArguments {
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
ToService MessageOf(std::uint32_t id, Message message)
{
    return {id, std::make_shared<Message>(std::move(message))};
}

/// Checks that a message can hold the text; `what` names the argument in the complaint.
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
    // Only a regular file: opening a pipe would block, and a device has no end.
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

Command Sources(const CommandArguments& arguments)
{
    SrcCiCodeMessage_t message;
    for (const auto& name : arguments.sources) {
        message.add_cicode(Text(name, "NAME"));
    }
    return {Mode::kTell, MessageOf(TrellanService_MESSAGE_ID_SRC_CICODES, message), {}};
}

Command Key(const CommandArguments& arguments, bool hold)
{
    const auto key = ReadKey(arguments.key);
    if (!key) {
        throw CLI::ValidationError("KEY is no product key: " + arguments.key);
    }
    OrluKeyReqMessage_t message;
    message.set_keyval(*key);
    message.set_keyaction(hold ? OrluKeyReqMessage_t::KEY_ACTION_CONTINUOUS_PRESS
                               : OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS);
    message.set_codeset(Text(arguments.codeset, "CODESET"));
    return {hold ? Mode::kHold : Mode::kAsk,
            MessageOf(TrellanService_MESSAGE_ID_ORLU_KEY_REQ, message),
            std::chrono::milliseconds(arguments.holdMs)};
}

Command KeyMap(const CommandArguments& arguments)
{
    KeyMapMessage_t message;
    message.set_cicode(Text(arguments.codeset, "CODESET"));
    return {Mode::kAsk, MessageOf(TrellanService_MESSAGE_ID_KEYMAP_REQ, message), {}};
}

Command HasKey(const CommandArguments& arguments)
{
    IsKeyInCodesetMessage_t message;
    message.set_cicode(Text(arguments.codeset, "CODESET"));
    message.set_ueikey(Number(arguments.key, "N", 255));
    return {Mode::kAsk, MessageOf(TrellanService_MESSAGE_ID_IS_KEY_IN_CODESET, message), {}};
}

Command FindCec(const CommandArguments& arguments)
{
    FindCECDevice_t message;
    message.set_vendorid(Number(arguments.vendor, "VENDOR", UINT32_MAX));
    message.set_logicaladdr(Number(arguments.address, "ADDR", UINT32_MAX));
    message.set_osd(Text(arguments.osd, "OSD"));
    return {Mode::kAsk, MessageOf(TrellanService_MESSAGE_ID_FIND_CEC_DEV_REQ, message), {}};
}

Command FindEdid(const CommandArguments& arguments)
{
    FindEDIDDevice_t message;
    message.set_edid(Bytes(arguments.file));
    return {Mode::kAsk, MessageOf(TrellanService_MESSAGE_ID_FIND_EDID_DEV_REQ, message), {}};
}

Command Direct(const CommandArguments& arguments)
{
    DirectEntryResp_t message;
    message.set_devicetype(Text(arguments.type, "TYPE"));
    message.set_brand(Text(arguments.brand, "BRAND"));
    message.set_model(Text(arguments.model, "MODEL"));
    return {Mode::kAsk, MessageOf(TrellanService_MESSAGE_ID_DIRECT_ENTRY, message), {}};
}

/// The subcommands, each with the function that makes its command from the arguments.
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

    Command Parse(std::vector<std::string> arguments)
    {
        // CLI11 takes the arguments in reverse order, and does not accept "-" as a subcommand.
        if (!arguments.empty() && arguments.front() == "-") {
            arguments.front() = "lines";
        }
        m_app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        if (!m_make) {
            throw CLI::ValidationError("a command is required; --help lists them");
        }
        return m_make();
    }

    std::string Help(const CLI::CallForHelp& /*call*/) const { return m_app.help(); }

private:
    CLI::App* Add(const char* name, const char* what, Command (*make)(const CommandArguments&))
    {
        CLI::App* command = m_app.add_subcommand(name, what);
        // The command is made after parsing, when all arguments have been read.
        command->callback([this, make] {
            m_make = [this, make] {
                return make(m_arguments);
            };
        });
        return command;
    }

    void AddPlain()
    {
        Add("watch", "print every event until Ctrl-C", [](const CommandArguments&) {
            return Command{Mode::kWatch, {}, {}};
        });
        Add("lines",
            "written \"-\": send lines \"<id> <json>\" of standard input, print all answers",
            [](const CommandArguments&) {
                return Command{Mode::kLines, {}, {}};
            });
        Add("serve",
            "give the local API's page its keys, its state and the devices, and the service the "
            "product's sources, until Ctrl-C",
            [](const CommandArguments&) {
                return Command{Mode::kServe, {}, {}};
            });
        Add("cloud", "ask whether the cloud is connected", [](const CommandArguments&) {
            return Command{
                Mode::kAsk,
                MessageOf(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, CloudConnectState_t()),
                {}};
        });
        Add("sources", "hand over the source list; no answer, prints {\"sent\": true}", Sources)
            ->add_option("NAME", m_arguments.sources, "code sets; none: an empty list");
    }

    void AddKeys()
    {
        CLI::App* key = m_app.add_subcommand("key", "press a key");
        AddWord(key, "CODESET", m_arguments.codeset);
        AddWord(key, "KEY", m_arguments.key);
        const CLI::Option* hold =
            key->add_option("--hold", m_arguments.holdMs, "hold it for MS, then let go")
                ->type_name("MS")
                ->check(CLI::Range(0, 3600000));
        key->callback([this, hold] {
            m_make = [this, held = hold->count() > 0] {
                return Key(m_arguments, held);
            };
        });
        AddWord(Add("keymap", "ask for a code set's keys", KeyMap), "CODESET", m_arguments.codeset);
        CLI::App* hasKey = Add("has-key", "ask whether a code set has UEI key N", HasKey);
        AddWord(hasKey, "CODESET", m_arguments.codeset);
        AddWord(hasKey, "N", m_arguments.key);
    }

    void AddFinds()
    {
        CLI::App* cec = Add("find-cec", "find a device by its CEC data", FindCec);
        AddWord(cec, "VENDOR", m_arguments.vendor);
        AddWord(cec, "ADDR", m_arguments.address);
        AddWord(cec, "OSD", m_arguments.osd);
        AddWord(Add("find-edid", "find a display by its EDID", FindEdid), "FILE", m_arguments.file);
        CLI::App* direct = Add("direct", "find a code set by type, brand and model", Direct);
        AddWord(direct, "TYPE", m_arguments.type);
        AddWord(direct, "BRAND", m_arguments.brand);
        AddWord(direct, "MODEL", m_arguments.model);
    }

    static void AddWord(CLI::App* command, const char* name, std::string& word)
    {
        command->add_option(name, word)->required();
    }

    CLI::App m_app{"The product controller: TrellanService's client, for hands and scripts."};
    CommandArguments m_arguments;
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

Arguments ReadArguments(const std::vector<std::string>& arguments)
{
    Parser parser;
    try {
        return {parser.Parse(arguments), 0, {}, {}};
    } catch (const CLI::CallForHelp& call) {
        return {{}, 0, parser.Help(call), {}};
    } catch (const CLI::CallForVersion& version) {
        return {{}, 0, std::string(version.what()) + "\n", {}};
    } catch (const CLI::Error& error) {
        return {{}, kUsage, {}, OneLine(error.what())};
    }
}

}  // namespace Controller
