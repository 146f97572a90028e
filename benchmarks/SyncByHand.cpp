// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/SyncByHand.h"

#include <array>
#include <stdexcept>

#include <curl/curl.h>
#include <openssl/evp.h>

#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "benchmarks/KeyClient.h"

namespace Bench {

using namespace LpmServiceMessages;

namespace {

void Fail(const char* what)
{
    throw std::runtime_error(std::string("a sync by hand: ") + what);
}

std::size_t Collect(char* bytes, std::size_t, std::size_t size, void* text)
{
    static_cast<std::string*>(text)->append(bytes, size);
    return size;
}

/// A frame of the blaster: length, command, device number, data.
std::string Frame(char command, const std::string& rest)
{
    const std::size_t length = rest.size() + 1;
    std::string frame = {static_cast<char>(length >> 8U), static_cast<char>(length & 0xFFU),
                         command};
    return frame + rest;
}

std::string DeviceOf(const std::string& name)
{
    const auto number = static_cast<unsigned>(std::stoul(name.substr(1)));
    return {static_cast<char>(number >> 8U), static_cast<char>(number & 0xFFU)};
}

std::string FromBase64(const std::string& text)
{
    std::string bytes(text.size(), '\0');
    const int size = ::EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                       reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
    const auto padding = text.size() - (text.find_last_not_of('=') + 1);
    bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size) - padding);
    return bytes;
}

}  // namespace

/// The handle keeps its connection, as the service's does.
struct SyncByHand::Post {
    explicit Post(std::uint16_t port) : curl(::curl_easy_init())
    {
        headers = ::curl_slist_append(nullptr, "Content-Type: application/json");
        const std::string url = "http://127.0.0.1:" + std::to_string(port) + "/qsp/v1";
        ::curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
        ::curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
        ::curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &Collect);
        ::curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer);
    }
    ~Post()
    {
        ::curl_slist_free_all(headers);
        ::curl_easy_cleanup(curl);
    }
    Post(const Post&) = delete;
    Post& operator=(const Post&) = delete;

    CURL* curl;
    curl_slist* headers;
    std::string answer;
};

SyncByHand::SyncByHand(const std::string& root, std::uint16_t cloudPort)
    : m_post(std::make_unique<Post>(cloudPort)),
      m_stream(ConnectAsSoonAsPossible(SocketPath(root, "LpmService")))
{
}

SyncByHand::~SyncByHand() = default;

void SyncByHand::Run(const std::vector<std::string>& names)
{
    SendFrame(IPC_SEND_TO_BLASTER, kRequest, Frame(0x09, "\x01"));
    WaitFor(IPC_SEND_TO_BLASTER, kReply);
    for (const auto& name : names) {
        Load(Frame(0x22, DeviceOf(name) + Download(name)));
    }
    for (const auto& name : names) {
        SendFrame(IPC_BLASTER_KEY_MAP_RQST, kEvent, Frame(0x02, DeviceOf(name)));
        WaitFor(BLASTER_KEY_MAP_RESP, kEvent);
    }
}

std::string SyncByHand::Download(const std::string& name)
{
    const std::string body =
        R"({"operation":"codeset","identity":"byhand","vector":"v","name":")" + name + "\"}";
    m_post->answer.clear();
    ::curl_easy_setopt(m_post->curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    ::curl_easy_setopt(m_post->curl, CURLOPT_POSTFIELDS, body.c_str());
    const std::string member = "\"data\":\"";
    if (::curl_easy_perform(m_post->curl) != CURLE_OK) {
        Fail("a post");
    }
    const auto begin = m_post->answer.find(member);
    if (begin == std::string::npos) {
        Fail("a code set");
    }
    const auto from = begin + member.size();
    return FromBase64(m_post->answer.substr(from, m_post->answer.find('"', from) - from));
}

void SyncByHand::SendFrame(std::uint32_t id, std::uint32_t kind, const std::string& frame)
{
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(frame);
    LPMIpcServicePacket packet;
    packet.set_destination(IPC_DEVICE_LPM);
    packet.set_msg_typename("TRS_BlasterMsg_t");
    message.SerializeToString(packet.mutable_nested_message());
    FillEnvelope(m_out, id, kind, kind == kRequest ? ++m_lastToken : 0, packet);
    m_stream.Put(m_out);
    if (!m_stream.Flush()) {
        Fail("a frame");
    }
}

void SyncByHand::Load(const std::string& frame)
{
    BulkNotifyData_t message;
    message.set_length(static_cast<std::uint32_t>(frame.size()));
    message.set_type(BULK_TYPE_BLASTER_RECORD);
    message.set_data(frame);
    LPMIpcServicePacket packet;
    packet.set_destination(IPC_DEVICE_LPM);
    message.SerializeToString(packet.mutable_nested_message());
    FillEnvelope(m_out, BULK_TRANSFER_DATA_REQUEST, kRequest, ++m_lastToken, packet);
    m_stream.Put(m_out);
    if (!m_stream.Flush()) {
        Fail("a load");
    }
    WaitFor(IPC_BULK_BLASTER_DONE, kEvent);
}

void SyncByHand::WaitFor(std::uint32_t id, std::uint32_t kind)
{
    while (true) {
        while (m_stream.Next(m_in)) {
            if (m_in.id() == id && m_in.kind() == kind) {
                return;
            }
        }
        if (!m_stream.Fill()) {
            Fail("the LPM service");
        }
    }
}

}  // namespace Bench
