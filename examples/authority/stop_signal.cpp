#include "authority/stop_signal.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <poll.h>
#include <sys/signalfd.h>

#include "support/failure.h"

namespace authority {

StopSignal::StopSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    if (pthread_sigmask(SIG_BLOCK, &signals, nullptr) == 0) {
        signals_ = Descriptor(signalfd(-1, &signals, SFD_CLOEXEC));
    }
    if (!signals_) {
        throw example::Failure(std::string("taking over the signals: ") + std::strerror(errno));
    }
}

bool StopSignal::requested() const {
    pollfd signals = {signals_.get(), POLLIN, 0};
    return poll(&signals, 1, 0) == 1;
}

}  // namespace authority
