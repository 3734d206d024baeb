#include "desk/ReaderTour.hpp"

#include <kivo/platform/Services.hpp>

#include <stdexcept>
#include <utility>
#include <vector>

namespace desk {

namespace platform = kivo::platform;
using kivo::reader::CardError;
using platform::UrlErrorKind;
using platform::readid::DocumentType;

/// A network that keeps a request waiting until the tour answers.
class ReaderTour::Network final : public platform::UrlSessions {
public:
    void fail(UrlErrorKind kind) {
        auto waiting = std::exchange(completions_, {});
        for (const auto& complete : waiting) {
            complete(std::unexpected{platform::UrlError{.kind = kind, .text = {}}});
        }
    }

    bool hasRequest() const { return !completions_.empty(); }

    std::shared_ptr<platform::UrlSession> make(platform::UrlSessionConfiguration /*configuration*/,
                                               std::shared_ptr<platform::UrlSessionDelegate> /*delegate*/,
                                               std::shared_ptr<platform::DispatchQueue> /*queue*/) override {
        return std::make_shared<Session>(*this);
    }

private:
    class Session final : public platform::UrlSession {
    public:
        explicit Session(Network& network)
            : network_{network} {}

        std::shared_ptr<platform::UrlSessionTask> dataTask(platform::UrlRequest /*request*/,
                                                           platform::UrlCompletion completion) override {
            network_.completions_.push_back(std::move(completion));
            return nullptr;
        }

    private:
        Network& network_;
    };

    std::vector<platform::UrlCompletion> completions_;
};

namespace {

/// The command before which a part of the face is read, of a chip that takes short commands only.
constexpr std::size_t inTheMiddleOfTheFace = 100;

/// A date of six digits as a person types the date.
std::string typed(const std::string& date, const char* century) {
    return date.substr(4, 2) + "." + date.substr(2, 2) + "." + century + date.substr(0, 2);
}

} // namespace

ReaderTour::ReaderTour(std::shared_ptr<kivo::simulator::Passport> passport, Sights sights,
                       std::shared_ptr<platform::ViewController> host, std::shared_ptr<platform::Window> window,
                       kivo::simulator::Person person, Wait wait)
    : passport_{std::move(passport)}
    , sights_{std::move(sights)}
    , host_{std::move(host)}
    , window_{std::move(window)}
    , person_{std::move(person)}
    , wait_{std::move(wait)}
    , network_{std::make_shared<Network>()} {}

ReaderTour::~ReaderTour() = default;

void ReaderTour::goWell(const Visit& visit) {
    cards_->setConnected(false);
    cards_->setLaid(false);
    cards_->setHold(inTheMiddleOfTheFace);
    camera_->show(sights_.unread);
    begin({DocumentType::passport, DocumentType::identityCardTD1, DocumentType::identityCardTD2});
    visit("choose");
    tap("choosePassport");
    visit("instructions");
    tap("instructionsContinue");
    waitForView("aimTitle");
    visit("aim");
    camera_->show(sights_.readable);
    waitForView("pageResultTitle");
    visit("pageResult");
    tap("pageResultContinue");
    waitForText("Connect the card reader");
    visit("connect");
    cards_->setConnected(true);
    waitForText("Lay the document on the reader");
    visit("lay");
    cards_->setRefusal(CardError::noCard);
    waitForView("failureSkip");
    visit("skip");
    cards_->setRefusal(std::nullopt);
    tap("failureRetry");
    cards_->setLaid(true);
    waitFor([this] { return cards_->isHolding(); }, "the middle of the face");
    // What the reading has told until then.
    bool isTold = false;
    platform::services().mainQueue->async([&isTold] { isTold = true; });
    waitFor([&] { return isTold; }, "the progress");
    visit("reading");
    cards_->setHold(std::nullopt);
    waitForView("chipResultPortrait");
    visit("chipResult");
    tap("chipResultContinue");
    waitFor([this] { return network_->hasRequest(); }, "the request");
    visit("sending");
    for (const auto kind : {UrlErrorKind::cannotConnect, UrlErrorKind::secureConnectionFailed}) {
        network_->fail(kind);
        waitForView("failureTitle");
        visit(kind == UrlErrorKind::cannotConnect ? "noConnection" : "noTrust");
        if (kind == UrlErrorKind::cannotConnect) {
            tap("failureRetry");
            waitFor([this] { return network_->hasRequest(); }, "the request once more");
        }
    }
    end("failureEnd");
}

void ReaderTour::goWrong(const Visit& visit) {
    cards_->setConnected(true);
    cards_->setLaid(true);
    cards_->setHold(std::nullopt);
    camera_->showNothing();
    camera_->setConnected(false);
    begin({DocumentType::identityCardTD1, DocumentType::passport});
    tap("chooseIdentityCardTD1");
    visit("instructionsOfCard");
    tap("instructionsContinue");
    waitForView("typeTitle");
    tap("typeContinue");
    visit("typeFault");
    type("typeDocumentNumber", passport_->documentNumber());
    type("typeDateOfBirth", typed(passport_->dateOfBirth(), "19"));
    type("typeDateOfExpiry", "01.01.2001");
    visit("type");
    tap("typeContinue");
    waitForView("failureTitle");
    visit("accessDenied");
    cards_->setLaid(false);
    tap("failureRetry");
    waitForText("Lay the card flat on the reader.");
    visit("layCard");
    const std::pair<CardError, const char*> failures[] = {{CardError::noReader, "noReader"},
                                                          {CardError::noService, "noService"},
                                                          {CardError::noCard, "noChip"},
                                                          {CardError::gone, "takenAway"},
                                                          {CardError::broken, "broken"}};
    for (const auto& [error, name] : failures) {
        cards_->setRefusal(error);
        if (sees("failureRetry")) {
            tap("failureRetry");
        }
        waitForView("failureTitle");
        visit(name);
    }
    cards_->setRefusal(std::nullopt);
    end("failureEnd");
    camera_->setConnected(true);
    camera_->show(sights_.readable);
    begin({DocumentType::identityCardTD2});
    tap("instructionsContinue");
    waitForView("failureAnother");
    visit("wrongDocument");
    end("readerClose");
}

void ReaderTour::begin(const std::vector<DocumentType>& allowed) {
    platform::Services services;
    services.camera = camera_;
    services.urlSessions = network_;
    platform::install(services);
    const auto flow = std::make_shared<platform::readid::NFCWithAccessControlFlow>();
    flow->allowedDocumentTypes = allowed;
    flow->uiResources = reader_.makeUIResources();
    flow->baseUrl = "https://proxy.example";
    flow->instructionsPlayCount = 1;
    flow->shouldOnlyShowInstructionsOnFirstUse = false;
    flow->allowSkipReadingAfterAttempts = 1;
    isOver_ = false;
    const auto begun = reader_.identify(host_, platform::ModalPresentationStyle::fullScreen, flow,
                                        [this](const auto&) { isOver_ = true; });
    if (!begun) {
        throw std::runtime_error{"the reading does not begin: " + begun.error().message};
    }
    waitFor([this] { return sees("readerClose"); }, "the reader's screen");
}

void ReaderTour::end(std::string_view button) {
    tap(button);
    waitFor([this] { return isOver_; }, "the end of the reading");
}

void ReaderTour::tap(std::string_view name) {
    if (const auto tapped = person_.tap(name); !tapped) {
        throw std::runtime_error{tapped.error()};
    }
}

void ReaderTour::type(std::string_view name, const std::string& text) {
    if (const auto done = person_.type(name, text); !done) {
        throw std::runtime_error{done.error()};
    }
}

bool ReaderTour::sees(std::string_view view) const {
    const auto found = window_->find(view);
    return found && found->isVisible();
}

void ReaderTour::waitForView(std::string_view view) {
    waitFor([&] { return sees(view); }, view);
}

void ReaderTour::waitForText(std::string_view text) {
    const auto bundle = platform::services().bundles->withIdentifier("com.test.KivoReader");
    const auto shown = bundle ? bundle->localizedString(text) : std::string{text};
    waitFor([&] { return person_.sees(shown); }, text);
}

void ReaderTour::waitFor(const std::function<bool()>& condition, std::string_view what) {
    if (!wait_(condition)) {
        throw std::runtime_error{"there is no " + std::string{what} + ". " + person_.screenInWords()};
    }
}

} // namespace desk
