// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <vector>

#include "uei/UEIFixture.h"

using namespace LpmServiceMessages;

namespace TrellanService::Tests {
namespace {

class UEICodesets : public UEIFixture {
protected:
    UEICodesets()
    {
        Init();
        engine.OpenSession(2);
        effects.Take();
        TakeLog();
    }

    std::string Buffer() const
    {
        const CodesetTransferBuffer& buffer = UEIInterface::TransferBuffer();
        return std::string(buffer.name.data()) + " " + std::to_string(buffer.size);
    }
};

TEST_F(UEICodesets, TakeTheFirstValidName)
{
    struct Row {
        const char* name;
        std::string valid;
    };
    const std::vector<Row> rows = {
        {"T0012", "T0012"},
        {"X1,T0012,C0001", "T0012"},
        {"T0012,C0001", "T0012"},
        {"T8192,H4096,H4095", "H4095"},
        {"T8191", "T8191"},
        {"H4096", ""},
        {"T8192", ""},
        {"T00123", "T0012"},
        {"S12", std::string("S12\0\0", 5)},
        {"TV", ""},
        {"T", ""},
        {"T-001", "T-001"},
        {"T-", ""},
        {"C0001,T", "C0001"},
        {"t0012", ""},
        {",,", ""},
        {"", ""},
        {nullptr, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name == nullptr ? "null" : row.name);
        EXPECT_EQ(engine.ValidateCodesetName(row.name), row.valid);
    }
    TakeLog();
    engine.ValidateCodesetName("T8192");
    EXPECT_EQ(TakeLog(), "3 Validating codeset name T8192\n3 Invalid codeset name \n");
}

TEST_F(UEICodesets, ArriveInTheBuffer)
{
    qsp.binaries = {{"T2051", "abc"}};
    EXPECT_EQ(engine.GetCodesetBinary("T2051", 2), 0);
    EXPECT_EQ(effects.Take(),
              "+0 qsp register_ir_callbacks -----*--------\n"
              "+0 qsp send_codeset_by_name T2051 2\n");
    EXPECT_EQ(TakeLog(),
              "3 Registered codeset callback\n"
              "3 codeset T2051 received from UEI cloud, length 3\n"
              "3 OSM: received codeset T2051 /size 3\n"
              "3 Codeset retrieved from UEI cloud\n");
    const CodesetTransferBuffer& buffer = UEIInterface::TransferBuffer();
    EXPECT_EQ(Buffer(), "T2051 3");
    EXPECT_EQ(std::string(buffer.data.begin(), buffer.data.begin() + 3), "abc");
}

TEST_F(UEICodesets, FailAtOnceWithTheCauseInTheLog)
{
    struct Row {
        const char* function;
        int result;
        const char* last;
    };
    constexpr std::array<Row, 5> kRows = {{
        {"send_codeset_by_name", 227,
         "1 UEI code set download quota reached.  Must be reset by UEI\n"},
        {"send_codeset_by_name", 15,
         "1 UEI code set download quota reached.  Must be reset by UEI\n"},
        {"send_codeset_by_name", 12, "3 Unable to download codeset 12\n"},
        {"register_ir_callbacks", 1, "3 Unable to IR callback with UEI cloud\n"},
        {"get_lookup_session", 1, "3 Unable to open UEI cloud session\n"},
    }};
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.function);
        Init();
        qsp.results = {{row.function, row.result}};
        EXPECT_EQ(engine.GetCodesetBinary("T2051", 2), -1);
        const std::string log = TakeLog();
        EXPECT_TRUE(log.ends_with(row.last)) << log;
    }
}

TEST_F(UEICodesets, LeaveTheBufferAloneUnlessTheyFit)
{
    struct Row {
        std::uint32_t size;
        int result;
        const char* buffer;
        const char* last;
    };
    constexpr std::array<Row, 4> kRows = {{
        {1199, 0, "aaaaa 1199", "/size 1199\n"},
        {0, 4, "aaaaa 1199", "3 no codeset data provided from UEI cloud\n"},
        {1200, 4, "aaaaa 1199", "of 1200 bytes is too large for the blaster\n"},
        {1, 0, "aaaaa 1", "/size 1\n"},
    }};
    const std::string name(40, 'a');
    const std::vector<std::uint8_t> data(1200, 1);
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.size);
        EXPECT_EQ(UEIInterface::HandleCodesetBinary(name.c_str(), data.data(), row.size),
                  row.result);
        EXPECT_EQ(Buffer(), row.buffer);
        EXPECT_TRUE(TakeLog().ends_with(row.last));
    }
    EXPECT_EQ(UEIInterface::HandleCodesetBinary(nullptr, nullptr, 3), 4);
}

TEST_F(UEICodesets, GoOnToTheBlasterWithTheirFingerprint)
{
    proxy.Initialize();
    runtime.RunUntilIdle();
    TrellanServiceMessages::SrcCiCodeMessage_t list;
    list.add_cicode("T2051");
    handler.cacheCodesets(list);
    qsp.binaries = {{"T2051", "abc"}};
    lpm.Reply(0x22, std::nullopt);
    effects.Take();

    const Callback<BulkTransferResponse> note([this](const BulkTransferResponse& response) {
        effects.Add(BulkTransferResult_Name(response.result()));
    });
    EXPECT_TRUE(Run([this, note] { engine.LoadCodeset("T2051", note, 2); }).ends_with("616263\n"));
    EXPECT_EQ(handler.GetCodesets().at("T2051").checksum, "900150983cd24fb0d6963f7d28e17f72");
    lpm.BlasterDone("0100");
    runtime.RunUntilIdle();
    EXPECT_EQ(effects.Take(), "+0 BULK_TRANSFER_SUCCESS\n");
}

}  // namespace
}  // namespace TrellanService::Tests
