#include "bench/authority_load/http_connection.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Quillmark::bench {

namespace {

// An authority that says nothing for so long is taken for dead.
constexpr timeval kPatience{30, 0};

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

// The value of the field `name` in the head of an answer, empty when there is none (RFC 9110 5.1: the case of
// names is of no account).
std::string_view field(std::string_view head, std::string_view name) {
    for (std::size_t start = head.find("\r\n"); start != std::string_view::npos;) {
        start += 2;
        const std::size_t end = head.find("\r\n", start);
        const std::string_view line = head.substr(start, end - start);
        if (line.size() > name.size() && line[name.size()] == ':' &&
            strncasecmp(line.data(), name.data(), name.size()) == 0) {
            const std::size_t value = line.find_first_not_of(' ', name.size() + 1);
            return value == std::string_view::npos ? std::string_view() : line.substr(value);
        }
        start = end;
    }
    return {};
}

void check_head(std::string_view head) {
    const std::string_view status_line = head.substr(0, head.find("\r\n"));
    if (!status_line.starts_with("HTTP/1.1 200")) {
        throw std::runtime_error("answered with " + std::string(status_line));
    }
    const std::string_view type = field(head, "Content-Type");
    if (type != "application/timestamp-reply") {
        throw std::runtime_error("the answer has the type '" + std::string(type) + "'");
    }
}

std::size_t content_length(std::string_view head) {
    const std::string_view text = field(head, "Content-Length");
    std::size_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
        throw std::runtime_error("the answer has no length");
    }
    return length;
}

}  // namespace

HttpConnection::HttpConnection(const std::string& address, std::uint16_t port)
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), host_(address + ":" + std::to_string(port)) {
    if (socket_ < 0) {
        fail("no socket");
    }
    sockaddr_in peer{};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(port);
    const int at_once = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
    if (inet_pton(AF_INET, address.c_str(), &peer.sin_addr) != 1 ||
        connect(socket_, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0) {
        const int error = errno;
        close(socket_);
        errno = error;
        fail("cannot connect to " + host_);
    }
}

HttpConnection::~HttpConnection() {
    close(socket_);
}

void HttpConnection::send_all(const std::string& octets) {
    for (std::size_t sent = 0; sent < octets.size();) {
        const ssize_t part = send(socket_, octets.data() + sent, octets.size() - sent, MSG_NOSIGNAL);
        if (part < 0 && errno != EINTR) {
            fail("sending");
        }
        sent += part < 0 ? 0 : static_cast<std::size_t>(part);
    }
}

void HttpConnection::receive() {
    char part[16384];
    ssize_t size = 0;
    do {
        size = recv(socket_, part, sizeof part, 0);
    } while (size < 0 && errno == EINTR);
    if (size < 0) {
        fail("receiving");
    }
    if (size == 0) {
        throw std::runtime_error("the authority closed the connection");
    }
    received_.append(part, static_cast<std::size_t>(size));
}

std::span<const std::uint8_t> HttpConnection::post(std::span<const std::uint8_t> body) {
    std::string octets =
        "POST / HTTP/1.1\r\nHost: " + host_ +
        "\r\nContent-Type: application/timestamp-query\r\nContent-Length: " + std::to_string(body.size()) +
        "\r\n\r\n";
    octets.append(body.begin(), body.end());
    send_all(octets);

    received_.clear();
    std::size_t head_size = 0;
    while ((head_size = received_.find("\r\n\r\n")) == std::string::npos) {
        receive();
    }
    const std::string head = received_.substr(0, head_size + 2);
    check_head(head);
    const std::size_t body_start = head_size + 4;
    const std::size_t size = content_length(head);
    while (received_.size() - body_start < size) {
        receive();
    }
    if (received_.size() - body_start != size) {
        throw std::runtime_error("the answer is longer than it says");
    }
    return {reinterpret_cast<const std::uint8_t*>(received_.data()) + body_start, size};
}

}  // namespace Quillmark::bench
