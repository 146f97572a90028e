// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "console/Console.pb.h"
#include "orlu/IPCMessageRouter.h"
#include "support/World.h"

namespace TrellanService {
namespace {

using namespace OrluConsole;

constexpr const char* kStore = "/mnt/nv/product-persistence/TRSCodesetConfig.json";
constexpr const char* kTwoCodesets = R"({"codesets": [
    {"name": "S0456", "details": {"devNum": 12744, "ambiguousKeyBitMap": 0, "checksum": "",
     "safeToBlast": false, "keyMap": {"keys": []}}},
    {"name": "T2051", "details": {"devNum": 2051, "ambiguousKeyBitMap": 67108864, "checksum": "c0",
     "safeToBlast": true, "keyMap": {"keys": [1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,
     22,23,24,25]}}}]})";

/// A console of the service's command line. Keeps the answer of each line.
class Typist {
public:
    Typist() : m_task(IL::CreateTask("Typist", ""))
    {
        m_router = IPCMessageRouterFactory::CreateRouter("Typist", m_task.get(), nullptr);
        m_attempt = Orlu::Runtime().Transport().Connect(
            IPCDirectory::Get().Lookup("TrellanServiceCommandLineClient").Path(), m_task->Queue(),
            [this](const Orlu::SocketPtr& socket) { m_router->Connect(socket, [] {}); });
    }
    ~Typist()
    {
        m_router->Disconnect();
        m_task->Stop();
    }
    Typist(const Typist&) = delete;
    Typist& operator=(const Typist&) = delete;

    void Type(const std::vector<std::string>& words)
    {
        Line line;
        line.mutable_word()->Assign(words.begin(), words.end());
        m_router->SendRequestMessage<Answer>(
            CONSOLE_LINE, line, Callback<Answer>([this](const Answer& answer) {
                answers += Answer::State_Name(answer.state()) + ": " + answer.response() + "\n";
            }));
    }

    std::string answers;

private:
    std::shared_ptr<NotifyTargetTaskIF> m_task;
    IPCMessageRouterPtr m_router;
    std::unique_ptr<Orlu::TransportHandle> m_attempt;
};

std::vector<std::string> SplitWords(const std::string& line)
{
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

/// A started service with a console.
class Commands : public testing::Test {
protected:
    Commands()
    {
        m_world.root.Write(kStore, "{}");
        m_world.Start();
        m_console = std::make_unique<Typist>();
        Run();
    }

    void Run()
    {
        m_world.runtime.RunUntilIdle();
        m_world.effects.Take();
        m_world.TakeLog();
    }

    /// The answers to the console, then the effects on the peers, one line each, without times.
    std::string Type(const std::vector<std::string>& words)
    {
        m_console->answers.clear();
        m_console->Type(words);
        m_world.runtime.RunUntilIdle();
        return m_console->answers + m_world.effects.Take();
    }
    std::string Type(const std::string& line) { return Type(SplitWords(line)); }

    struct Row {
        const char* line;
        const char* expected;
    };
    template <std::size_t N>
    void ExpectRows(const Row (&rows)[N])
    {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.line);
            EXPECT_EQ(Type(row.line), row.expected);
        }
    }

    World m_world;
    std::unique_ptr<Typist> m_console;
};

constexpr const char* kWarning =
    "msec (!!!WARNING!!! DELAY < 200MSEC MAY RESULT IN HARDWARE DAMAGE)";

TEST_F(Commands, AnswerAtOnceIfNoPeerIsNeeded)
{
    const Row rows[] = {
        {"trs", "UNKNOWN: Unrecognized command\n"},
        {"TRS get_version", "UNKNOWN: Unrecognized command\n"},
        {"trs get_version more", "KNOWN: 3.1.72\n"},
        {"trs send_key", "KNOWN: No key provided.\n"},
        {"trs send_key 1 T2051 1 1", "KNOWN: Invalid arg\n"},
        {"trs send_key 14x", "KNOWN: Invalid arg\n"},
        {"trs send_key -1", "KNOWN: Invalid arg\n"},
        {"trs send_key 4294967296", "KNOWN: Invalid arg\n"},
        {"trs send_key 140 X1", "KNOWN: X1not a valid codeset\n"},
        {"trs end_key", "KNOWN: \n"},
        {"trs end_key T2051", "KNOWN: End key with status 0x00\n"},
        {"trs get_keymap", "KNOWN: NOT ENOUGH ARGS\n"},
        {"trs delete_codeset", "KNOWN: NOT ENOUGH ARGS\n"},
        {"trs get_keymap Q1", "KNOWN: INVALID CODESET NAME\n"},
        {"trs delete_codeset T8192", "KNOWN: INVALID CODESET NAME\n"},
        {"trs store_codeset", "KNOWN: NOT ENOUGH ARGS\n"},
        {"trs store_codeset T2052", "KNOWN: ONLY ABLE TO STORE CODESET T2051 FROM COMMAND LINE\n"},
        {"trs load_codeset", "KNOWN: Usage is load_codeset <codeset_name>\n"},
        {"trs load_codeset a b", "KNOWN: Usage is load_codeset <codeset_name>\n"},
        {"trs find_cec_dev 0 1", "KNOWN: Usage is find_cec_dev <logical addr>,<vendor id>,<osd>\n"},
        {"trs get_src_cfg", "KNOWN: No codesets stored with system source list\n"},
        {"trs whitelist_ver", "KNOWN: Whitelist version uninitialized\n"},
        {"trs get_db_ver", "KNOWN: Get version error\n+0 qsp get_lookup_session  2\n"},
        {"trs get_history x", "KNOWN: Usage is get_history\n"},
        {"trs clear_history x", "KNOWN: Usage is clear_history\n"},
        {"trs get_history", "KNOWN: Keys Blasted\n============\n\n"},
        {"trs clear_history", "KNOWN: Clearing IR Blaster history\n"},
        {"trs allow_continuous", "KNOWN: Continuous blasting is disabled\n"},
        {"trs allow_continuous 1", "KNOWN: Enabling continuous key blasting\n"},
        {"trs allow_continuous", "KNOWN: Continuous blasting is enabled\n"},
        {"trs allow_continuous abc", "KNOWN: Disabling continuous key blasting\n"},
    };
    m_world.qsp.results["get_lookup_session"] = 7;
    ExpectRows(rows);
}

TEST_F(Commands, KeepTheKeyDelayFromHarmingTheBlaster)
{
    const std::string minimum = std::string("KNOWN: Enforcing minimum key delay of 25") + kWarning +
                                "Setting key delay: 25msec, max blast ";
    EXPECT_EQ(Type("trs key_delay"), "KNOWN: Key delay: 200msec, Max blast: 120msec\n");
    EXPECT_EQ(Type("trs key_delay 10"), minimum + "120\n");
    EXPECT_EQ(Type("trs key_delay -7 -7"), minimum + "0\n");
    EXPECT_EQ(Type("trs key_delay 0x99 1e3"), minimum + "1\n");
    EXPECT_EQ(Type("trs key_delay 25"), std::string("KNOWN: Key delay setting now set to: 25") +
                                            kWarning +
                                            "Setting key delay: 25msec, max blast 120\n");
    EXPECT_EQ(Type("trs key_delay 0200 60"), "KNOWN: Setting key delay: 200msec, max blast 60\n");
    EXPECT_EQ(Type("trs key_delay 1 2 3"), "KNOWN: Incorrect usage\n");
    EXPECT_EQ(Type("trs key_delay"), "KNOWN: Key delay: 200msec, Max blast: 60msec\n");
    EXPECT_EQ(Type("trs key_delay 99999999999999999999"),
              "KNOWN: Setting key delay: 4294967295msec, max blast 120\n");
}

TEST_F(Commands, ReachTheBlasterWhateverTheSendKeyState)
{
    m_world.root.Write(kStore, kTwoCodesets);
    m_world.service.CodesetHandler().InitCodesetMap();
    m_world.service.CodesetHandler().SetSendKeyState(SendKeyOSM);
    Run();
    EXPECT_EQ(Type("trs send_key 26 T2051"), "KNOWN: Key sent.\n+0 lpm 82 000701080319000000\n");
    m_world.runtime.Advance(500);
    m_world.effects.Take();
    EXPECT_EQ(Type("trs end_key T2051"), "KNOWN: End key with status 0x00\n+0 lpm 80 000100\n");
    m_world.runtime.Advance(1000);
    m_world.effects.Take();
    EXPECT_EQ(Type("trs send_key 26"), "KNOWN: Key sent.\n");
    EXPECT_EQ(Type("trs send_key 26 T2051 0"), "KNOWN: Send key status 0x00\n");

    m_world.service.CodesetHandler().SetSendKeyState(SendKeyReady);
    m_world.lpm.ReplyToAll("\x01\x07");
    EXPECT_EQ(Type("trs send_key 0x1a T2051 0"),
              "KNOWN: Send key status 0x07\n+0 lpm 80 000701080319800000\n");
    EXPECT_EQ(Type("trs send_key 032 T2051 0"),
              "KNOWN: Send key status 0x07\n+0 lpm 80 000701080319800000\n");
    EXPECT_EQ(Type("trs get_history"),
              "KNOWN: Keys Blasted\n============\n"
              "\tValue: 1a Key: kKey_STOP ciCode: T2051 Flag: 0\n\n"
              "\tValue: 1a Key:  ciCode:  Flag: ff\n\n"
              "\tValue: 1a Key: kKey_STOP ciCode: T2051 Flag: 80\n\n"
              "\tValue: 1a Key: kKey_STOP ciCode: T2051 Flag: 80\n\n\n");
}

TEST_F(Commands, TurnTheBlastersAnswersIntoText)
{
    const std::string map("\x03\0\x01\x1f", 4);
    m_world.lpm.Reply(0x02, map);
    EXPECT_EQ(Type("trs get_keymap X9,T2051"),
              "KNOWN: Codeset T2051 key map\n01 1f \n+0 lpm 84 0003020803\n");
    m_world.lpm.Reply(0x02, "\x01\x0a");
    EXPECT_EQ(Type("trs get_keymap T51"),
              "KNOWN: Unable to retrieve codeset T51, error code 0x0a\n+0 lpm 84 0003020033\n");
    m_world.lpm.Reply(0x02, "");
    EXPECT_TRUE(Type("trs get_keymap T51")
                    .starts_with("KNOWN: Unable to retrieve codeset T51, error code 0xff\n"));

    EXPECT_EQ(Type("trs delete_codeset T2051"),
              "KNOWN: Codeset T2051 deleted successfully: code 0x00\n+0 lpm 80 00030c0803\n");
    m_world.lpm.Reply(0x0C, "\x01\x01");
    EXPECT_TRUE(Type("trs delete_codeset T2051")
                    .starts_with("KNOWN: Deleting codeset T2051 error, code 0x01\n"));

    EXPECT_EQ(Type("trs list_codesets"),
              "KNOWN: No codesets loaded in blaster\n+0 lpm 80 000111\n");
    m_world.lpm.Reply(0x11, std::string("\x06\0\x02\x08\x03\x31\xc8", 7));
    EXPECT_TRUE(Type("trs list_codesets").starts_with("KNOWN: 0x0803 0x31c8 \n"));
    m_world.lpm.Reply(0x11, std::string("\x06\0\x02\x08\x03\x31", 6));
    EXPECT_TRUE(Type("trs list_codesets").starts_with("KNOWN: 0x0803 \n"));
    m_world.lpm.ReplyToAll("");
    EXPECT_EQ(Type("trs master_reset"), "KNOWN: Reset complete\n+0 lpm 80 00020901\n");
}

TEST_F(Commands, LoadCodesets)
{
    EXPECT_TRUE(Type("trs store_codeset T2051")
                    .starts_with("KNOWN: Codeset successfully loaded in blaster\n"
                                 "+0 lpm 65539 length 361 type 2 0167220803"));
    m_world.lpm.AnswerLoads(LpmServiceMessages::BULK_TRANSFER_ERROR);
    EXPECT_TRUE(
        Type("trs store_codeset T2051").starts_with("KNOWN: Error loading codeset in blaster\n"));
    // The cloud does not know the code set. The command answers that it is loaded; only the log has
    // the failure.
    EXPECT_TRUE(Type("trs load_codeset T0001").starts_with("KNOWN: Loaded codeset T0001\n"));
}

TEST_F(Commands, ShowWhatIsConfigured)
{
    m_world.root.Write(kStore, kTwoCodesets);
    m_world.service.CodesetHandler().InitCodesetMap();
    Run();
    EXPECT_EQ(Type("trs get_src_cfg"),
              "KNOWN: ============\nciCode: S0456\n\tdevNum: 0x31c8\n"
              "\tambiguousKeyMap: 0x0000000000000000\n\tchecksum: 0x\n\tsafe to blast?: false\n"
              "\tkey map: \n"
              "============\nciCode: T2051\n\tdevNum: 0x0803\n"
              "\tambiguousKeyMap: 0x0000000004000000\n\tchecksum: 0xc0\n\tsafe to blast?: true\n"
              "\tkey map: 0x01 0x02 0x03 0x04 0x05 0x06 0x07 0x08 0x09 0x0a \n\t\t"
              "0x0b 0x0c 0x0d 0x0e 0x0f 0x10 0x11 0x12 0x13 0x14 \n\t\t"
              "0x15 0x16 0x17 0x18 0x19 \n\n");

    m_world.portico.Put("/system/sources",
                        R"({"sources": [{"sourceName": "A", "status": "READY"},
        {"sourceName": "B", "sourceAccountName": "b", "status": "READY", "details":
         {"activationKey": "k", "ciCode": "T2051", "deviceType": "DEVICE_TYPE_TV"}}]})");
    EXPECT_EQ(Type("trs get_src_list"),
              "KNOWN: Source List\n============\nSource 1\n\tciCode: T2051\n"
              "\tdeviceType: DEVICE_TYPE_TV\n\tactivationKey: k\n\tsourceName: B\n"
              "\tsourceAccountName: b\n\n+0 portico GET /system/sources\n");
    m_world.portico.Put("/system/sources", R"({"sources": [{"status": "READY"}]})");
    EXPECT_TRUE(Type("trs get_src_list").starts_with("KNOWN: Error getting /system/sources\n\n"));
}

TEST_F(Commands, LookDevicesUp)
{
    m_world.qsp.lists["discover_device_info_get"] = {"TV", "Acme", "T0001"};
    m_world.qsp.texts["get_version_string"] = "7.5";
    m_world.PutProductValues();
    Run();
    EXPECT_EQ(Type({"trs", "find_cec_dev", "4", "57489", "My TV", "more"}),
              "KNOWN: Found deviceType:TV Brand:Acme Codeset:T0001\n"
              "+0 qsp get_lookup_session /opt/Orlu/etc/UEI/WRLD_linux.conf 2\n"
              "+0 qsp discover_retrieve_info_cec 57489 4 My TV\n+0 qsp discover_device_info_get\n");
    EXPECT_TRUE(Type("trs find_edid_dev ignored")
                    .starts_with("KNOWN: Found deviceType:TV Brand:Acme Codeset:T0001\n"
                                 "+0 qsp discover_retrieve_info_edid 256\n"));
    EXPECT_EQ(Type("trs get_db_ver"), "KNOWN: 7.5\n+0 qsp get_version_string\n");
    EXPECT_NE(m_world.TakeLog().find("3 Trellan_ServiceManager: DB version 7.5\n"),
              std::string::npos);
    m_world.qsp.results["discover_device_info_get"] = 44;
    for (const char* line : {"trs find_cec_dev 0xE091 x y", "trs find_edid_dev"}) {
        EXPECT_TRUE(Type(line).starts_with(
            "KNOWN: Unable to retrieve CEC info from UEI cloud for device\n"));
    }
}

TEST_F(Commands, FailInsteadOfWaitingForAnAnswerThatCannotCome)
{
    m_world.lpm.Leave();
    Run();
    EXPECT_EQ(Type("trs list_codesets"), "KNOWN: Command failed\n");
    m_world.service.Server().Stop();
    for (const char* line : {"trs get_version", "trs key_delay", "trs get_src_list"}) {
        EXPECT_EQ(Type(line), "KNOWN: Command failed\n");
    }
}

TEST_F(Commands, RefuseLinesThatAreNone)
{
    EXPECT_EQ(Type(std::vector<std::string>{}), "REFUSED: No command\n");
    EXPECT_EQ(Type(std::vector<std::string>(17, "a")), "REFUSED: Too many words\n");
    EXPECT_EQ(Type({"trs", std::string(4093, 'a')}), "REFUSED: Line too long\n");
    const std::string longest(4092, 'a');
    EXPECT_EQ(Type({"trs", longest}), "UNKNOWN: Unrecognized command\n");
    EXPECT_EQ(m_world.TakeLog().substr(0, 30), "3 TrellanService: Command trs ");
    const std::string binary("\0\xff\n\x1b", 4);
    EXPECT_EQ(Type({"trs", "send_key", "1", binary}), "KNOWN: " + binary + "not a valid codeset\n");
    EXPECT_EQ(Type({"trs", "get_keymap", binary}), "KNOWN: INVALID CODESET NAME\n");
    Type({"trs", "find_cec_dev", binary, binary, binary});
    Type({"trs", "load_codeset", binary});
}

TEST_F(Commands, AreServedInTurnToEveryConsole)
{
    Typist other;
    Run();
    m_world.lpm.AnswerAfter(50);
    other.Type({"trs", "master_reset"});
    m_console->Type({"trs", "get_version"});
    m_world.runtime.Advance(100);
    EXPECT_EQ(other.answers, "KNOWN: Reset complete\n");
    EXPECT_EQ(m_console->answers, "KNOWN: 3.1.72\n");
}

}  // namespace
}  // namespace TrellanService
