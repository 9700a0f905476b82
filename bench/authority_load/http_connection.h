#pragma once

// A connection of HTTP/1.1 that is kept open, as little of it as a load generator needs: posts, one after the
// other, each with the answer to it.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Quillmark::bench {

/// The connection to one server. All failures are thrown as `std::runtime_error`.
class HttpConnection {
  public:
    /// Connects to `address`, an IPv4 address in dotted text.
    HttpConnection(const std::string& address, std::uint16_t port);
    ~HttpConnection();
    HttpConnection(const HttpConnection&) = delete;
    HttpConnection& operator=(const HttpConnection&) = delete;

    /// Posts a time-stamp request (RFC 3161 3.4) and waits for the answer. Its body is lent until the next
    /// post. Throws for any status but 200 and any type but that of a time-stamp response.
    std::span<const std::uint8_t> post(std::span<const std::uint8_t> body);

  private:
    void send_all(const std::string& octets);
    void receive();

    int socket_ = -1;
    std::string host_;
    std::string received_;
};

}  // namespace Quillmark::bench
