#include "authority/server.h"

#include <cerrno>
#include <chrono>
#include <cstring>

#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include "support/failure.h"

namespace authority {

namespace {

using example::Failure;
using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

Addresses addresses_of(const std::string& address, std::uint16_t port) {
    addrinfo hints = {};
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int status = getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (status != 0) {
        throw Failure("listening on " + address + ": " + gai_strerror(status));
    }
    return Addresses(found, freeaddrinfo);
}

Descriptor listen_on(const addrinfo& address) {
    Descriptor listener(
        socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, address.ai_protocol));
    const int on = 1;
    // A port is free again as soon as nobody listens there, whatever of its connections is left.
    const bool listens = listener &&
                         setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
                         bind(listener.get(), address.ai_addr, address.ai_addrlen) == 0 &&
                         listen(listener.get(), SOMAXCONN) == 0;
    return listens ? std::move(listener) : Descriptor();
}

// Descriptors or memory have run out; others will give some back.
bool is_shortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

}  // namespace

Server::Server(const std::string& address, std::uint16_t port) {
    const Addresses addresses = addresses_of(address, port);
    for (const addrinfo* next = addresses.get(); next != nullptr && !listener_; next = next->ai_next) {
        listener_ = listen_on(*next);
    }
    if (!listener_) {
        throw Failure("listening on " + address + " port " + std::to_string(port) + ": " +
                      std::strerror(errno));
    }
}

std::string Server::url() const {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    char host[NI_MAXHOST];
    char port[NI_MAXSERV];
    if (getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
        getnameinfo(reinterpret_cast<const sockaddr*>(&address), size, host, sizeof host, port, sizeof port,
                    NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        throw Failure("the address that is listened on cannot be told");
    }
    const std::string shown = address.ss_family == AF_INET6 ? "[" + std::string(host) + "]" : host;
    return "http://" + shown + ":" + port + "/";
}

bool Server::crowded() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return !waiting_.empty();
}

void Server::run(const std::vector<Session>& sessions, const StopSignal& stop) {
    std::vector<std::thread> threads;
    try {
        for (const Session& session : sessions) {
            threads.emplace_back([this, &session] { work(session); });
        }
        accept_until(stop);
    } catch (...) {
        end(threads);
        throw;
    }
    end(threads);
}

void Server::work(const Session& session) {
    while (Descriptor socket = take()) {
        session(std::move(socket));
    }
}

void Server::accept_until(const StopSignal& stop) {
    while (!stop.requested()) {
        pollfd events[] = {{listener_.get(), POLLIN, 0}, {stop.descriptor(), POLLIN, 0}};
        poll(events, 2, -1);
        accept_one();
    }
    // Clients that came before the end, and no more of them than can have waited.
    for (int left = SOMAXCONN; left > 0 && accept_one(); --left) {
    }
    listener_ = Descriptor();
}

// Whether there may be another connection to accept.
bool Server::accept_one() {
    Descriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (socket) {
        give(std::move(socket));
        return true;
    }
    const int error = errno;
    if (is_shortage(error)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return error == ECONNABORTED || error == EINTR;
}

void Server::give(Descriptor socket) {
    try {
        const std::lock_guard<std::mutex> lock(mutex_);
        waiting_.push_back(std::move(socket));
    } catch (const std::bad_alloc&) {
        return;  // this client is sent away, and the next may be served
    }
    changed_.notify_one();
}

// None when there will be no more.
Descriptor Server::take() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return !waiting_.empty() || ended_; });
    if (waiting_.empty()) {
        return Descriptor();
    }
    Descriptor socket = std::move(waiting_.front());
    waiting_.pop_front();
    return socket;
}

// The threads end when nothing waits any more.
void Server::end(std::vector<std::thread>& threads) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace authority
