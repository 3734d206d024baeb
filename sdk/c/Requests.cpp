#include "c/Requests.hpp"

#include "c/Values.hpp"
#include "platform/base/Process.hpp"

#include <atomic>
#include <optional>
#include <utility>

namespace kivo::c {

class HostAnswer {
public:
    HostAnswer(std::shared_ptr<KivoAPI> session, const kivo_answer& answer, UserData user)
        : session_{std::move(session)}
        , call_{answer.call}
        , user_{std::move(user)} {}

    void tell(const IdvOutcome& outcome) const {
        if (call_ == nullptr || end_ == End::withdrawn) {
            return;
        }
        if (outcome) {
            const kivo_outcome success{.size = sizeof success,
                                       .failure = nullptr,
                                       .event = static_cast<kivo_event>((*outcome)->responseType()),
                                       .data = textOf((*outcome)->data())};
            call_(user_.pointer(), &success);
            return;
        }
        const auto failure = failureOf(outcome.error());
        const auto told = failureFor(failure);
        const kivo_outcome all{.size = sizeof all, .failure = &told, .event = {}, .data = textOf("")};
        call_(user_.pointer(), &all);
    }

    void giveUp() { end_ = End::givenUp; }

    void withdraw() { end_ = End::withdrawn; }

private:
    enum class End { ofItself, givenUp, withdrawn };

    Failure failureOf(ResponseCode code) const {
        if (end_ == End::givenUp && code == ResponseCode::CANCELLED_BY_USER) {
            return {.code = code, .kind = FailureKind::other, .text = "The host has given the request up."};
        }
        auto last = session_->lastFailure();
        return last && last->code == code
                   ? *std::move(last)
                   : Failure{.code = code, .kind = FailureKind::other, .text = std::string{message(code)} + "."};
    }

    std::shared_ptr<KivoAPI> session_;
    void (*call_)(void* user, const kivo_outcome* outcome);
    UserData user_;
    std::atomic<End> end_ = End::ofItself;
};

IdvCompletion screenCompletion(const std::shared_ptr<KivoAPI>& session, const kivo_answer& answer, UserData user) {
    return [host = std::make_shared<HostAnswer>(session, answer, std::move(user))](const IdvOutcome& outcome) {
        host->tell(outcome);
    };
}

Requests& Requests::shared() {
    return platform::Process::current().part<Requests>([] { return new Requests; });
}

kivo_request Requests::begin(const std::shared_ptr<KivoAPI>& session, const kivo_answer& answer, UserData user,
                             const std::function<void(KivoAPI&, IdvCompletion)>& send) {
    const auto host = std::make_shared<HostAnswer>(session, answer, std::move(user));
    const auto number = nextNumber();
    const CancellableCompletion completion{[this, number, host](const IdvOutcome& outcome) {
        take(number);
        host->tell(outcome);
    }};
    {
        const std::scoped_lock lock{mutex_};
        underWay_.emplace(number, UnderWay{.answer = host, .completion = completion});
    }
    try {
        send(*session, completion.completion());
    } catch (...) {
        host->withdraw();
        completion.cancel();
        throw;
    }
    return number;
}

bool Requests::giveUp(kivo_request number) {
    const auto request = take(number);
    if (!request) {
        return false;
    }
    request->answer->giveUp();
    return request->completion.cancel();
}

kivo_request Requests::nextNumber() {
    const std::scoped_lock lock{mutex_};
    return ++last_;
}

std::optional<Requests::UnderWay> Requests::take(kivo_request number) {
    const std::scoped_lock lock{mutex_};
    auto node = underWay_.extract(number);
    return node ? std::optional{std::move(node.mapped())} : std::nullopt;
}

} // namespace kivo::c
