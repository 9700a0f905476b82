#include "authority/http.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <optional>

#include <httplib.h>

#include "authority/log.h"
#include "support/failure.h"

namespace authority {

namespace {

// Room for the head of a request, and for what chunks of a single octet add to the body.
constexpr std::size_t kHeadOctets = 65536;
constexpr std::size_t kChunkOctets = 8;

// How long a connection may keep its thread while others wait for one.
constexpr std::chrono::seconds kCrowdedTime(1);

enum class Exchange { kQuery, kAuthenticode };

// A request that gets a status and a line of text.
struct Refused {
    int status;
    std::string text;
};

// Without parameters, in lower case: types are compared so (RFC 9110 8.3.1).
std::string media_type(const std::string& content_type) {
    std::string type = content_type.substr(0, content_type.find(';'));
    type.erase(type.find_last_not_of(" \t") + 1);
    std::transform(type.begin(), type.end(), type.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    return type;
}

std::optional<Exchange> exchange_of(const httplib::Request& request) {
    const std::string type = media_type(request.get_header_value("Content-Type"));
    if (type == "application/timestamp-query") {
        return Exchange::kQuery;
    }
    return type == "application/octet-stream" ? std::make_optional(Exchange::kAuthenticode) : std::nullopt;
}

// RFC 9112 6.3: a length that is in doubt would leave the end of the request in doubt.
std::optional<Refused> refuse_length(const httplib::Request& request, std::size_t limit) {
    const std::size_t lengths = request.get_header_value_count("Content-Length");
    const bool chunked = request.has_header("Transfer-Encoding");
    if (lengths == 0 && !chunked) {
        return Refused{411, "the request has no length"};
    }
    const std::string length = request.get_header_value("Content-Length");
    if (chunked
            ? lengths != 0 || request.get_header_value("Transfer-Encoding") != "chunked"
            : lengths != 1 || length.empty() || length.find_first_not_of("0123456789") != std::string::npos) {
        return Refused{400, "the length of the request is in doubt"};
    }
    if (!chunked && (length.size() > 18 || std::stoull(length) > limit)) {
        return Refused{413, "the request has more than " + std::to_string(limit) + " octets"};
    }
    return std::nullopt;
}

// What the head of a request is refused for.
std::optional<Refused> refuse_head(const httplib::Request& request, std::size_t limit) {
    if (request.path != "/") {
        return Refused{404, "there is nothing but /"};
    }
    if (request.method != "POST") {
        return Refused{405, "requests are posted"};
    }
    if (!exchange_of(request)) {
        return Refused{
            415, "requests are application/timestamp-query, or application/octet-stream for Authenticode"};
    }
    return refuse_length(request, limit);
}

void set_refused(httplib::Response& response, const Refused& refused) {
    response.status = refused.status;
    response.set_content(refused.text + "\n", "text/plain");
    if (refused.status == 405) {
        response.set_header("Allow", "POST");
    }
}

class Stream : public httplib::Stream {
  public:
    explicit Stream(Connection& connection) : connection_(connection) {}

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    ssize_t read(char* octets, std::size_t size) override { return connection_.read(octets, size); }
    ssize_t write(const char* octets, std::size_t size) override {
        connection_.write(octets, size);
        return static_cast<ssize_t>(size);
    }
    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string&, int&) const override {}
    // Asked for only to be compared with what select() can take, which is not called here.
    socket_t socket() const override { return 0; }

  private:
    Connection& connection_;
};

}  // namespace

// httplib reads and writes the messages; connections and threads are this program's, so that the end of the
// process, slow clients and failures anywhere are in its hands.
class HttpSession::Server : public httplib::Server {
  public:
    Server(Stamper& stamper, const StopSignal& stop, std::size_t limit, std::function<bool()> crowded);

    void serve(Descriptor socket);

  private:
    using Request = httplib::Request;
    using Response = httplib::Response;

    HandlerResponse check(const Request& request, Response& response) const;
    void answer(const Request& request, Response& response, const httplib::ContentReader& read);
    std::optional<std::string> read_body(Response& response, const httplib::ContentReader& read) const;
    void finish(Response& response);

    Stamper& stamper_;
    const StopSignal& stop_;
    const std::size_t limit_;
    const std::function<bool()> crowded_;

    // Of the connection that is served
    std::string client_;
    std::string trouble_;  // what the operator reads of a request in place of the client's text
    std::chrono::steady_clock::time_point begin_;
    bool client_closes_ = false;
    bool close_ = false;
};

HttpSession::Server::Server(Stamper& stamper, const StopSignal& stop, std::size_t limit,
                            std::function<bool()> crowded)
    : stamper_(stamper), stop_(stop), limit_(limit), crowded_(std::move(crowded)) {
    set_pre_routing_handler(
        [this](const Request& request, Response& response) { return check(request, response); });
    set_expect_100_continue_handler([this](const Request& request, Response& response) {
        return check(request, response) == HandlerResponse::Handled ? response.status : 100;
    });
    Post("/", [this](const Request& request, Response& response, const httplib::ContentReader& read) {
        answer(request, response, read);
    });
    set_exception_handler([](const Request&, Response& response, const std::exception_ptr&) {
        response.status = 500;  // what was thrown is nobody's to read
    });
    set_post_routing_handler([this](const Request&, Response& response) { finish(response); });
}

void HttpSession::Server::serve(Descriptor socket) {
    Connection connection(std::move(socket), stop_, kHeadOctets + kChunkOctets * limit_);
    Stream stream(connection);
    client_ = connection.client();
    begin_ = std::chrono::steady_clock::now();
    close_ = false;
    while (!close_ && connection.wait_for_request(crowded_)) {
        close_ = true;  // unless the request gets as far as `finish`
        client_closes_ = false;
        trouble_.clear();
        // Ranges are for documents; an answer is sent whole.
        const bool written =
            process_request(stream, false, client_closes_, [](Request& request) { request.ranges.clear(); });
        close_ = !connection.flush() || !written || close_;
    }
    if (close_) {
        connection.finish();
    }
}

httplib::Server::HandlerResponse HttpSession::Server::check(const Request& request,
                                                            Response& response) const {
    const std::optional<Refused> refused = refuse_head(request, limit_);
    if (!refused) {
        return HandlerResponse::Unhandled;
    }
    set_refused(response, *refused);
    return HandlerResponse::Handled;
}

std::optional<std::string> HttpSession::Server::read_body(Response& response,
                                                          const httplib::ContentReader& read) const {
    std::string body;
    bool too_long = false;
    const bool complete = read([&](const char* octets, std::size_t size) {
        too_long = size > limit_ - body.size();
        if (!too_long) {
            body.append(octets, size);
        }
        return !too_long;
    });
    if (too_long) {
        set_refused(response, {413, "the request has more than " + std::to_string(limit_) + " octets"});
    } else if (!complete) {
        set_refused(response, {response.status >= 400 ? response.status : 400,
                               "the body of the request cannot be read"});
    }
    return complete ? std::make_optional(std::move(body)) : std::nullopt;
}

void HttpSession::Server::answer(const Request& request, Response& response,
                                 const httplib::ContentReader& read) {
    try {
        const std::optional<std::string> body = read_body(response, read);
        if (!body) {
            return;
        }
        const auto answer_body =
            exchange_of(request) == Exchange::kQuery ? answer_query : answer_authenticode;
        const Answer answer = answer_body(*body, stamper_, client_);
        response.status = answer.status;
        response.set_content(answer.body, answer.content_type);
    } catch (...) {
        set_refused(response, {500, "the authority has trouble of its own"});
        trouble_ = example::describe_exception();
    }
}

// The last that is done to every answer before it is written.
void HttpSession::Server::finish(Response& response) {
    const bool long_enough = std::chrono::steady_clock::now() - begin_ > kCrowdedTime;
    // A request that is not answered as it should be may not have been read to its end.
    close_ = response.status != 200 || client_closes_ || stop_.requested() || (long_enough && crowded_());
    response.headers.erase("Keep-Alive");
    response.headers.erase("Connection");
    response.set_header("Connection", close_ ? "close" : "keep-alive");
    if (!response.has_header("Content-Length")) {
        response.set_header("Content-Length", std::to_string(response.body.size()));
    }
    if (response.status != 200) {
        const std::string said = response.body.substr(0, response.body.find('\n'));
        const std::string text = said.empty() ? "the request is not understood" : said;
        log_trouble("refused " + client_ + " " + std::to_string(response.status) + ": " +
                    (trouble_.empty() ? text : trouble_));
    }
}

HttpSession::HttpSession(Stamper& stamper, const StopSignal& stop, std::size_t request_octets,
                         std::function<bool()> crowded)
    : server_(std::make_unique<Server>(stamper, stop, request_octets, std::move(crowded))) {}

HttpSession::~HttpSession() = default;

void HttpSession::serve(Descriptor socket) noexcept {
    try {
        server_->serve(std::move(socket));
    } catch (...) {
        // The connection is gone, and the thread goes on.
        try {
            log_trouble("failed: " + example::describe_exception());
        } catch (...) {
        }
    }
}

}  // namespace authority
