// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The server over real connections: half requests, slow clients, many clients, long bodies.
#include "editor/server.h"

#include "editor/request_handler.h"
#include "raw_http.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using editor::Request;
using editor::Response;
using editor::Server;
using editor::ServerLimits;
using raw_http::ask;
using raw_http::bodyOf;
using raw_http::Connection;
using raw_http::statusOf;

/// Answers every request with what has come in.
Response echo(Request const& request)
{
    std::string text = request.method + " " + request.target + "\n";
    for (editor::Header const& header : request.headers) {
        text += header.name + ": " + header.value + "\n";
    }
    return editor::contentResponse(200, "text/plain", text + request.body);
}

std::optional<Response> refuseNothing(Request const& /*head*/)
{
    return std::nullopt;
}

/// A server that is asked for one thing only.
struct EchoServer : Server {
    explicit EchoServer(ServerLimits limits = {}) : Server(0, limits) { start({refuseNothing, echo}); }
};

std::string const kGet = "GET /a HTTP/1.1\r\nHost: h\r\n\r\n";

TEST(Server, GivesTheRequestAsItWasSent)
{
    EchoServer const server;
    EXPECT_EQ(
        bodyOf(ask(server.port(), "GET /%2e%2E/a%00?token=%20+x HTTP/1.1\r\nHost: h\r\nX-A:  b \r\nx-a: c\r\n\r\n")),
        "GET /%2e%2E/a%00?token=%20+x\nHost: h\nX-A: b\nx-a: c\n");
    EXPECT_EQ(bodyOf(ask(server.port(), "POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 3\r\n\r\nabc")),
              "POST /\nHost: h\nContent-Length: 3\nabc");
    EXPECT_EQ(
        bodyOf(ask(server.port(),
                   "PUT / HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n")),
        "PUT /\nHost: h\nTransfer-Encoding: chunked\nabcde");
}

TEST(Server, KeepsNoBodyThatNobodyLooksAt)
{
    EchoServer const server;
    EXPECT_EQ(bodyOf(ask(server.port(), "GET / HTTP/1.1\r\nHost: h\r\nContent-Length: 3\r\n\r\nabc")),
              "GET /\nHost: h\nContent-Length: 3\n");
}

TEST(Server, ServesSeveralRequestsOfOneConnection)
{
    EchoServer const server;
    Connection const connection(server.port());
    for (int i = 0; i < 3; ++i) {
        connection.send(kGet);
        EXPECT_EQ(bodyOf(connection.readAnswer()), "GET /a\nHost: h\n");
    }
}

TEST(Server, ListensOnTheLoopbackAddressOnly)
{
    EchoServer const server;
    sockaddr_in other{};
    other.sin_family = AF_INET;
    other.sin_port = htons(server.port());
    // Any address of 127/8 is this machine; a server on all addresses would answer there too.
    other.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1);
    int const socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_NE(connect(socket, reinterpret_cast<sockaddr*>(&other), sizeof other), 0);
    EXPECT_EQ(errno, ECONNREFUSED);
    close(socket);
}

TEST(Server, SaysThatAPortIsInUse)
{
    EchoServer const server;
    try {
        Server const second(server.port());
        FAIL() << "nothing thrown";
    } catch (std::runtime_error const& failure) {
        EXPECT_EQ(failure.what(), "127.0.0.1:" + std::to_string(server.port()) +
                                      ": this port is in use; give another --port, or none for any free one");
    }
}

TEST(Server, TakesAPortAgainAtOnce)
{
    unsigned short port = 0;
    for (int i = 0; i < 3; ++i) {
        Server server(port);
        port = server.port();
        server.start({refuseNothing, echo});
        EXPECT_EQ(statusOf(ask(port, kGet)), 200);
    }
}

struct BadRow {
    char const* name;
    char const* request;
    int status;
};

class BadRequests : public testing::TestWithParam<BadRow> {};

/// What is no HTTP reaches nobody and gets an answer all the same.
TEST_P(BadRequests, AreRefused)
{
    Server server(0);
    server.start({refuseNothing, [](Request const& request) {
                      ADD_FAILURE() << "answered: " << request.target;
                      return Response{};
                  }});
    EXPECT_EQ(statusOf(ask(server.port(), GetParam().request)), GetParam().status);
}

std::string const kLongTarget = "GET /" + std::string(100000, 'a') + " HTTP/1.1\r\nHost: h\r\n\r\n";
std::string const kLongHeader = "GET / HTTP/1.1\r\nHost: h\r\nA: " + std::string(100000, 'a') + "\r\n\r\n";

INSTANTIATE_TEST_SUITE_P(
    Rows, BadRequests,
    testing::Values(BadRow{"no_host", "GET / HTTP/1.1\r\n\r\n", 400}, BadRow{"long_target", kLongTarget.c_str(), 414},
                    BadRow{"long_header", kLongHeader.c_str(), 431},
                    BadRow{"length_is_no_number", "POST / HTTP/1.1\r\nHost: h\r\nContent-Length: abc\r\n\r\n", 400}),
    [](auto const& row) { return row.param.name; });

TEST(Server, DropsHalfRequests)
{
    int answered = 0;
    Server server(0);
    server.start({refuseNothing, [&answered](Request const& request) {
                      ++answered;
                      return echo(request);
                  }});
    for (char const* const half :
         {"", "GE", "hello\r\n\r\n", "GET / HTTP/1.1\r\nHo", "PUT / HTTP/1.1\r\nHost: h\r\nContent-Length: 9\r\n\r\n",
          "PUT / HTTP/1.1\r\nHost: h\r\nContent-Length: 9\r\n\r\nhalf",
          "PUT / HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhal"}) {
        Connection const connection(server.port());
        connection.send(half);
        connection.finish();
        EXPECT_NE(statusOf(connection.readAll()), 200) << half;
    }
    EXPECT_EQ(statusOf(ask(server.port(), kGet)), 200);
    EXPECT_EQ(answered, 1);
}

TEST(Server, ClosesConnectionsOnWhichNothingMoves)
{
    EchoServer const server(ServerLimits{400, 1});
    Connection const silent(server.port());
    Connection const half(server.port());
    half.send("PUT / HTTP/1.1\r\nHost: h\r\nContent-Length: 9\r\n\r\nhalf");
    EXPECT_NE(statusOf(silent.readAll()), 200);
    EXPECT_NE(statusOf(half.readAll()), 200);
}

TEST(Server, ServesAHundredConnectionsBesideAHundredHalfOnes)
{
    EchoServer const server;
    std::vector<std::unique_ptr<Connection>> half;
    std::vector<std::unique_ptr<Connection>> whole;
    for (int i = 0; i < 120; ++i) {
        half.push_back(std::make_unique<Connection>(server.port()));
        half.back()->send("PUT / HTTP/1.1\r\nHost: h\r\nContent-Le");
        whole.push_back(std::make_unique<Connection>(server.port()));
    }
    for (auto const& connection : whole) {
        connection->send(kGet);
    }
    for (auto const& connection : whole) {
        EXPECT_EQ(bodyOf(connection->readAnswer()), "GET /a\nHost: h\n");
    }
    // The half ones lose nothing by it.
    for (auto const& connection : half) {
        connection->send("ngth: 3\r\n\r\nabc");
    }
    for (auto const& connection : half) {
        EXPECT_EQ(bodyOf(connection->readAnswer()), "PUT /\nHost: h\nContent-Length: 3\nabc");
    }
}

TEST(Server, WaitsForNoSlowAnswer)
{
    std::promise<void> begun;
    std::promise<void> release;
    std::shared_future<void> const released = release.get_future().share();
    Server server(0);
    server.start({refuseNothing, [&begun, released](Request const& request) {
                      if (request.target == "/slow") {
                          begun.set_value();
                          released.wait();
                      }
                      return echo(request);
                  }});
    Connection const slow(server.port());
    slow.send("GET /slow HTTP/1.1\r\nHost: h\r\n\r\n");
    begun.get_future().wait();
    EXPECT_EQ(statusOf(ask(server.port(), kGet)), 200);
    release.set_value();
    EXPECT_EQ(bodyOf(slow.readAnswer()), "GET /slow\nHost: h\n");
}

TEST(Server, AnswersWhoIsRefusedThoughTheBodyIsLong)
{
    Server server(0);
    server.start({[](Request const&) { return std::optional(editor::errorResponse(413, "too long")); },
                  [](Request const& request) {
                      ADD_FAILURE() << "answered: " << request.target;
                      return Response{};
                  }});
    std::string const head = "PUT / HTTP/1.1\r\nHost: h\r\nContent-Length: 6000000\r\n";
    // The whole body is sent before the answer is read.
    Connection const patient(server.port());
    ASSERT_TRUE(patient.send(head + "\r\n" + std::string(6000000, 'x')));
    EXPECT_EQ(statusOf(patient.readAnswer()), 413);
    // Who asks first is told before.
    EXPECT_EQ(statusOf(ask(server.port(), head + "Expect: 100-continue\r\n\r\n")), 413);
}

TEST(Server, KeepsOfALongBodyNoMoreThanTellsThatItIsTooLong)
{
    std::size_t kept = 0;
    Server server(0);
    server.start({refuseNothing, [&kept](Request const& request) {
                      kept = request.body.size();
                      return echo({});
                  }});
    Connection const connection(server.port());
    connection.send("PUT / HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n");
    std::string const chunk = "100000\r\n" + std::string(0x100000, 'x') + "\r\n";
    for (int i = 0; i < 20; ++i) {
        connection.send(chunk);
    }
    connection.send("0\r\n\r\n");
    EXPECT_EQ(statusOf(connection.readAnswer()), 200);
    EXPECT_GT(kept, editor::kMostBodyBytes);
    EXPECT_LT(kept, editor::kMostBodyBytes + 0x100000);
}

TEST(Server, CutsWhoSendsWithoutEnd)
{
    Server server(0);
    server.start({[](Request const&) { return std::optional(editor::errorResponse(403, "no")); }, echo});
    Connection const connection(server.port());
    connection.send("PUT / HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n");
    std::string const chunk = "100000\r\n" + std::string(0x100000, 'x') + "\r\n";
    int sent = 0;
    while (sent < 200 && connection.send(chunk)) {
        ++sent;
    }
    EXPECT_LT(sent, 100);
}

TEST(Server, SurvivesAnAnswerThatThrows)
{
    Server server(0);
    server.start({refuseNothing, [](Request const& request) -> Response {
                      if (request.target == "/throw") {
                          throw std::runtime_error("no");
                      }
                      return echo(request);
                  }});
    EXPECT_EQ(ask(server.port(), "GET /throw HTTP/1.1\r\nHost: h\r\n\r\n"), "");
    EXPECT_EQ(statusOf(ask(server.port(), kGet)), 200);
}

TEST(Server, SendsLargeAnswersWhole)
{
    std::string const large(30000000, 'p');
    Server server(0);
    server.start({refuseNothing, [&large](Request const&) {
                      return editor::contentResponse(200, "application/octet-stream", large);
                  }});
    EXPECT_TRUE(bodyOf(ask(server.port(), kGet)) == large);
}

TEST(Server, EndsWithOpenConnections)
{
    auto server = std::make_unique<EchoServer>();
    Connection const silent(server->port());
    Connection const half(server->port());
    half.send("GET / HT");
    Connection const idle(server->port());
    idle.send(kGet);
    EXPECT_EQ(statusOf(idle.readAnswer()), 200);
    server.reset();
    EXPECT_EQ(idle.readAll(), "");
}

}  // namespace
