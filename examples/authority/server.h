#pragma once

// The port that the authority listens on, and the threads that serve its connections.

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "authority/descriptor.h"
#include "authority/stop_signal.h"

namespace authority {

/// Accepts connections and hands each to a thread.
class Server {
  public:
    /// Serves one connection to its end; throws nothing.
    using Session = std::function<void(Descriptor socket)>;

    /// Listens from now on. Throws `example::Failure` when that is not possible.
    Server(const std::string& address, std::uint16_t port);

    /// "http://ADDRESS:PORT/" with the port that the system has chosen.
    std::string url() const;

    /// Whether connections wait for a thread. Any thread may ask.
    bool crowded() const;

    /// Serves connections, each session in a thread of its own, until the signal comes; then those that the
    /// system has accepted till then, and returns when the last is done.
    void run(const std::vector<Session>& sessions, const StopSignal& stop);

  private:
    void accept_until(const StopSignal& stop);
    bool accept_one();
    void give(Descriptor socket);
    void work(const Session& session);
    Descriptor take();
    void end(std::vector<std::thread>& threads);

    Descriptor listener_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Descriptor> waiting_;
    bool ended_ = false;
};

}  // namespace authority
