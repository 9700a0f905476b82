// An HTTP time-stamp authority: RFC 3161, and the older Authenticode exchange. docs/authority.md tells how it
// is run.
//
//     authority --key FILE --certificate FILE --policy OID --serials FILE [OPTION...]
//
// Says "listening on http://ADDRESS:PORT/" when it does, and ends with SIGTERM or SIGINT.
//
// A request comes by server.h (connections and threads) and http.h (HTTP) to answer.h (the exchanges), which
// has stamper.h make the stamp.

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <deque>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "authority/clock.h"
#include "authority/http.h"
#include "authority/log.h"
#include "authority/options.h"
#include "authority/serial_numbers.h"
#include "authority/server.h"
#include "authority/stamper.h"
#include "authority/stop_signal.h"
#include "support/certificate.h"
#include "support/failure.h"
#include "support/files.h"
#include "support/key.h"

namespace {

using namespace authority;
using example::Certificate;
using example::Failure;
using Quillmark::CBlob;
using Quillmark::CBlobList;

std::optional<std::string> password_of(const Options& options) {
    if (options.password_file.empty()) {
        return std::nullopt;
    }
    std::ifstream file(options.password_file);
    std::string password;
    if (!std::getline(file, password) && !file.eof()) {
        throw Failure("reading the password from " + options.password_file);
    }
    if (!password.empty() && password.back() == '\r') {
        password.pop_back();
    }
    return password;
}

// The authority's own first, each once: a bundle may hold it again.
CBlobList certificates_of(const Options& options) {
    CBlobList certificates = example::read_certificates(options.certificate);
    for (const std::string& file : options.chain) {
        for (const CBlob& certificate : example::read_certificates(file)) {
            if (std::find(certificates.begin(), certificates.end(), certificate) == certificates.end()) {
                certificates.push_back(certificate);
            }
        }
    }
    for (const CBlob& certificate : certificates) {
        Certificate{certificate};  // throws when it is none
    }
    return certificates;
}

void check_certificate(const CBlob& der) {
    if (!Certificate(der).is_for_time_stamping()) {
        throw Failure(
            "the certificate is not for time-stamping: its extended key usage must be timeStamping, alone "
            "and critical (RFC 3161 2.3)");
    }
}

int serve(const Options& options) {
    const StopSignal stop;
    const CBlobList certificates = certificates_of(options);
    check_certificate(certificates.front());
    const example::Key key(options.key, password_of(options));
    SerialNumbers serial_numbers(options.serials);
    Clock clock(options.ordering);
    Server server(options.address, options.port);

    std::deque<Stamper> stampers;
    std::deque<HttpSession> http_sessions;
    std::vector<Server::Session> sessions;
    for (unsigned int number = 0; number < options.threads; ++number) {
        Stamper& stamper =
            stampers.emplace_back(Authority{options, key, serial_numbers, clock}, certificates);
        HttpSession& session = http_sessions.emplace_back(stamper, stop, options.max_request,
                                                          [&server] { return server.crowded(); });
        sessions.emplace_back([&session](Descriptor socket) { session.serve(std::move(socket)); });
    }
    stampers.front().try_out();
    log_stamp("listening on " + server.url());
    server.run(sessions, stop);
    return 0;
}

int authority_main(const std::vector<std::string>& arguments) {
    std::signal(SIGPIPE, SIG_IGN);
    const std::optional<Options> options = read_options(arguments);
    return options ? serve(*options) : 0;
}

}  // namespace

int main(int argc, char** argv) {
    return example::run(argc, argv, authority_main);
}
