// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <stdexcept>

#include <fmt/format.h>

#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "benchmarks/HttpReader.h"
#include "benchmarks/Measurements.h"
#include "benchmarks/SyncByHand.h"

namespace Bench {

using namespace TrellanServiceMessages;

namespace {

constexpr unsigned kCodesets = 20;
constexpr std::size_t kSyncsARound = 8;
constexpr std::size_t kSyncsOfGrowth = 1000;

/// A cloud gives a thousand code sets.
constexpr std::size_t kSyncsACloud = 40;

/// Twenty of the forty televisions that the cloud's own catalogue has of one brand.
std::vector<std::string> Names(bool second)
{
    std::vector<std::string> names;
    for (unsigned i = 1; i <= kCodesets; ++i) {
        names.push_back(fmt::format("T{}", 3000 + i + (second ? kCodesets : 0)));
    }
    return names;
}

/// The product controller as far as a sync needs it.
class SyncClient {
public:
    explicit SyncClient(const std::filesystem::path& root)
        : m_stream(ConnectAsSoonAsPossible(SocketPath(root, "TrellanService")))
    {
    }

    /// Until the service has found its cloud, which takes it a second.
    void WaitForCloud()
    {
        CloudConnectState_t state;
        while (!state.connectstate()) {
            Send(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, kRequest, CloudConnectState_t());
            Receive(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, state);
        }
    }

    /// From the source list to the word that the sync is done.
    void Sync(const std::vector<std::string>& names)
    {
        SrcCiCodeMessage_t list;
        list.mutable_cicode()->Assign(names.begin(), names.end());
        Send(TrellanService_MESSAGE_ID_SRC_CICODES, kEvent, list);
        BlasterSync_t done;
        while (!done.syncstate()) {
            Receive(TrellanService_MESSAGE_ID_BLASTER_SYNC_COMPLETE, done);
        }
    }

private:
    void Send(std::uint32_t id, std::uint32_t kind, const google::protobuf::Message& message)
    {
        FillEnvelope(m_envelope, id, kind, kind == kRequest ? 1 : 0, message);
        m_stream.Put(m_envelope);
        m_stream.Flush();
    }
    void Receive(std::uint32_t id, google::protobuf::Message& message)
    {
        while (true) {
            while (m_stream.Next(m_envelope)) {
                if (m_envelope.id() == id && message.ParseFromString(m_envelope.payload())) {
                    return;
                }
            }
            if (!m_stream.Fill()) {
                throw std::runtime_error("the service has gone in the midst of a sync");
            }
        }
    }

    Stream m_stream;
    IPCMessageEnvelope m_envelope;
};

/// All of the product's processes, and a second LpmService for the sync by hand, as what a blaster
/// says goes to every client.
struct Product {
    Product(const Place& place, const std::filesystem::path& folder, int logLevel)
        : root(folder),
          cloudPort(LayOut(root)),
          cloudCommand({place.ProgramPath("UeiCloud"), "--port", std::to_string(cloudPort)}),
          cloud(std::in_place, cloudCommand, root, 2),
          lpm({place.ProgramPath("LpmService")}, root, 2),
          apiPort(std::to_string(FreePort())),
          api({place.ProgramPath("PorticoServer"), "--port", apiPort}, root, 2),
          service({place.ProgramPath("TrellanService")}, root, logLevel,
                  {"ORLU_PORTICO_PORT=" + apiPort}),
          client(root),
          secondLpm({place.ProgramPath("LpmService")}, root / "second", 2)
    {
        client.WaitForCloud();
        byHand = std::make_unique<SyncByHand>(root / "second", cloudPort);
        byHand->Run(Names(true));
        client.Sync(Names(true));
    }

    static std::uint16_t LayOut(const std::filesystem::path& folder)
    {
        LayOutRoot(folder);
        LayOutRoot(folder / "second");
        const auto port = FreePort();
        std::filesystem::create_directories(folder / "opt/Orlu/etc/UEI");
        std::ofstream(folder / "opt/Orlu/etc/UEI/WRLD_linux.conf")
            << fmt::format(R"({{"cloudUrl": "http://127.0.0.1:{}/qsp/v1"}})", port);
        return port;
    }

    void RestartCloud()
    {
        cloud.reset();
        cloud.emplace(cloudCommand, root, 2);
        const HttpReader listening(cloudPort);
    }

    std::filesystem::path root;
    std::uint16_t cloudPort;
    std::vector<std::string> cloudCommand;
    std::optional<Program> cloud;
    Program lpm;
    std::string apiPort;
    Program api;
    Program service;
    SyncClient client;
    Program secondLpm;
    std::unique_ptr<SyncByHand> byHand;
};

template <class Work>
double Millis(Work work)
{
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

Figure MeasureSyncs(const Place& place, const Effort& effort, const std::filesystem::path& root,
                    int logLevel, const std::string& what, std::optional<Goal> goal)
{
    std::vector<double> service;
    std::vector<double> floor;
    // A round takes seconds, most of them to find the cloud.
    for (std::size_t round = 0; round < effort.rounds / 3 + 1; ++round) {
        Product product(place, root, logLevel);
        std::vector<double> ours;
        std::vector<double> byHand;
        for (std::size_t i = 0; i < kSyncsARound; ++i) {
            const auto names = Names(i % 2 != 0);
            ours.push_back(Millis([&product, &names] { product.client.Sync(names); }));
            byHand.push_back(Millis([&product, &names] { product.byHand->Run(names); }));
        }
        service.push_back(Median(ours));
        floor.push_back(Median(byHand));
    }
    return CompareRounds(what, "ms", 2, service, floor, goal);
}

}  // namespace

std::vector<Figure> MeasureSyncs(const Place& place, const Effort& effort)
{
    const auto disk = place.roots / "sync";
    const auto memory = std::filesystem::path("/dev/shm") / place.roots.filename();
    const Goal goal{Goal::Kind::AtMost, 1.5};
    std::vector<Figure> figures = {
        MeasureSyncs(place, effort, memory, 2, "sync of 20 code sets, store in memory", goal),
        MeasureSyncs(place, effort, memory, 3, "the same, log level 3", {}),
        MeasureSyncs(place, effort, disk, 2, "the same, store on disk", {}),
    };
    std::filesystem::remove_all(memory);
    return figures;
}

std::vector<Figure> MeasureSyncGrowth(const Place& place, const Effort& effort)
{
    Product product(place, place.roots / "syncs", effort.logLevel);
    const auto sync = [&product](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i) {
            if (i % kSyncsACloud == 0) {
                product.RestartCloud();
            }
            product.client.Sync(Names(i % 2 != 0));
        }
    };
    sync(kSyncsOfGrowth / 10);
    const auto before = product.service.ReadMemory().dirty;
    sync(kSyncsOfGrowth);
    return {GrowthFigure("dirty memory, growth over a thousand syncs", before,
                         product.service.ReadMemory().dirty)};
}

}  // namespace Bench
