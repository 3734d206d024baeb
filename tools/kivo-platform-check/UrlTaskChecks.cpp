#include "UrlRig.hpp"

#include <deque>

namespace kivo::check {
namespace {

using namespace std::chrono_literals;
using platform::UrlSession;
using simulator::Fault;
using Lines = std::vector<std::string>;

// As many requests to one server as a session has under way at once.
constexpr std::size_t mostAtOnce = 6;

/// A session with requests under way that the server never answers.
struct HeldRig : UrlRig {
    HeldRig(Trial& with, std::size_t count)
        : UrlRig{with} {
        answer(Fault::drop());
        for (std::size_t i = 0; i < count; ++i) {
            held.push_back(current->dataTask({.url = url()}, heldOutcomes.completion()));
        }
        trial.expectSoon("the requests are sent", [&] { return requests() >= count; });
    }

    std::shared_ptr<UrlSession> current = session();
    std::vector<std::shared_ptr<platform::UrlSessionTask>> held;
    Outcomes heldOutcomes;
};

void completesOnce(Trial& trial) {
    const UrlRig rig{trial};
    const auto session = rig.session();
    const Outcomes outcomes;
    constexpr std::size_t count = 24;
    for (std::size_t i = 0; i < count; ++i) {
        session->dataTask({.url = rig.url()}, outcomes.completion());
    }
    trial.expectSoon("a completion for each request", [&] { return outcomes.count() >= count; });
    trial.expectEqual("the next request's answer", rig.summaryOf(*session, {.url = rig.url()}), "200 hello");
    trial.expectEqual("completions of 24 requests", outcomes.count(), count);
    trial.expectEqual("completions that met another one", outcomes.overlaps(), 0);
    for (const auto& one : outcomes.all()) {
        trial.expectEqual("an answer", summary(one.outcome), "200 hello");
        trial.expect(one.thread != std::this_thread::get_id(), "completions on a queue of the session's own");
    }
}

void completesOnTheQueue(Trial& trial) {
    const UrlRig rig{trial};
    const auto queue = std::make_shared<HeldBlocks>();
    const auto session = rig.session({}, nullptr, queue);
    const Outcomes outcomes;
    session->dataTask({.url = rig.url()}, outcomes.completion());
    session->dataTask({.url = "no address"}, outcomes.completion());
    trial.expectEqual("completions before dataTask() returned", outcomes.count(), 0U);
    trial.expectSoon("blocks on the queue", [&] { return queue->size() >= 2; });
    trial.expectEqual("completions elsewhere than on the queue", outcomes.count(), 0U);
    queue->runAll();
    trial.expectEqual("completions on the queue", outcomes.count(), 2U);
}

void cancels(Trial& trial) {
    HeldRig rig{trial, 1};
    const Outcomes outcomes;
    rig.current->dataTask({.url = rig.url()}, outcomes.completion())->cancel();
    trial.expectSoon("a request that is cancelled at once ends", [&] { return outcomes.count() == 1; });
    rig.held.front()->cancel();
    rig.held.front()->cancel();
    trial.expectSoon("a request under way ends", [&] { return rig.heldOutcomes.count() == 1; });
    const auto done = rig.current->dataTask({.url = rig.url("status")}, outcomes.completion());
    trial.expectSoon("a request that is let ends", [&] { return outcomes.count() == 2; });
    done->cancel();
    const auto other = rig.current->dataTask({.url = rig.url()}, rig.heldOutcomes.completion());
    rig.current->dataTask({.url = rig.url("status")}, [other](const auto&) { other->cancel(); });
    trial.expectSoon("a request that a completion cancels ends", [&] { return rig.heldOutcomes.count() == 2; });
    trial.expectEqual("the answer of a later request", rig.summaryOf(*rig.current, {.url = rig.url("status")}),
                      "200 quick");
    trial.expectEqual("completions", outcomes.summaries(), Lines{"cancelled", "200 quick"});
    trial.expectEqual("completions of what was held", rig.heldOutcomes.summaries(), Lines{"cancelled", "cancelled"});
}

void staysCancelled(Trial& trial) {
    const UrlRig rig{trial};
    const auto queue = std::make_shared<HeldBlocks>();
    const auto session = rig.session({}, nullptr, queue);
    const Outcomes outcomes;
    const auto task = session->dataTask({.url = rig.url()}, outcomes.completion());
    trial.expectSoon("the answer waits on the queue", [&] { return queue->size() > 0; });
    task->cancel();
    trial.expectSoon("one completion", [&] {
        queue->runAll();
        return outcomes.count() > 0;
    });
    trial.expectEqual("the outcome", outcomes.summaries(), Lines{"cancelled"});
}

void endsWithItsSession(Trial& trial) {
    HeldRig rig{trial, 3};
    rig.current->dataTask({.url = rig.url()}, rig.heldOutcomes.completion());
    rig.current.reset();
    trial.expectSoon("every request ends", [&] { return rig.heldOutcomes.count() == 4; });
    trial.expectEqual("how", rig.heldOutcomes.summaries(), Lines(4, "cancelled"));
    rig.held.front()->cancel();
    trial.linger(5ms);
    trial.expectEqual("completions", rig.heldOutcomes.count(), 4U);
}

void goesInItsCompletion(Trial& trial) {
    HeldRig rig{trial, 1};
    const Outcomes outcomes;
    auto owner = std::make_shared<std::shared_ptr<UrlSession>>(std::move(rig.current));
    auto* const session = owner->get();
    session->dataTask({.url = rig.url("status")}, [owner, collect = outcomes.completion()](auto outcome) {
        owner->reset();
        collect(std::move(outcome));
    });
    owner.reset();
    trial.expectSoon("both requests end", [&] { return outcomes.count() + rig.heldOutcomes.count() == 2; });
    trial.expectEqual("the request that ended the session", outcomes.summaries(), Lines{"200 quick"});
    trial.expectEqual("the other one", rig.heldOutcomes.summaries(), Lines{"cancelled"});
}

void waitsItsTurn(Trial& trial) {
    HeldRig rig{trial, mostAtOnce};
    const CookieServer elsewhere{trial};
    const Outcomes outcomes;
    rig.current->dataTask({.url = rig.url("status")}, outcomes.completion("first"));
    rig.current->dataTask({.url = rig.url("status")}, outcomes.completion("second"));
    trial.expectEqual("another server, whose turn is its own", rig.summaryOf(*rig.current, {.url = elsewhere.url()}),
                      "serverCertificateUntrusted");
    trial.expectEqual("requests sent", rig.requests(), mostAtOnce);
    rig.held.front()->cancel();
    trial.expectSoon("both go on when one ends", [&] { return outcomes.count() == 2; });
    trial.expectEqual("in their order", outcomes.summaries(), Lines{"first 200 quick", "second 200 quick"});
}

void endsUnsent(Trial& trial) {
    HeldRig rig{trial, mostAtOnce};
    const Outcomes outcomes;
    trial.expectEqual("a malformed request need not wait",
                      rig.summaryOf(*rig.current, {.url = rig.url(), .method = ""}), "unknown");
    trial.expectEqual("a request whose time is up",
                      rig.summaryOf(*rig.current, {.url = rig.url("status"), .timeout = 150ms}), "timedOut");
    rig.current->dataTask({.url = rig.url("status")}, outcomes.completion())->cancel();
    trial.expectSoon("a cancelled request ends", [&] { return outcomes.count() == 1; });
    rig.current->dataTask({.url = rig.url("status")}, outcomes.completion());
    rig.current.reset();
    trial.expectSoon("a request without its session ends", [&] { return outcomes.count() == 2; });
    trial.expectEqual("how", outcomes.summaries(), Lines{"cancelled", "cancelled"});
    trial.expectEqual("requests sent", rig.requests(), mostAtOnce);
}

} // namespace

Checks urlTaskChecks() {
    const auto* const seam = "UrlSession";
    return {
        {seam, "completes each request once, one at a time, on a queue of its own", completesOnce},
        {seam, "completes on the given queue only, never on the caller's stack", completesOnTheQueue},
        {seam, "cancels before, during and after the exchange", cancels},
        {seam, "reports no answer of a request that was cancelled", staysCancelled},
        {seam, "cancels its requests when its last reference goes", endsWithItsSession},
        {seam, "can be released in one of its completions", goesInItsCompletion},
        {seam, "has six requests to a server under way and the others wait in turn", waitsItsTurn},
        {seam, "ends a waiting request unsent when it is cancelled or late", endsUnsent},
    };
}

} // namespace kivo::check
