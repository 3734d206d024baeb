#include "DocumentUpload.hpp"
#include "ReadingScreen.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <functional>

namespace kivo::simulator {
namespace {

namespace readid = platform::readid;
using readid::FailureReason;

/// Makes the variant in place: GCC 12, with sanitizers, reports a moved variant as uninitialised.
template <class Value>
readid::ReadIDResult success(const Value& value) {
    return readid::ReadIDResult{std::in_place, std::in_place_type<Value>, value};
}

readid::VIZResult pageOf(const readid::NFCWithAccessControlFlow& flow) {
    return {.mrzData = {.mrz = {.lines = specimenZone(flow)}}};
}

} // namespace

class ReadID::ReadingSession final : public readid::ReadIDSession {
public:
    explicit ReadingSession(std::string id)
        : id_{std::move(id)} {}

    std::string sessionId() const override { return id_; }

    void finish(std::function<void()> completionHandler) override {
        isFinished_ = true;
        if (completionHandler) {
            platform::services().mainQueue->async(std::move(completionHandler));
        }
    }

    bool isFinished() const { return isFinished_; }

private:
    const std::string id_;
    bool isFinished_ = false;
};

/// One reading, from its screen to its report. The screen, and then the request, keep the object alive.
class ReadID::Performance final : public std::enable_shared_from_this<Performance> {
public:
    using Sessions = std::vector<std::shared_ptr<ReadingSession>>;

    Performance(readid::NFCWithAccessControlFlow flow, std::function<void(readid::ReadIDResult)> handler,
                std::shared_ptr<Sessions> sessions)
        : flow_{std::move(flow)}
        , handler_{std::move(handler)}
        , sessions_{std::move(sessions)} {}

    void begin(const Reading& reading, platform::ViewController& from, platform::ModalPresentationStyle style) {
        const auto screen = std::make_shared<ReadingScreen>(flow_.uiResources);
        screen_ = screen;
        screen->gone = [self = shared_from_this()] { self->fail(FailureReason::userCancelled, false); };
        screen->setModalPresentationStyle(style);
        if (reading.kind() == Reading::Kind::byPerson) {
            screen->ask([self = shared_from_this()](const Reading& chosen) { self->play(chosen); });
            from.present(screen, /*animated=*/true);
        } else {
            screen->tell("Reading the document");
            from.present(screen, /*animated=*/true, [self = shared_from_this(), reading] { self->play(reading); });
        }
    }

    bool isUnderWay() const { return handler_ != nullptr; }

private:
    void play(const Reading& reading) {
        using enum Reading::Kind;
        switch (reading.kind()) {
        case pageAndChip:
            upload(ReadParts::pageAndChip);
            break;
        case chip:
            upload(ReadParts::chip);
            break;
        case page:
            upload(ReadParts::page);
            break;
        case failure:
            fail(reading.reason(), reading.pageWasRead());
            break;
        case unknownSuccess:
        case refusal:
        case byPerson:
            finish(success(readid::UnknownSuccess{}));
            break;
        }
    }

    void upload(ReadParts parts) {
        if (const auto screen = screen_.lock()) {
            screen->tell("Sending what was read");
        }
        uploadDocument(flow_, parts, [self = shared_from_this(), parts](const UploadOutcome& outcome) {
            if (outcome) {
                self->succeed(parts, *outcome);
            } else {
                self->fail(outcome.error(), parts != ReadParts::chip);
            }
        });
    }

    void succeed(ReadParts parts, const std::string& sessionId) {
        const auto session = std::make_shared<ReadingSession>(sessionId);
        sessions_->push_back(session);
        const readid::NFCResult nfc{.readIDSession = session};
        switch (parts) {
        case ReadParts::page:
            finish(success(readid::VIZOnly{.viz = pageOf(flow_)}));
            break;
        case ReadParts::chip:
            finish(success(readid::NFCOnly{.nfc = nfc}));
            break;
        case ReadParts::pageAndChip:
            finish(success(readid::VIZNFC{.viz = pageOf(flow_), .nfc = nfc}));
            break;
        }
    }

    void fail(FailureReason reason, bool pageWasRead) {
        finish(std::unexpected{readid::Failure{.failureReason = reason,
                                               .viz = pageWasRead ? std::optional{pageOf(flow_)} : std::nullopt}});
    }

    // Only the first result is reported: the person can end the reading while the upload is under way.
    void finish(const readid::ReadIDResult& result) {
        if (!handler_) {
            return;
        }
        auto report = [handler = std::exchange(handler_, nullptr), result] { handler(result); };
        const auto screen = screen_.lock();
        // Screens that the host has put over this screen go, too.
        if (const auto below = screen ? screen->presentingViewController() : nullptr) {
            below->dismiss(/*animated=*/true, std::move(report));
        } else {
            report();
        }
    }

    const readid::NFCWithAccessControlFlow flow_;
    std::function<void(readid::ReadIDResult)> handler_;
    const std::shared_ptr<Sessions> sessions_;
    std::weak_ptr<ReadingScreen> screen_;
};

ReadID::ReadID(Reading usual)
    : usual_{std::move(usual)}
    , sessions_{std::make_shared<Performance::Sessions>()} {}

ReadID::~ReadID() = default;

void ReadID::next(Reading reading) {
    planned_.push_back(std::move(reading));
}

void ReadID::forgetSessions() {
    std::erase_if(*sessions_, [](const auto& session) { return session->isFinished(); });
    flows_.clear();
}

std::vector<ReadID::Session> ReadID::sessions() const {
    std::vector<Session> all;
    for (const auto& session : *sessions_) {
        all.push_back({.id = session->sessionId(), .isFinished = session->isFinished()});
    }
    return all;
}

std::shared_ptr<readid::UIResources> ReadID::makeUIResources() {
    return std::make_shared<readid::UIResources>();
}

std::expected<void, readid::ReadIDError> ReadID::identify(const std::shared_ptr<platform::ViewController>& from,
                                                          platform::ModalPresentationStyle modalPresentationStyle,
                                                          const std::shared_ptr<readid::NFCWithAccessControlFlow>& flow,
                                                          std::function<void(readid::ReadIDResult)> handler) {
    using enum readid::ReadIDError::Kind;
    if (!flow->baseUrl || !flow->baseUrl->starts_with("https://")) {
        return std::unexpected{
            readid::ReadIDError{.kind = invalidConfiguration, .message = "baseUrl is no https address"}};
    }
    if (const auto current = current_.lock(); current && current->isUnderWay()) {
        return std::unexpected{readid::ReadIDError{.kind = other, .message = "another reading is under way"}};
    }
    flows_.push_back(*flow);
    const auto reading = planned_.empty() ? usual_ : planned_.front();
    if (!planned_.empty()) {
        planned_.pop_front();
    }
    if (reading.kind() == Reading::Kind::refusal) {
        return std::unexpected{reading.error()};
    }
    const auto performance = std::make_shared<Performance>(*flow, std::move(handler), sessions_);
    current_ = performance;
    performance->begin(reading, *from, modalPresentationStyle);
    return {};
}

} // namespace kivo::simulator
