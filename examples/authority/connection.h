#pragma once

// One client's connection: octets in and out, and how long it may take with them.

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include <sys/types.h>

#include "authority/descriptor.h"
#include "authority/stop_signal.h"

namespace authority {

/// A connection with buffers. Serves one thread.
class Connection {
  public:
    /// `request_octets` is what one request may have at most, head and all.
    Connection(Descriptor socket, const StopSignal& stop, std::size_t request_octets);

    /// The address of the client, without its port.
    const std::string& client() const { return client_; }

    /// Waits for the first octet of a request. False when there will be none: the client has left, has been
    /// idle for long, or has nothing to say while the process ends or `crowded` says that others wait.
    bool wait_for_request(const std::function<bool()>& crowded);

    /// As `recv`: 0 at the end, -1 on failure, also when the request takes too long or is too large. What was
    /// written before is sent first.
    ssize_t read(char* octets, std::size_t size);

    /// Keeps the octets for `flush`.
    void write(const char* octets, std::size_t size);

    /// Sends what was written. False when the client does not take it.
    bool flush();

    /// Says that nothing more comes, and gives the client a moment to read it all: closed over octets that
    /// were not read, a connection is reset, and the answer with it.
    void finish();

  private:
    using Time = std::chrono::steady_clock::time_point;

    bool wait(short events, Time until) const;
    ssize_t receive(char* octets, std::size_t size, Time until) const;

    Descriptor socket_;
    const StopSignal& stop_;
    const std::size_t request_octets_;
    std::string client_;
    std::array<char, 8192> received_;
    std::size_t begin_ = 0;  // of what is received and not read
    std::size_t end_ = 0;
    std::string to_send_;
    Time deadline_;
    std::size_t octets_left_ = 0;
};

}  // namespace authority
