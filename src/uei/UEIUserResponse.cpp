// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "uei/SessionText.h"
#include "uei/UEIInterface.h"
#include "uei/UEILog.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

enum TestStatus : std::int32_t { kBroken = -1, kNextKey = 1, kFound = 2, kNoneLeft = 3 };

constexpr std::int32_t kNoKey = -1;
constexpr int kLastSetFailed = 4;
constexpr const char* kSuccess = "LAST_RESULT_SUCCESS";
constexpr const char* kError = "LAST_RESULT_ERROR";
constexpr const char* kContinue = "LAST_RESULT_CONTINUE";

void Call(const UEIInterface::OSMCallback& callback, const OSMControlResp_t& response)
{
    if (callback) {
        callback(response);
    }
}

}  // namespace

void UEIInterface::OSMUserResponse(bool worked, const OSMCallback& callback)
{
    OSMControlResp_t response;
    // Without it the code set to delete from the blaster is not known.
    if (osmCodeset == nullptr) {
        kUEILog.Put(1, "Sending a user response with no previous codeset, should not be here");
        FillOSMControlResp(response);
        response.set_lastresult(kError);
        Call(callback, response);
        return;
    }
    // A copy: the next key may bring another code set into the same member.
    const std::string previous = osmCodeset;
    FillOSMControlResp(response);
    std::int32_t status = 0;
    if (!ReportTestResult(worked, status)) {
        response.set_lastresult(kError);
        Call(callback, response);
        return;
    }
    kUEILog.Log(3, "OSM: Testing {}/{} completed", codesetsTested, codesetsOffered);
    switch (status) {
        case kBroken:
            kUEILog.Put(1, "Test result error");
            EndTest(kError, nullptr, callback);
            return;
        case kFound:
            // The code set that was found need not be the one that was tried last.
            GetCurrentCodesetName();
            kUEILog.Log(3, "OSM done: {}", OrEmpty(osmCodeset));
            EndTest(kSuccess, osmCodeset, callback);
            return;
        case kNoneLeft:
            kUEILog.Put(3, "Testing done, no codeset found");
            EndTest(kSuccess, nullptr, callback);
            return;
        case kNextKey:
            kUEILog.Put(3, "OSM: Getting next key");
            lastResult = kContinue;
            break;
        default:
            break;
    }
    NextTestKey(previous, response, callback);
}

/// Reports the answer to the library and asks for the progress of the test. False, with a log line,
/// if that fails.
bool UEIInterface::ReportTestResult(bool worked, std::int32_t& status)
{
    int code = QSP_osm_report_test_result(session, worked ? 0 : 1, &status);
    // A "no" to the last code set gives code 4 and the status "none left": that is an end, not an
    // error.
    if (code != 0 && !(code == kLastSetFailed && status == kNoneLeft)) {
        kUEILog.Log(3, "OSM error in reporting test result {}", code);
        return false;
    }
    code = QSP_osm_retrieve_codesets_total(session, &codesetsOffered);
    if (code != 0) {
        kUEILog.Log(3, "OSM error in retrieving num codesets totoal {}", code);
        return false;
    }
    code = QSP_osm_get_codesets_tested(session, &codesetsTested);
    if (code != 0) {
        kUEILog.Log(3, "OSM error in getting num codesets tested {}", code);
        return false;
    }
    return true;
}

void UEIInterface::EndTest(const char* result, const char* codeset, const OSMCallback& callback)
{
    testKey = kNoKey;
    testKeysTotal = codesetsOffered = codesetsTested = 0;
    osmCodeset = codeset;
    lastResult = result;
    OSMControlResp_t response;
    FillOSMControlResp(response);
    Call(callback, response);
}

void UEIInterface::FailTest(const OSMCallback& callback)
{
    lastResult = kError;
    OSMControlResp_t response;
    FillOSMControlResp(response);
    Call(callback, response);
}

/// Continues the test after a report. `reported` is the state at the report.
void UEIInterface::NextTestKey(const std::string& previous, OSMControlResp_t& reported,
                               const OSMCallback& callback)
{
    if (const int code = QSP_osm_get_next_test_key(session, &testKey); code != 0) {
        reported.set_lastresult(kError);
        kUEILog.Log(1, "OSM error get next key {}", code);
        Call(callback, reported);
        return;
    }
    if (testKey == kNoKey) {
        kUEILog.Put(1, "Invalid key to test");
        FailTest(callback);
        return;
    }
    const int named = GetCurrentCodesetName();
    if (ValidateCodesetName(osmCodeset).empty()) {
        kUEILog.Log(3, "UEI returned invalid codeset name{}", OrEmpty(osmCodeset));
        FailTest(callback);
        return;
    }
    osmCodeset = validCodeset.c_str();
    if (named != 0) {
        kUEILog.Log(1, "OSM error getting codeset name {}", named);
        FailTest(callback);
        return;
    }
    kUEILog.Log(3, "OSM codeset: {}", osmCodeset);
    // The code set is in the blaster already, so there is no load whose answer could be waited for.
    if (osmCodeset == previous) {
        kUEILog.Put(3, "Sending response for next key to try");
        OSMControlResp_t response;
        FillOSMControlResp(response);
        Call(callback, response);
        return;
    }
    ChangeCodeset(previous, callback);
}

/// Deletes the old code set and then loads the next one, whether or not the deletion succeeded: a
/// refusal must not end the test.
void UEIInterface::ChangeCodeset(const std::string& previous, const OSMCallback& callback)
{
    const AsyncCallback<std::string> deleted(
        [this, callback](const std::string&) {
            kUEILog.Log(3, "OSM loading next codeset to try {}", OrEmpty(osmCodeset));
            OSMLoadCodeset(OrEmpty(osmCodeset), callback, sessionKind);
        },
        task);
    kUEILog.Log(3, "OSM deleting codeset {}", previous);
    m_neighbours.BlasterProxy().DeleteCodesetFromBlaster(previous, deleted);
}

}  // namespace TrellanService
