#include "UrlRig.hpp"

#include <algorithm>

namespace kivo::check {
namespace {

using namespace std::chrono_literals;
using platform::AuthChallengeDisposition;
using platform::ServerTrust;
using Answer = std::function<void(AuthChallengeDisposition)>;
using Lines = std::vector<std::string>;

constexpr auto accept = AuthChallengeDisposition::useCredential;
constexpr auto refuse = AuthChallengeDisposition::cancelAuthenticationChallenge;

class Judge final : public platform::UrlSessionDelegate {
public:
    using Verdict = std::function<void(const ServerTrust& trust, const Answer& answer)>;

    explicit Judge(Verdict verdict)
        : verdict_{std::move(verdict)} {}

    void didReceiveChallenge(const ServerTrust* trust, Answer answer) override {
        {
            const std::scoped_lock lock{mutex_};
            seen_.push_back(*trust);
            thread_ = std::this_thread::get_id();
        }
        verdict_(*trust, answer);
    }

    bool judgesServerTrust() const override { return true; }

    void didSendBodyData(const std::shared_ptr<platform::UrlSessionTask>&, std::uint64_t, std::uint64_t) override {}

    std::vector<ServerTrust> seen() const {
        const std::scoped_lock lock{mutex_};
        return seen_;
    }

    std::thread::id thread() const {
        const std::scoped_lock lock{mutex_};
        return thread_;
    }

private:
    const Verdict verdict_;
    mutable std::mutex mutex_;
    std::vector<ServerTrust> seen_;
    std::thread::id thread_;
};

/// A delegate that leaves the judgement to the system, and follows the upload.
class Follower final : public platform::UrlSessionDelegate {
public:
    explicit Follower(Outcomes outcomes)
        : outcomes_{std::move(outcomes)} {}

    void didReceiveChallenge(const ServerTrust*, Answer answer) override { answer(accept); }

    void didSendBodyData(const std::shared_ptr<platform::UrlSessionTask>& task, std::uint64_t sent,
                         std::uint64_t expected) override {
        const std::scoped_lock lock{mutex_};
        isLate_ = isLate_ || outcomes_.count() > 0;
        hasNoTask_ = hasNoTask_ || !task;
        reports_.emplace_back(sent, expected);
    }

    void expectWhole(Trial& trial, std::uint64_t size) const {
        const std::scoped_lock lock{mutex_};
        trial.expect(!isLate_, "no progress after the completion");
        trial.expect(!hasNoTask_, "the task with every report");
        trial.expect(std::ranges::is_sorted(reports_), "progress that rises");
        trial.expect(std::ranges::adjacent_find(reports_) == reports_.end(), "no report twice");
        trial.expect(!reports_.empty() && reports_.back() == std::pair(size, size),
                     "the whole body at last, came " + (reports_.empty() ? "no report" : shown(reports_.back())));
    }

private:
    const Outcomes outcomes_;
    mutable std::mutex mutex_;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> reports_;
    bool isLate_ = false;
    bool hasNoTask_ = false;
};

/// A rig whose system trusts no server at all.
struct JudgedRig : UrlRig {
    using UrlRig::UrlRig;

    std::shared_ptr<platform::UrlSession> judged(const std::shared_ptr<Judge>& judge) const {
        return required(strangers.urlSessions).make({}, judge);
    }

    CookieServer other{trial};
    /// Services that trust neither server.
    platform::Services strangers =
        trial.services(trial.write("stranger.pem", simulator::CertificateAuthority{}.root()));
};

void asksTheDelegate(Trial& trial) {
    const JudgedRig rig{trial};
    const auto judge = std::make_shared<Judge>([](const auto&, const auto& answer) { answer(accept); });
    const auto session = rig.judged(judge);
    const Outcomes outcomes;
    for (std::size_t i = 1; i <= 2; ++i) {
        session->dataTask({.url = rig.other.url()}, outcomes.completion());
        trial.expectSoon("an answer", [&] { return outcomes.count() >= i; });
    }
    trial.expectEqual("answers", outcomes.summaries(), Lines{"200 cookie", "200 cookie"});
    const auto seen = judge->seen();
    trial.expectEqual("questions for two requests on one connection", seen.size(), 1U);
    if (!seen.empty()) {
        trial.expectEqual("the host", seen.front().host, "localhost");
        trial.expect(seen.front().chain == rig.other.chain(), "the server's chain, leaf first");
    }
    const auto all = outcomes.all();
    trial.expect(!all.empty() && all.front().thread == judge->thread(), "the question on the callback queue");
}

void sendsNothingToARefusedServer(Trial& trial) {
    const JudgedRig rig{trial};
    const std::pair<const char*, Judge::Verdict> rows[] = {
        {"refused", [](const auto&, const Answer& answer) { answer(refuse); }},
        {"dropped", [](const auto&, const Answer&) {}},
        {"refused, then accepted",
         [](const auto&, const Answer& answer) {
             answer(refuse);
             answer(accept);
         }},
        {"refused from elsewhere",
         [](const auto&, const Answer& answer) { std::thread{[answer] { answer(refuse); }}.detach(); }},
    };
    for (const auto& [how, verdict] : rows) {
        const auto session = rig.judged(std::make_shared<Judge>(verdict));
        trial.expectEqual(how, rig.summaryOf(*session, {.url = rig.url(), .method = "POST", .body = "secret"}),
                          "pinMismatch");
    }
    trial.expectEqual("requests sent", rig.requests(), 0U);
}

void waitsForTheDelegate(Trial& trial) {
    const JudgedRig rig{trial};
    std::mutex mutex;
    std::vector<Answer> held;
    const auto judge = std::make_shared<Judge>([&](const ServerTrust& trust, const Answer& answer) {
        if (trust.chain == rig.other.chain()) {
            answer(accept);
            return;
        }
        const std::scoped_lock lock{mutex};
        held.push_back(answer);
    });
    const auto isAsked = [&](std::size_t times) {
        return trial.expectSoon("the question " + std::to_string(times), [&] {
            const std::scoped_lock lock{mutex};
            return held.size() >= times;
        });
    };
    const auto give = [&](AuthChallengeDisposition disposition) {
        Answer answer;
        {
            const std::scoped_lock lock{mutex};
            answer = held.empty() ? Answer{[](auto) {}} : held.back();
        }
        answer(disposition);
    };
    const Outcomes outcomes;
    auto session = rig.judged(judge);
    std::size_t asked = 0;
    const auto next = [&](const std::string& tag, const std::function<void(platform::UrlSessionTask&)>& act,
                          std::chrono::milliseconds timeout = 60s) {
        const auto task = session->dataTask({.url = rig.url(), .timeout = timeout}, outcomes.completion(tag));
        if (isAsked(++asked)) {
            act(*task);
        }
        trial.expectSoon("the end of the request that is " + tag, [&] { return outcomes.count() == asked; });
    };
    next("accepted late", [&](auto&) {
        trial.expectEqual("another server's answer meanwhile",
                          rig.summaryOf(*session, {.url = rig.other.url(), .timeout = 20s}), "200 cookie");
        trial.expectEqual("requests sent before the answer", rig.requests(), 0U);
        give(accept);
    });
    session = rig.judged(judge);
    next("never judged", [](auto&) {}, 200ms);
    next("cancelled meanwhile", [](auto& task) { task.cancel(); });
    next("refused late", [&](auto&) {
        rig.summaryOf(*session, {.url = rig.other.url()});
        give(refuse);
    });
    next("given up", [&](auto&) { session.reset(); });
    trial.expectEqual("the outcomes", outcomes.summaries(),
                      Lines{"accepted late 200 hello", "never judged timedOut", "cancelled meanwhile cancelled",
                            "refused late pinMismatch", "given up cancelled"});
    trial.expectEqual("requests sent", rig.requests(), 1U);
    held.clear();
}

void leavesTrustToTheSystem(Trial& trial) {
    const JudgedRig rig{trial};
    const auto session = required(rig.strangers.urlSessions).make({}, std::make_shared<Follower>(Outcomes{}));
    trial.expectEqual("a server that the system does not trust", rig.summaryOf(*session, {.url = rig.url()}),
                      "serverCertificateUntrusted");
}

void followsUploads(Trial& trial) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{5'000'000}}) {
        const UrlRig rig{trial};
        const Outcomes outcomes;
        const auto follower = std::make_shared<Follower>(outcomes);
        const auto session = rig.session({}, follower);
        session->dataTask({.url = rig.url(), .method = "POST", .body = std::string(size, 'b')}, outcomes.completion());
        trial.expectSoon("an answer", [&] { return outcomes.count() > 0; });
        trial.expectEqual("the answer", outcomes.summaries(), Lines{"200 hello"});
        follower->expectWhole(trial, size);
    }
}

} // namespace

Checks urlDelegateChecks() {
    const auto* const seam = "UrlSession";
    return {
        {seam, "asks the delegate once about each connection, on the callback queue", asksTheDelegate},
        {seam, "sends nothing to a server that the delegate refuses", sendsNothingToARefusedServer},
        {seam, "waits for the delegate within its limits, while others go on", waitsForTheDelegate},
        {seam, "leaves trust to the system where the delegate does not judge", leavesTrustToTheSystem},
        {seam, "tells the delegate how much of a body is sent, up to the whole", followsUploads},
    };
}

} // namespace kivo::check
