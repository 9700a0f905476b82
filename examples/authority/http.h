#pragma once

// The HTTP of the authority: which requests go to which exchange (RFC 3161 3.4), and the statuses of the
// others.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "authority/answer.h"
#include "authority/connection.h"
#include "authority/stop_signal.h"

namespace authority {

/// What one thread answers requests with.
class HttpSession {
  public:
    /// `request_octets` is the largest body that is taken. `crowded` says whether connections wait for a
    /// thread. The stamper and the signal must outlive this.
    HttpSession(Stamper& stamper, const StopSignal& stop, std::size_t request_octets,
                std::function<bool()> crowded);
    ~HttpSession();

    /// Answers the requests of one connection, one after the other, and ends it. Throws nothing.
    void serve(Descriptor socket) noexcept;

  private:
    class Server;
    std::unique_ptr<Server> server_;
};

}  // namespace authority
