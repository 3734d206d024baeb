#include "screens/Walk.hpp"

#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <utility>

/// The walk's failures, its patience, and its end.
namespace kivo::reader {

namespace readid = platform::readid;
using readid::DocumentType;
using readid::FailureReason;

namespace {

/// A reading's place at the document proxy, which needs no word of its end.
class PlaceAtProxy final : public readid::ReadIDSession {
public:
    explicit PlaceAtProxy(std::string id)
        : id_{std::move(id)} {}

    std::string sessionId() const override { return id_; }

    void finish(std::function<void()> completionHandler) override {
        if (completionHandler) {
            platform::services().mainQueue->async(std::move(completionHandler));
        }
    }

private:
    const std::string id_;
};

/// Makes the variant in place: GCC 12, with sanitizers, reports a moved variant as uninitialised.
template <class Value>
readid::ReadIDResult successWith(const Value& value) {
    return readid::ReadIDResult{std::in_place, std::in_place_type<Value>, value};
}

} // namespace

void Walk::showFailure(const FailedStep& failed) {
    Page page{look_, "failure", failed.title, failed.sentence};
    const bool isOfSending = sending_ != nullptr;
    const bool isWrongDocument = failed.reason == FailureReason::wrongDocumentType;
    sending_ = nullptr;
    page.setIllustration("reader-problem");
    // The first button is the way that helps most.
    auto way = Page::Way::on;
    const auto add = [&](std::string_view identifier, ScreenText title, auto action) {
        page.addButton(identifier, title, std::exchange(way, Page::Way::other), when(action));
    };
    if (failed.isOfKey) {
        add("Type", "Type the values", [](Walk& walk) {
            walk.typingRemark_ = {};
            walk.showTyping();
        });
    }
    if (failed.isWorthRetrying) {
        add("Retry", isOfSending ? ScreenText{"Send again"} : ScreenText{"Try again"},
            isOfSending ? &Walk::send : &Walk::showChip);
    }
    if (isWrongDocument) {
        add("Another", "Show another document", &Walk::showAim);
    }
    const bool maySkip = !isOfSending && !isWrongDocument && !document_.lines.empty() &&
                         flow_.allowSkipReadingAfterAttempts > 0 &&
                         failedReadings_ >= flow_.allowSkipReadingAfterAttempts;
    if (maySkip) {
        add("Skip", "Go on without the chip", &Walk::goOnWithoutChip);
    }
    add("End", "End the reading", [reason = failed.reason](Walk& walk) { walk.fail(reason); });
    show(page, isOfSending ? nullptr : stepOfDocument());
}

void Walk::show(const Page& page, Step back) {
    const auto screen = screen_.lock();
    if (!screen || !handler_) {
        return;
    }
    if (page.name() != "chip" && reading_) {
        ++readingNumber_;
        std::exchange(reading_, nullptr)->stop();
    }
    if (page.name() != "aim") {
        aim_ = nullptr;
    }
    screen->back = back != nullptr ? when(back) : when([](Walk& walk) { walk.fail(FailureReason::backNavigation); });
    screen->show(page);
    restartPatience();
}

Walk::Step Walk::stepOfDocument() const {
    return parts_.makeZoneReader && !document_.lines.empty() ? &Walk::showAim : &Walk::showTyping;
}

std::function<void()> Walk::when(Step action) {
    return when([action](Walk& walk) { (walk.*action)(); });
}

std::function<void()> Walk::when(std::function<void(Walk&)> action) {
    return [weak = weak_from_this(), action = std::move(action)] {
        if (const auto self = weak.lock(); self && self->handler_) {
            action(*self);
        }
    };
}

bool Walk::allows(DocumentType type) const {
    return std::ranges::find(flow_.allowedDocumentTypes, type) != flow_.allowedDocumentTypes.end();
}

bool Walk::readsCards() const {
    return !allows(DocumentType::passport);
}

void Walk::restartPatience() {
    const auto number = ++patienceNumber_;
    platform::services().mainQueue->asyncAfter(parts_.patienceForPerson, [weak = weak_from_this(), number] {
        if (const auto self = weak.lock(); self && self->patienceNumber_ == number) {
            self->personIsGone();
        }
    });
}

void Walk::personIsGone() {
    const bool isDocumentKnown = zone_ || reading_ || failedReadings_ > 0;
    fail(isDocumentKnown ? FailureReason::backgroundTimeout : FailureReason::vizCaptureTimeout);
}

std::optional<readid::VIZResult> Walk::page() const {
    if (document_.lines.empty()) {
        return std::nullopt;
    }
    return readid::VIZResult{.mrzData = {.mrz = {.lines = document_.lines}}};
}

void Walk::succeed(const std::string& sessionId) {
    const readid::NFCResult chip{.readIDSession = std::make_shared<PlaceAtProxy>(sessionId)};
    const auto viz = page();
    if (viz && document_.chip) {
        end(successWith(readid::VIZNFC{.viz = *viz, .nfc = chip}));
    } else if (viz) {
        end(successWith(readid::VIZOnly{.viz = *viz}));
    } else {
        end(successWith(readid::NFCOnly{.nfc = chip}));
    }
}

void Walk::fail(FailureReason reason) {
    end(std::unexpected{readid::Failure{.failureReason = reason, .viz = page()}});
}

void Walk::end(const readid::ReadIDResult& result) {
    if (!handler_) {
        return;
    }
    auto report = [handler = std::exchange(handler_, nullptr), result] { handler(result); };
    stopWork();
    const auto screen = screen_.lock();
    // Screens that the host has put over this screen go, too.
    if (const auto below = screen ? screen->presentingViewController() : nullptr) {
        below->dismiss(/*animated=*/true, std::move(report));
    } else {
        report();
    }
}

void Walk::stopWork() {
    ++readingNumber_;
    ++patienceNumber_;
    if (reading_) {
        std::exchange(reading_, nullptr)->stop();
    }
    sending_ = nullptr;
    aim_ = nullptr;
    typing_ = nullptr;
    chipPage_ = nullptr;
    resultPage_ = nullptr;
    key_ = {};
}

} // namespace kivo::reader
