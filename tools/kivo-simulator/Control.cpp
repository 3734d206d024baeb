#include "Control.hpp"

#include "BoundedServer.hpp"
#include "LoopbackServer.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <expected>
#include <limits>
#include <optional>
#include <thread>
#include <utility>

namespace simulation {
namespace {

using namespace std::chrono_literals;

constexpr auto loopback = "127.0.0.1";
constexpr std::size_t largestBody = std::size_t{64} * 1024;
/// The bytes that are read of a body beyond the bound, so that the client receives the refusal and no reset.
constexpr std::size_t mostDiscarded = BoundedServer::mostOfBody;
constexpr int mostListeners = 8;
/// Each listener keeps a thread.
constexpr std::size_t threads = mostListeners + 16;

/// The page takes everything from the program itself; nothing is loaded, framed or sent elsewhere.
constexpr std::array<std::pair<const char*, const char*>, 5> headers{{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
}};

void send(const Answer& answer, httplib::Response& response) {
    response.status = answer.status;
    response.set_content(answer.body, answer.contentType);
}

/// Reads a body to its end. A body that is too long or breaks off is answered with a refusal.
std::expected<std::string, Answer> bodyOf(const httplib::ContentReader& reader) {
    std::string body;
    std::size_t size = 0;
    const auto take = [&](const char* data, std::size_t length) {
        size += length;
        if (size <= largestBody) {
            body.append(data, length);
        }
        return size <= mostDiscarded;
    };
    const bool isWhole = reader(take);
    if (size > largestBody) {
        return std::unexpected{refusal(413, "the body has more than 64 KiB")};
    }
    if (!isWhole) {
        return std::unexpected{refusal(400, "the body breaks off")};
    }
    return body;
}

bool isJson(const httplib::Request& request) {
    const auto type = request.get_header_value("Content-Type");
    return type.substr(0, type.find_first_of("; ")) == "application/json";
}

} // namespace

class Control::Server {
public:
    Server(Interface& interface, Events& events, int port)
        : interface_{interface}
        , events_{events} {
        http_.new_task_queue = [] { return new httplib::ThreadPool(threads); };
        // The bound is `bodyOf`'s, which also knows bodies without a length.
        http_.set_payload_max_length(std::numeric_limits<std::size_t>::max());
        http_.set_default_headers({headers.begin(), headers.end()});
        // The library answers for itself where a request is no HTTP.
        http_.set_error_handler([](const httplib::Request&, httplib::Response& response) {
            if (response.body.empty()) {
                send(refusal(response.status, "the request cannot be read"), response);
            }
        });
        const auto handle = [this](const httplib::Request& request, httplib::Response& response,
                                   const httplib::ContentReader& reader) { serve(request, response, bodyOf(reader)); };
        const auto handleWithoutBody = [this](const httplib::Request& request, httplib::Response& response) {
            serve(request, response, std::string{});
        };
        constexpr auto anywhere = ".*";
        http_.Post(anywhere, handle).Put(anywhere, handle).Patch(anywhere, handle).Delete(anywhere, handle);
        http_.Get(anywhere, handleWithoutBody).Options(anywhere, handleWithoutBody);
        port_ = kivo::simulator::bindToLoopback(http_, port, "the control interface: ");
        thread_ = kivo::simulator::startAnswering(http_);
    }

    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    ~Server() {
        events_.stop();
        http_.stop();
        thread_.join();
    }

    std::string authority() const { return std::string{loopback} + ":" + std::to_string(port_); }

private:
    /// Why the request does not come from this machine's programs or the page itself; empty if it does.
    std::string problemOfOrigin(const httplib::Request& request) const {
        const std::array hosts{authority(), "localhost:" + std::to_string(port_)};
        const auto host = request.get_header_value("Host");
        // A page of another name that its owner lets point to this machine names itself here.
        if (std::ranges::find(hosts, host) == hosts.end()) {
            return "the Host is not " + hosts[0] + " or " + hosts[1];
        }
        if (request.has_header("Origin") && request.get_header_value("Origin") != "http://" + host) {
            return "the request comes from a page of another origin";
        }
        const auto site = request.get_header_value("Sec-Fetch-Site");
        return site.empty() || site == "same-origin" || site == "none"
                   ? ""
                   : "the request comes from a page of another site";
    }

    void serve(const httplib::Request& request, httplib::Response& response,
               const std::expected<std::string, Answer>& body) {
        // HTTP lets a server ignore ranges. The library would copy the answer for each of thousands of them.
        const_cast<httplib::Request&>(request).ranges.clear();
        if (const auto problem = problemOfOrigin(request); !problem.empty()) {
            send(refusal(403, problem), response);
            return;
        }
        Question question;
        question.method = request.method == "HEAD" ? "GET" : request.method;
        question.path = request.path;
        if (question.path == "/events") {
            if (request.method == "GET") {
                stream(request, response);
            } else {
                send(refusal(405, "the address takes GET only"), response);
            }
            return;
        }
        const bool hasBody = request.method != "GET" && request.method != "HEAD" && request.method != "DELETE";
        if (!body) {
            send(body.error(), response);
        } else if (hasBody && request.method != "OPTIONS" && !isJson(request)) {
            send(refusal(415, "the Content-Type is not application/json"), response);
        } else {
            question.query = {request.params.begin(), request.params.end()};
            question.body = *body;
            send(interface_.answer(question), response);
        }
    }

    void stream(const httplib::Request& request, httplib::Response& response) {
        if (++listeners_ > mostListeners) {
            --listeners_;
            send(refusal(503, "there are " + std::to_string(mostListeners) + " listeners already"), response);
            return;
        }
        auto seen = events_.last();
        if (const auto id = request.get_header_value("Last-Event-ID"); !id.empty()) {
            std::from_chars(id.data(), id.data() + id.size(), seen);
        }
        response.set_chunked_content_provider(
            "text/event-stream",
            [this, seen, isFirst = true](std::size_t, httplib::DataSink& sink) mutable {
                // A listener that has gone is noticed by what is sent to it.
                const auto event = isFirst ? std::optional<std::string>{"retry: 1000\n\n"} : events_.next(seen, 2s);
                isFirst = false;
                if (!event) {
                    sink.done();
                    return true;
                }
                const auto& text = event->empty() ? stillHere() : *event;
                return sink.is_writable() && sink.write(text.data(), text.size());
            },
            [this](bool) { --listeners_; });
    }

    static const std::string& stillHere() {
        static const std::string comment = ":\n\n";
        return comment;
    }

    Interface& interface_;
    Events& events_;
    std::atomic<int> listeners_ = 0;
    BoundedServer http_;
    int port_ = 0;
    std::thread thread_;
};

Control::Control(Interface& interface, Events& events, int port)
    : server_{std::make_unique<Server>(interface, events, port)} {}

Control::~Control() = default;

std::string Control::address() const {
    return "http://" + server_->authority();
}

} // namespace simulation
