// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The library's callbacks gather a request into the record of http_message.h and send the answer.
#include "editor/server.h"

#include "editor/request_handler.h"

#include <microhttpd.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <netinet/in.h>
#include <new>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace editor {
namespace {

/// Bytes of a refused body that are read so that the client gets to read its answer; then the connection is cut.
constexpr std::size_t kMostDroppedBytes = 64U << 20U;
/// For the head of a request; a longer one is answered with 431 or 414.
constexpr std::size_t kHeadBytes = 32U << 10U;

/// A request on its way in.
struct Exchange {
    Request request;
    bool hasHead = false;
    std::optional<Response> refusal;
    std::size_t dropped = 0;
};

void* beginExchange(void* /*server*/, char const* target, MHD_Connection* /*connection*/) noexcept
{
    auto* const exchange = new (std::nothrow) Exchange;
    if (exchange != nullptr) {
        exchange->request.target = target;
    }
    return exchange;
}

void endExchange(void* /*server*/, MHD_Connection* /*connection*/, void** context, MHD_RequestTerminationCode /*how*/)
{
    delete static_cast<Exchange*>(*context);
    *context = nullptr;
}

MHD_Result addHeader(void* headers, MHD_ValueKind /*kind*/, char const* name, char const* value)
{
    std::string text = value == nullptr ? "" : value;
    text.erase(text.find_last_not_of(" \t") + 1);  // the library has taken off what stands in front
    static_cast<std::vector<Header>*>(headers)->push_back({name, std::move(text)});
    return MHD_YES;
}

/// Decoding is nobody's business here: what was sent is compared with fixed names.
std::size_t keepEscapes(void* /*server*/, MHD_Connection* /*connection*/, char* text)
{
    return std::strlen(text);
}

void freeBody(void* body)
{
    delete static_cast<std::string*>(body);
}

MHD_Result send(MHD_Connection* connection, Response response)
{
    auto body = std::make_unique<std::string>(std::move(response.body));
    MHD_Response* const reply =
        MHD_create_response_from_buffer_with_free_callback_cls(body->size(), body->data(), freeBody, body.get());
    if (reply == nullptr) {
        return MHD_NO;
    }
    static_cast<void>(body.release());  // freeBody has it now
    for (Header const& header : response.headers) {
        MHD_add_response_header(reply, header.name.c_str(), header.value.c_str());
    }
    MHD_Result const queued = MHD_queue_response(connection, static_cast<unsigned>(response.status), reply);
    MHD_destroy_response(reply);
    return queued;
}

MHD_Result takeHead(ServerCallbacks const& callbacks, MHD_Connection* connection, Exchange& exchange)
{
    exchange.hasHead = true;
    MHD_get_connection_values(connection, MHD_HEADER_KIND, addHeader, &exchange.request.headers);
    exchange.refusal = callbacks.refuse(exchange.request);
    // Who waits for leave to send the body gets the answer instead of it.
    bool const asksFirst = !valuesOf(exchange.request, "Expect").empty();
    return exchange.refusal && asksFirst ? send(connection, *std::move(exchange.refusal)) : MHD_YES;
}

MHD_Result takeBody(Exchange& exchange, std::string_view data)
{
    std::string& body = exchange.request.body;
    bool const keeps = !exchange.refusal && takesBody(exchange.request.method) && body.size() <= kMostBodyBytes;
    if (keeps) {
        body.append(data);  // one byte too many tells the handler that it is too long
        return MHD_YES;
    }
    exchange.dropped += data.size();
    return exchange.dropped <= kMostDroppedBytes ? MHD_YES : MHD_NO;
}

MHD_Result onRequest(void* callbacks, MHD_Connection* connection, char const* /*path*/, char const* method,
                     char const* /*version*/, char const* data, std::size_t* dataSize, void** context)
{
    auto* const exchange = static_cast<Exchange*>(*context);
    if (exchange == nullptr) {
        return MHD_NO;
    }
    auto const& answers = *static_cast<ServerCallbacks const*>(callbacks);
    // Nothing may be thrown through the library, which is C.
    try {
        if (!exchange->hasHead) {
            exchange->request.method = method;
            return takeHead(answers, connection, *exchange);
        }
        if (*dataSize != 0) {
            return takeBody(*exchange, {data, std::exchange(*dataSize, 0)});
        }
        return send(connection, exchange->refusal ? *std::move(exchange->refusal) : answers.answer(exchange->request));
    } catch (std::exception const&) {
        return MHD_NO;
    }
}

[[noreturn]] void failToListen(unsigned short port, int error)
{
    std::string const address = "127.0.0.1:" + std::to_string(port);
    if (error == EADDRINUSE) {
        throw std::runtime_error(address + ": this port is in use; give another --port, or none for any free one");
    }
    throw std::runtime_error(address + ": cannot listen: " + std::strerror(error) +
                             "; give another --port, or none for any free one");
}

/// A socket that listens on the loopback address.
int listenOn(unsigned short port, unsigned short& chosen)
{
    int const socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    // A port whose last connections are still dying out can be taken again at once.
    int const on = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    if (socket < 0 || setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        bind(socket, generic, size) != 0 || listen(socket, SOMAXCONN) != 0 ||
        getsockname(socket, generic, &size) != 0) {
        int const error = errno;
        if (socket >= 0) {
            close(socket);
        }
        failToListen(port, error);
    }
    chosen = ntohs(address.sin_port);
    return socket;
}

}  // namespace

struct Server::Impl {
    ServerLimits limits;
    unsigned short port = 0;
    int socket = -1;
    ServerCallbacks callbacks;
    MHD_Daemon* daemon = nullptr;
};

Server::Server(unsigned short port, ServerLimits limits) : impl_(std::make_unique<Impl>())
{
    impl_->limits = limits;
    impl_->socket = listenOn(port, impl_->port);
}

Server::~Server()
{
    stop();
}

void Server::stop()
{
    int const socket = std::exchange(impl_->socket, -1);
    if (MHD_Daemon* const daemon = std::exchange(impl_->daemon, nullptr)) {
        MHD_stop_daemon(daemon);  // closes the socket too
    } else if (socket >= 0) {
        close(socket);
    }
}

unsigned short Server::port() const
{
    return impl_->port;
}

void Server::start(ServerCallbacks callbacks)
{
    impl_->callbacks = std::move(callbacks);
    constexpr int kStrict = 1;
    impl_->daemon = MHD_start_daemon(
        MHD_USE_AUTO | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_THREAD_PER_CONNECTION, 0, nullptr, nullptr, onRequest,
        &impl_->callbacks, MHD_OPTION_LISTEN_SOCKET, impl_->socket, MHD_OPTION_CONNECTION_LIMIT,
        impl_->limits.connections, MHD_OPTION_CONNECTION_TIMEOUT, impl_->limits.timeoutSeconds,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, kHeadBytes, MHD_OPTION_STRICT_FOR_CLIENT, kStrict,
        MHD_OPTION_URI_LOG_CALLBACK, beginExchange, nullptr, MHD_OPTION_UNESCAPE_CALLBACK, keepEscapes, nullptr,
        MHD_OPTION_NOTIFY_COMPLETED, endExchange, nullptr, MHD_OPTION_END);
    if (impl_->daemon == nullptr) {
        throw std::runtime_error("127.0.0.1:" + std::to_string(impl_->port) +
                                 ": the server does not start; end other programs first");
    }
}

}  // namespace editor
