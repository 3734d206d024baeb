#pragma once

#include "Trial.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <atomic>
#include <mutex>
#include <thread>

namespace kivo::check {

/// "200 body", "204 without body", or the kind of the failure.
std::string summary(const platform::UrlOutcome& outcome);

/// What completions receive, in order. Copies share it, and a completion that comes too late does no harm.
class Outcomes {
public:
    struct One {
        std::string tag;
        platform::UrlOutcome outcome;
        std::thread::id thread;
    };

    platform::UrlCompletion completion(std::string tag = "") const;

    std::vector<One> all() const;

    std::size_t count() const { return all().size(); }

    /// The summaries, each after its tag.
    std::vector<std::string> summaries() const;

    /// How many completions ran while another one did.
    int overlaps() const { return state_->overlaps; }

private:
    struct State {
        std::mutex mutex;
        std::vector<One> all;
        std::atomic<int> inside = 0;
        std::atomic<int> overlaps = 0;
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// An https server with known certificates. The server sets a cookie named after the path of each request, and lists
/// the cookies that requests bring. Requests to a path that begins with /late wait for `release()`.
class CookieServer {
public:
    explicit CookieServer(const Trial& trial);
    CookieServer(const CookieServer&) = delete;
    CookieServer& operator=(const CookieServer&) = delete;
    ~CookieServer();

    std::string url(const std::string& path = "/") const;

    /// The leaf and the intermediate, in DER form.
    const std::vector<std::string>& chain() const { return chain_; }

    const std::filesystem::path& root() const { return root_; }

    /// The cookies of each request, "none" without any.
    std::vector<std::string> cookies() const;

    void release();

private:
    struct Server;

    std::vector<std::string> chain_;
    std::filesystem::path root_;
    std::unique_ptr<Server> server_;
};

/// An identity service as the other side, and services that trust it.
class UrlRig {
public:
    explicit UrlRig(Trial& trial);

    std::shared_ptr<platform::UrlSession> session(platform::UrlSessionConfiguration configuration = {},
                                                  std::shared_ptr<platform::UrlSessionDelegate> delegate = nullptr,
                                                  std::shared_ptr<platform::DispatchQueue> queue = nullptr) const;

    /// The address that `answer` is about; another name has answers of its own.
    std::string url(const std::string& name = "update") const;

    /// Answers every request so from now on.
    void answer(const simulator::Fault& fault, simulator::Calls calls = simulator::Calls::all());

    /// Sends one request and waits for its outcome; absent when none comes.
    std::optional<platform::UrlOutcome> exchange(platform::UrlSession& session, platform::UrlRequest request) const;

    std::string summaryOf(platform::UrlSession& session, platform::UrlRequest request) const;

    std::size_t requests() const { return server.requests().size(); }

    Trial& trial;
    simulator::IdentityService server;
    platform::Services services;
};

} // namespace kivo::check
