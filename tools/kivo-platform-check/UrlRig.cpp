#include "UrlRig.hpp"

#include "Certificates.hpp"

#include <httplib.h>

#include <condition_variable>

namespace kivo::check {
namespace {

using platform::UrlOutcome;
using simulator::Endpoint;

} // namespace

std::string summary(const UrlOutcome& outcome) {
    if (!outcome) {
        return std::string{name(outcome.error().kind)};
    }
    return std::to_string(outcome->status) + (outcome->body ? " " + *outcome->body : " without body");
}

platform::UrlCompletion Outcomes::completion(std::string tag) const {
    return [state = state_, tag = std::move(tag)](UrlOutcome outcome) {
        state->overlaps += state->inside++ == 0 ? 0 : 1;
        {
            const std::scoped_lock lock{state->mutex};
            state->all.push_back({tag, std::move(outcome), std::this_thread::get_id()});
        }
        std::this_thread::yield();
        --state->inside;
    };
}

std::vector<Outcomes::One> Outcomes::all() const {
    const std::scoped_lock lock{state_->mutex};
    return state_->all;
}

std::vector<std::string> Outcomes::summaries() const {
    std::vector<std::string> lines;
    for (const auto& one : all()) {
        lines.push_back((one.tag.empty() ? "" : one.tag + " ") + summary(one.outcome));
    }
    return lines;
}

struct CookieServer::Server {
    Server(const std::filesystem::path& chain, const std::filesystem::path& key)
        : http{chain.c_str(), key.c_str()} {
        http.Get(".*", [this](const auto& request, auto& response) { serve(request, response); });
        http.set_keep_alive_timeout(1);
        port = http.bind_to_any_port("127.0.0.1");
        thread = std::thread{[this] { http.listen_after_bind(); }};
        while (!http.is_running()) {
            std::this_thread::yield();
        }
    }

    void serve(const httplib::Request& request, httplib::Response& response) {
        std::unique_lock lock{mutex};
        cookies.push_back(request.has_header("Cookie") ? request.get_header_value("Cookie") : "none");
        if (request.path.starts_with("/late")) {
            released.wait(lock, [this] { return isReleased; });
        }
        response.set_header("Set-Cookie", request.path.substr(1) + "=42; Secure; Path=/");
        response.set_content("cookie", "text/plain");
    }

    httplib::SSLServer http;
    int port = 0;
    std::thread thread;
    mutable std::mutex mutex;
    std::condition_variable released;
    bool isReleased = false;
    std::vector<std::string> cookies;
};

CookieServer::CookieServer(const Trial& trial) {
    const simulator::CertificateAuthority authority;
    const auto issued = authority.issue({.keyType = simulator::KeyType::ec256});
    chain_ = {derOf(issued.chain), derOf(issued.chain.substr(issued.chain.find("-----BEGIN", 1)))};
    root_ = trial.write("cookies/root.pem", authority.root());
    server_ = std::make_unique<Server>(trial.write("cookies/chain.pem", issued.chain),
                                       trial.write("cookies/key.pem", issued.privateKey));
}

CookieServer::~CookieServer() {
    release();
    server_->http.stop();
    server_->thread.join();
}

std::string CookieServer::url(const std::string& path) const {
    return "https://localhost:" + std::to_string(server_->port) + path;
}

std::vector<std::string> CookieServer::cookies() const {
    const std::scoped_lock lock{server_->mutex};
    return server_->cookies;
}

void CookieServer::release() {
    {
        const std::scoped_lock lock{server_->mutex};
        server_->isReleased = true;
    }
    server_->released.notify_all();
}

UrlRig::UrlRig(Trial& with)
    : trial{with}
    , services{with.services(server.trustedCertificates())} {
    answer(simulator::Fault::answer("hello"));
}

std::shared_ptr<platform::UrlSession> UrlRig::session(platform::UrlSessionConfiguration configuration,
                                                      std::shared_ptr<platform::UrlSessionDelegate> delegate,
                                                      std::shared_ptr<platform::DispatchQueue> queue) const {
    auto made = required(services.urlSessions).make(std::move(configuration), std::move(delegate), std::move(queue));
    required(made);
    return made;
}

std::string UrlRig::url(const std::string& name) const {
    return "https://localhost:" + std::to_string(server.port()) + "/session/check/" + name;
}

void UrlRig::answer(const simulator::Fault& fault, simulator::Calls calls) {
    server.clearFaults();
    server.inject(Endpoint::update, fault, calls);
    server.inject(Endpoint::status, simulator::Fault::answer("quick"));
}

std::optional<UrlOutcome> UrlRig::exchange(platform::UrlSession& session, platform::UrlRequest request) const {
    const Outcomes outcomes;
    const auto task = session.dataTask(std::move(request), outcomes.completion());
    trial.await([&] { return outcomes.count() > 0; });
    const auto all = outcomes.all();
    return all.empty() ? std::nullopt : std::optional{all.front().outcome};
}

std::string UrlRig::summaryOf(platform::UrlSession& session, platform::UrlRequest request) const {
    const auto outcome = exchange(session, std::move(request));
    return outcome ? summary(*outcome) : "no completion";
}

} // namespace kivo::check
