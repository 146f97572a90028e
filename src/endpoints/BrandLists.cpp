// SPDX-License-Identifier: Apache-2.0

#include "endpoints/ManagerLog.h"
#include "endpoints/Resources.h"
#include "endpoints/Trellan_ServiceManager.h"
#include "orlu/SystemUtils.h"
#include "uei/UEIInterface.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

constexpr double kLifeSpanSec = 10.0;
constexpr double kPublishVersion = 2.0;

void Answer(const Trellan_ServiceManager::PublishAnswer& answer,
            const Portico::PayloadPublishResponse& response)
{
    if (answer) {
        answer(response);
    }
}

void Refuse(const Trellan_ServiceManager::PublishAnswer& answer)
{
    Portico::PayloadPublishResponse response;
    response.set_url("");
    response.set_deadline("");
    Answer(answer, response);
}

}  // namespace

void Trellan_ServiceManager::HandleBrandListPost(const BrandListReq_t& request,
                                                 const PublishAnswer& answer)
{
    if (!m_neighbours.IsCloudConnected()) {
        kManagerLog.Put(2, "Brandlist request with no UEI session established");
        Refuse(answer);
        return;
    }
    if (!request.has_devicetype() || !request.has_filter()) {
        Refuse(answer);
        return;
    }
    ResetInactivityTimer();
    // A new name each time: publishing the same name again replaces a file that a consumer may
    // still fetch.
    m_brandListFileName = "brandList" + std::to_string(m_brandLists++);
    if (!m_neighbours.Engine().GetBrandList(request)) {
        Refuse(answer);
        return;
    }
    Publish(answer);
}

void Trellan_ServiceManager::Publish(const PublishAnswer& answer)
{
    Portico::PayloadPublishRequest request;
    request.set_filename(m_brandListFileName);
    request.set_lifespansec(kLifeSpanSec);
    m_porticoClient->SendPost<Portico::PayloadPublishResponse>(
        kPublishResource, request,
        {[this, answer](const Portico::PayloadPublishResponse& response) {
             kManagerLog.Put(3, "PayloadPublish response received");
             // The local API has read the file by now and serves its own copy.
             DeleteStagingFile();
             Answer(answer, response);
         },
         m_serverTask},
        {[this, answer](const Portico::Error& error) {
             kManagerLog.Log(1, "PayloadPublish Error {} {} ", error.code(), error.subcode());
             DeleteStagingFile();
             Refuse(answer);
         },
         m_serverTask},
        kPublishVersion);
}

void Trellan_ServiceManager::DeleteStagingFile()
{
    const std::string path = m_stagingDirectory + "/" + m_brandListFileName;
    // The product may have emptied the folder meanwhile; that is no reason for a warning.
    if (DirUtils::DoesFileExist(path)) {
        kManagerLog.Log(3, "Deleting payload staging file, {}", path);
        DirUtils::Delete(path, kManagerLog);
    }
}

}  // namespace TrellanService
