// SPDX-License-Identifier: Apache-2.0

#include "uei/HttpPost.h"

#include <array>
#include <cstdlib>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>

#include "uei/UEIInterface.h"

namespace TrellanService::Tests {
namespace {

using boost::asio::ip::tcp;

/// Answers one request on loopback, then closes.
class OneAnswer {
public:
    /// Endless: sends more bytes until the client closes.
    explicit OneAnswer(std::string answer, bool endless = false)
        : m_acceptor(m_context, {boost::asio::ip::address_v4::loopback(), 0}),
          m_thread([this, answer = std::move(answer), endless] { Serve(answer, endless); })
    {
    }

    std::string Url() const
    {
        return "http://127.0.0.1:" + std::to_string(m_acceptor.local_endpoint().port()) + "/q";
    }

    /// The request; valid after the post.
    std::string Request()
    {
        m_thread.join();
        return m_request;
    }

private:
    void Serve(const std::string& answer, bool endless)
    {
        tcp::socket socket = m_acceptor.accept();
        boost::system::error_code error;
        boost::asio::read_until(socket, boost::asio::dynamic_buffer(m_request), "{}", error);
        boost::asio::write(socket, boost::asio::buffer(answer), error);
        const std::string more(65536, 'x');
        while (endless && !error) {
            boost::asio::write(socket, boost::asio::buffer(more), error);
        }
    }

    boost::asio::io_context m_context;
    tcp::acceptor m_acceptor;
    std::string m_request;
    std::thread m_thread;
};

struct Outcome {
    int code;
    std::string response;
    bool hasResponse;
};

Outcome Post(const std::string& url)
{
    char* response = nullptr;
    std::uint32_t length = 7;
    const int code = UEIInterface::HttpPost("{}", 2, &response, &length, url.c_str());
    Outcome outcome{code, std::string(response == nullptr ? "" : response, length),
                    response != nullptr};
    std::free(response);
    return outcome;
}

TEST(HttpPost, BringsTheAnswerPostAfterPost)
{
    setenv("http_proxy", "http://127.0.0.1:1", 1);
    for (const std::string text : {"one", "two", "anew"}) {
        OneAnswer server("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + text);
        const Outcome outcome = Post(server.Url());
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.response, text);
        const std::string request = server.Request();
        EXPECT_TRUE(request.starts_with("POST /q HTTP/1.1\r\n")) << request;
        EXPECT_NE(request.find("Content-Type: application/json; charset=utf-8\r\n"),
                  std::string::npos);
        EXPECT_TRUE(request.ends_with("\r\n\r\n{}"));
        if (text == "two") {
            Http::End();
        }
    }
    unsetenv("http_proxy");
}

TEST(HttpPost, GivesAReasonAndNoResponseForAFailure)
{
    struct Row {
        const char* name;
        const char* answer;
        bool endless;
        int code;
    };
    constexpr std::array<Row, 4> kRows = {{
        {"status 400", "HTTP/1.1 400 No\r\nContent-Length: 2\r\n\r\nno", false, 17},
        {"endless", "HTTP/1.1 200 OK\r\n\r\nx", true, 46},
        {"redirect to plain", "HTTP/1.1 302 Go\r\nLocation: http://127.0.0.1:1/\r\n\r\n", false, 7},
        {"no answer", "", false, 5},
    }};
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        OneAnswer server(row.answer, row.endless);
        const Outcome outcome = Post(server.Url());
        EXPECT_EQ(outcome.code, row.code);
        EXPECT_FALSE(outcome.hasResponse);
        EXPECT_EQ(outcome.response, "");
        server.Request();
    }
}

TEST(HttpPost, ReachesPlainServersOnThisMachineOnly)
{
    for (const char* url :
         {"http://192.0.2.1/", "http://127.0.0.1@192.0.2.1/", "http://127.0.0.1.example/",
          "ftp://127.0.0.1/", "file:///etc/passwd"}) {
        EXPECT_EQ(Post(url).code, 7) << url;
    }
    std::string refused;
    {
        boost::asio::io_context context;
        tcp::acceptor free(context, {boost::asio::ip::address_v4::loopback(), 0});
        refused = "http://127.0.0.1:" + std::to_string(free.local_endpoint().port()) + "/";
    }
    EXPECT_EQ(Post(refused).code, 12);
}

TEST(HttpPost, RefusesAMissingArgument)
{
    char* response = nullptr;
    std::uint32_t length = 0;
    const auto post = &UEIInterface::HttpPost;
    EXPECT_EQ(post(nullptr, 2, &response, &length, "http://127.0.0.1/"), 45);
    EXPECT_EQ(post("{}", 0, &response, &length, "http://127.0.0.1/"), 45);
    EXPECT_EQ(post("{}", 2, nullptr, &length, "http://127.0.0.1/"), 45);
    EXPECT_EQ(post("{}", 2, &response, nullptr, "http://127.0.0.1/"), 45);
    EXPECT_EQ(post("{}", 2, &response, &length, nullptr), 45);
}

TEST(HttpPost, TurnsLibcurlsResultsIntoReasons)
{
    constexpr std::array<std::array<int, 2>, 10> kRows = {{{-1, 5},
                                                           {0, 0},
                                                           {4, 5},
                                                           {8, 5},
                                                           {28, 14},
                                                           {42, 205},
                                                           {60, 63},
                                                           {66, 65},
                                                           {67, 5},
                                                           {99, 5}}};
    for (const auto& [curlCode, reason] : kRows) {
        EXPECT_EQ(Http::ReasonCode(curlCode), reason) << curlCode;
    }
}

}  // namespace
}  // namespace TrellanService::Tests
