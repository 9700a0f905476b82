#include "authority/connection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace authority {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

// For all of a request, and for all of an answer to be taken: a client that trickles holds a thread no
// longer.
constexpr seconds kRequestTime(5);
constexpr seconds kAnswerTime(5);

// Between requests, and when others wait for the thread.
constexpr seconds kIdleTime(15);
constexpr seconds kCrowdedIdleTime(1);
constexpr milliseconds kGlance(100);

// For the client to take the end of a connection.
constexpr seconds kFinishTime(1);

std::string peer_of(int socket) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    char host[NI_MAXHOST] = "unknown";
    if (getpeername(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0) {
        getnameinfo(reinterpret_cast<const sockaddr*>(&address), size, host, sizeof host, nullptr, 0,
                    NI_NUMERICHOST);
    }
    return host;
}

int milliseconds_until(steady_clock::time_point time) {
    const auto left = std::chrono::ceil<milliseconds>(time - steady_clock::now());
    return static_cast<int>(std::max<milliseconds::rep>(left.count(), 0));
}

}  // namespace

Connection::Connection(Descriptor socket, const StopSignal& stop, std::size_t request_octets)
    : socket_(std::move(socket)),
      stop_(stop),
      request_octets_(request_octets),
      client_(peer_of(socket_.get())) {
    const int on = 1;
    setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

bool Connection::wait_for_request(const std::function<bool()>& crowded) {
    const Time begin = steady_clock::now();
    while (begin_ == end_) {
        pollfd events[] = {{socket_.get(), POLLIN, 0}, {stop_.descriptor(), POLLIN, 0}};
        const int ready = poll(events, 2, static_cast<int>(kGlance.count()));
        if (events[0].revents != 0) {
            break;
        }
        const auto idle = steady_clock::now() - begin;
        if (ready != 0 || idle > kIdleTime || (idle > kCrowdedIdleTime && crowded())) {
            return false;
        }
    }
    deadline_ = steady_clock::now() + kRequestTime;
    octets_left_ = request_octets_;
    return true;
}

bool Connection::wait(short events, Time until) const {
    pollfd socket = {socket_.get(), events, 0};
    int ready = -1;
    do {
        ready = poll(&socket, 1, milliseconds_until(until));
    } while (ready < 0 && errno == EINTR);
    return ready == 1;
}

ssize_t Connection::receive(char* octets, std::size_t size, Time until) const {
    ssize_t received = recv(socket_.get(), octets, size, MSG_DONTWAIT);
    while (received < 0 && errno == EAGAIN && wait(POLLIN, until)) {
        received = recv(socket_.get(), octets, size, MSG_DONTWAIT);
    }
    return received;
}

ssize_t Connection::read(char* octets, std::size_t size) {
    if (begin_ == end_) {
        if (!flush()) {
            return -1;
        }
        const ssize_t received =
            octets_left_ > 0 ? receive(received_.data(), std::min(received_.size(), octets_left_), deadline_)
                             : -1;
        if (received <= 0) {
            return received;
        }
        begin_ = 0;
        end_ = static_cast<std::size_t>(received);
        octets_left_ -= end_;
    }
    const std::size_t taken = std::min(size, end_ - begin_);
    std::memcpy(octets, received_.data() + begin_, taken);
    begin_ += taken;
    return static_cast<ssize_t>(taken);
}

void Connection::write(const char* octets, std::size_t size) {
    to_send_.append(octets, size);
}

bool Connection::flush() {
    const Time until = steady_clock::now() + kAnswerTime;
    std::size_t sent = 0;
    while (sent < to_send_.size()) {
        const ssize_t taken =
            send(socket_.get(), to_send_.data() + sent, to_send_.size() - sent, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (taken < 0 && (errno != EAGAIN || !wait(POLLOUT, until))) {
            break;
        }
        sent += static_cast<std::size_t>(std::max<ssize_t>(taken, 0));
    }
    const bool all = sent == to_send_.size();
    to_send_.clear();
    return all;
}

void Connection::finish() {
    const Time until = steady_clock::now() + kFinishTime;
    if (shutdown(socket_.get(), SHUT_WR) != 0) {
        return;
    }
    while (steady_clock::now() < until && receive(received_.data(), received_.size(), until) > 0) {
    }
}

}  // namespace authority
