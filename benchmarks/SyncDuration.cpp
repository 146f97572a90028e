// SPDX-License-Identifier: Apache-2.0

#include <array>
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
constexpr std::array kGrowingLists = {1U, 10U, 50U, 100U, 200U};

/// The number of code sets in the cloud: more than the longest list, which has two hundred.
constexpr unsigned kTelevisions = 240;

std::vector<std::string> Names(unsigned first, unsigned count)
{
    std::vector<std::string> names;
    for (unsigned i = 0; i < count; ++i) {
        names.push_back(fmt::format("T{}", 3000 + first + i));
    }
    return names;
}

/// Two lists without a common code set, used in turn.
std::vector<std::string> InTurns(std::size_t turn)
{
    return Names(turn % 2 == 0 ? 0 : kCodesets, kCodesets);
}

/// Six keys for each code set, and no limit for downloads.
std::string MakeCatalogue(const Place& place, const std::filesystem::path& root)
{
    const auto source = root / "catalogue.json";
    const std::string catalogue = root / "catalogue.sqlite";
    std::string codesets;
    for (unsigned i = 0; i < kTelevisions; ++i) {
        codesets += fmt::format(
            R"({0}{{"name": "{1}", "type": "TV", "groups": [{{"protocol": "necx", "keys": )"
            R"({{"POWER": "0x{2:04x}12", "VOLUME_UP": "0x{2:04x}15", "VOLUME_DOWN": "0x{2:04x}16", )"
            R"("CHANNEL_UP": "0x{2:04x}18", "CHANNEL_DOWN": "0x{2:04x}19", "MUTE": "0x{2:04x}1a"}}}}]}})",
            i == 0 ? "" : ",", Names(i, 1)[0], 0x6b80 + i);
    }
    std::ofstream(source) << fmt::format(
        R"({{"source": "bench", "licence": "Apache-2.0", "version": "Bench 1", "quota": 1000000000, )"
        R"("codesets": [{}]}})",
        codesets);
    Program({place.ProgramPath("CatalogueBuilder"), catalogue, source}, root, 2).Join();
    return catalogue;
}

/// The part of the product controller that a sync needs.
class SyncClient {
public:
    explicit SyncClient(const std::filesystem::path& root)
        : m_stream(ConnectAsSoonAsPossible(SocketPath(root, "TrellanService")))
    {
    }

    /// Waits until the service is connected to its cloud, which takes a second.
    void WaitForCloud()
    {
        CloudConnectState_t state;
        while (!state.connectstate()) {
            Send(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, kRequest, CloudConnectState_t());
            Receive(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, state);
        }
    }

    /// The time from the source list to the event of the sync's end.
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

/// All processes of the product. The sync by hand has a second LpmService, because the results of
/// stores go to all clients.
struct Product {
    Product(const Place& place, const std::filesystem::path& folder, int logLevel)
        : root(folder),
          cloudPort(LayOut(root)),
          cloud({place.ProgramPath("UeiCloud"), "--port", std::to_string(cloudPort), "--catalogue",
                 MakeCatalogue(place, root)},
                root, 2),
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
        byHand->Run(InTurns(1));
        client.Sync(InTurns(1));
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

    std::filesystem::path root;
    std::uint16_t cloudPort;
    Program cloud;
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
    // A round takes seconds, most of them for the connection to the cloud.
    for (std::size_t round = 0; round < effort.rounds / 3 + 1; ++round) {
        Product product(place, root, logLevel);
        std::vector<double> ours;
        std::vector<double> byHand;
        for (std::size_t i = 0; i < kSyncsARound; ++i) {
            const auto names = InTurns(i);
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

std::vector<Figure> MeasureGrowingLists(const Place& place, const Effort& effort)
{
    Product product(place, place.roots / "lists", effort.logLevel);
    const auto another = Names(kTelevisions - 1, 1);
    std::vector<Figure> figures;
    for (const unsigned count : kGrowingLists) {
        const auto names = Names(0, count);
        std::vector<double> service;
        std::vector<double> floor;
        for (std::size_t i = 0; i < effort.rounds; ++i) {
            service.push_back(Millis([&] { product.client.Sync(names); }) / count);
            floor.push_back(Millis([&] { product.byHand->Run(names); }) / count);
            product.client.Sync(another);
        }
        figures.push_back(CompareRounds(fmt::format("a code set in a list of {}", count), "ms", 3,
                                        service, floor));
    }
    return figures;
}

std::vector<Figure> MeasureSyncGrowth(const Place& place, const Effort& effort)
{
    Product product(place, place.roots / "syncs", effort.logLevel);
    const auto sync = [&product](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i) {
            product.client.Sync(InTurns(i));
        }
    };
    sync(kSyncsOfGrowth / 10);
    const auto before = product.service.ReadMemory().dirty;
    sync(kSyncsOfGrowth);
    return {GrowthFigure("dirty memory, growth over a thousand syncs", before,
                         product.service.ReadMemory().dirty)};
}

}  // namespace Bench
