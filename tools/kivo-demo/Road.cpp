#include "Road.hpp"

#include "Display.hpp"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

namespace demo {
namespace {

using namespace std::chrono_literals;
using namespace kivo;

/// The wait for an answer that must not come.
constexpr auto waitForNoAnswer = 500ms;

/// The same where no report of the step can be seen.
constexpr std::chrono::seconds waitWithoutReport = 3s;

/// The answers to one call. They arrive on the transport's thread and are read on the main one.
class Answers {
public:
    void add(const IdvOutcome& outcome) {
        {
            const std::scoped_lock lock{mutex_};
            ++number_;
            last_ = outcome;
        }
        platform::RunLoop::main()->async([] {});
    }

    int number() const {
        const std::scoped_lock lock{mutex_};
        return number_;
    }

    bool isSuccess() const {
        const std::scoped_lock lock{mutex_};
        return last_.has_value();
    }

    void describe(Step& step) const {
        const std::scoped_lock lock{mutex_};
        step.answers = number_;
        if (number_ == 0) {
            return;
        }
        if (last_) {
            step.outcome = IdvEventsHelper::eventName((*last_)->responseType());
            step.detail = (*last_)->data();
        } else {
            step.outcome = name(last_.error());
            step.detail = message(last_.error());
        }
    }

private:
    mutable std::mutex mutex_;
    int number_ = 0;
    IdvOutcome last_ = std::unexpected{ResponseCode::NO_RESPONSE};
};

/// One call of the host, and its expected outcome.
struct Planned {
    std::string name;
    /// The event's or the code's name.
    std::string_view expected;
    /// The number of requests that the step sends, including an upload's notice of its attempt.
    std::size_t requests;
    /// Makes the call. Returns an empty text, or a sentence when the call could not be made.
    std::function<std::string(IdvCompletion)> call;
    /// Whether the host must get no answer.
    bool isWithheld = false;
    /// Longer than the SDK's own limit for a request.
    std::chrono::seconds patience = 75s;
};

/// Whether a display of that size is a phone's whose camera is at the left.
bool liesOnItsSide(const platform::Size& display) {
    constexpr double highestPhone = 500;
    return display.width > display.height && display.height < highestPhone;
}

/// A date of six digits as a person types the date: day, month, year.
std::string asTyped(const std::string& date, std::string_view century) {
    return date.substr(4, 2) + "." + date.substr(2, 2) + "." + std::string{century} + date.substr(0, 2);
}

/// A person's way through the pages of the document reader. Returns an empty text, or a sentence about what was not
/// there.
std::string readWithChip(Display& display, const PassportOnDesk& passport) {
    const std::function<std::string()> steps[] = {
        [&] { return display.tap("passportOptionContainerView"); },
        [&] { return display.tap("instructionsContinue"); },
        [&] { return display.type("typeDocumentNumber", passport.documentNumber); },
        [&] { return display.type("typeDateOfBirth", asTyped(passport.dateOfBirth, "19")); },
        [&] { return display.type("typeDateOfExpiry", asTyped(passport.dateOfExpiry, "20")); },
        [&] { return display.tap("typeContinue"); },
    };
    for (const auto& step : steps) {
        if (auto problem = step(); !problem.empty()) {
            return problem;
        }
    }
    return {};
}

class Walker {
public:
    Walker(simulator::IdentityService* service, std::shared_ptr<Album> album,
           const std::function<void(const Step&)>& report, bool faulty)
        : service_{service}
        , album_{std::move(album)}
        , report_{report}
        , faulty_{faulty} {
        // The empty block wakes the main loop, which checks its condition again.
        if (service_ != nullptr) {
            service_->onRequest([](const auto&) { platform::RunLoop::main()->async([] {}); });
        }
    }

    Walker(const Walker&) = delete;
    Walker& operator=(const Walker&) = delete;

    ~Walker() {
        if (service_ != nullptr) {
            service_->onRequest({});
        }
    }

    /// Takes a step. Returns whether the step ended in a success.
    bool step(const Planned& planned) {
        Step step{.name = planned.name, .outcome = "", .detail = "", .expected = std::string{planned.expected}};
        step.isWithheld = planned.isWithheld;
        if (faulty_) {
            step.expected.clear();
        }
        const auto before = requests().size();
        const auto& answers = answers_.emplace_back(std::make_shared<Answers>());
        const auto start = std::chrono::steady_clock::now();
        const auto problem = planned.call([answers](const IdvOutcome& outcome) { answers->add(outcome); });
        if (problem.empty()) {
            const auto answered = [&] { return answers->number() > 0; };
            const auto reported = [&] { return hasReportSince(before); };
            platform::RunLoop::main()->runUntil([&] { return answered() || reported(); },
                                                service_ == nullptr && planned.isWithheld ? waitWithoutReport
                                                                                          : planned.patience);
            if (!answered()) {
                platform::RunLoop::main()->runUntil(answered, waitForNoAnswer);
            }
            if (faulty_) {
                // A fault's outcome, and whether the version keeps that outcome from the host, are known only from the
                // walk itself.
                step.isWithheld = !answered() && reported();
            }
        }
        step.took = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
        step.detail = problem;
        if (album_) {
            album_->take(planned.name);
        }
        answers->describe(step);
        // A request after the answer still belongs to the step.
        const bool isSent =
            service_ == nullptr || service_->waitForRequests(before + (faulty_ ? 0 : planned.requests), 1s);
        step.isWhole = problem.empty() && isSent;
        const auto sent = requests();
        for (auto i = before; i < sent.size(); ++i) {
            step.bytesSent += sent[i].body.size();
        }
        withheld_ += step.isWithheld ? 1 : 0;
        allAsExpected_ = allAsExpected_ && step.asExpected();
        report_(step);
        return answers->isSuccess();
    }

    /// Called at the very end, so that a late second answer is noticed.
    bool allAsExpected() const {
        const auto isOne = [](const auto& each) { return each->number() == 1; };
        const auto isNone = [](const auto& each) { return each->number() == 0; };
        return allAsExpected_ && std::ranges::count_if(answers_, isNone) == withheld_ &&
               std::ranges::count_if(answers_, isOne) + withheld_ == std::ssize(answers_);
    }

private:
    std::vector<simulator::RecordedRequest> requests() const {
        return service_ == nullptr ? std::vector<simulator::RecordedRequest>{} : service_->requests();
    }

    /// Whether one of the service's requests from number `count` on reports a failure.
    bool hasReportSince(std::size_t count) const {
        const auto sent = requests();
        return std::any_of(sent.begin() + static_cast<std::ptrdiff_t>(count), sent.end(), [](const auto& each) {
            return each.endpoint == simulator::Endpoint::update && each.body.contains(R"("code":)");
        });
    }

    simulator::IdentityService* const service_;
    std::shared_ptr<Album> album_;
    const std::function<void(const Step&)>& report_;
    const bool faulty_;
    bool allAsExpected_ = true;
    std::ptrdiff_t withheld_ = 0;
    std::vector<std::shared_ptr<Answers>> answers_;
};

} // namespace

bool walk(const Options& options, simulator::IdentityService* service, const std::shared_ptr<Album>& album,
          const std::function<void(const Step&)>& report) {
    const auto session = KivoSDK::load("DEMO", options.version);
    if (!session) {
        return false;
    }
    const auto config =
        std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT,ID_CARD", "P6M", "0.8", "UTO", "face");
    const auto image = std::string(std::size_t{48} * 1024, 'A');
    Display display{/*boxesAreReset=*/options.version >= "17"};
    const auto window = display.window();
    window->setSize(options.display);
    if (liesOnItsSide(options.display)) {
        window->setSafeArea({.top = 0, .left = 47, .bottom = 21, .right = 47});
    }
    window->setPreferredContentSizeCategory(options.readingSize);
    window->setUserInterfaceStyle(options.isDark ? platform::UserInterfaceStyle::dark
                                                 : platform::UserInterfaceStyle::light);
    session->setContext(display.context());
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->minimumContentSizeCategoryLimit = platform::ContentSizeCategory::extraSmall;
    theme->maximumContentSizeCategoryLimit = platform::ContentSizeCategory::accessibilityExtraExtraExtraLarge;
    if (!theme->screenTitleFont) {
        // Else the last screen's title is smaller than the titles before.
        theme->screenTitleFont = platform::Font::system(32);
    }
    ThemeCustomization::passportScanViewCustomization()->isDynamicTypeEnabled = true;
    session->setTheme(theme);
    if (album) {
        album->follow(window);
    }

    // The code screen stays until the join has succeeded, and may deliver more than one code.
    IdvCompletion codeEntered;
    const auto typeCode = [&](std::string_view code) {
        return [&, code](IdvCompletion response) {
            codeEntered = std::move(response);
            return display.typeCode(code);
        };
    };
    std::string code;
    const auto showScreenAndTypeCode = [&](IdvCompletion response) {
        session->acquire(AcquisitionObject::activationCode, config, [&](const IdvOutcome& outcome) {
            code = outcome ? (*outcome)->data() : "";
            codeEntered(outcome);
        });
        return typeCode("000000")(std::move(response));
    };
    const auto scanCode = [&](IdvCompletion response) {
        codeEntered = std::move(response);
        return display.tap("scanQRCodeButton");
    };
    const auto scan = [&](AcquisitionObject object, std::string_view button) {
        return [&, object, button](IdvCompletion response) {
            display.returnToStart();
            session->acquire(object, config, std::move(response));
            return button.empty() ? std::string{} : display.tap(button);
        };
    };
    const std::function<std::string(IdvCompletion)> readChip = [&](IdvCompletion response) {
        display.returnToStart();
        session->acquire(AcquisitionObject::nfcScan, config, std::move(response));
        return readWithChip(display, options.passport);
    };
    const auto calling = [](auto call) {
        return [call](IdvCompletion response) {
            call(std::move(response));
            return std::string{};
        };
    };

    const auto join = calling([&](auto response) { session->join(code, config, response); });
    const Planned typeRightCode{"type the right code", "SCAN_QR_CODE", 0, typeCode(options.code)};
    const Planned scanRightCode{"scan the right code", "SCAN_QR_CODE", 0, scanCode, /*isWithheld=*/false, 20s};

    const Planned enter[]{
        {"type a wrong code", "SCAN_QR_CODE", 0, showScreenAndTypeCode},
        {"join with it", "STATUS_INVALID_ACTIVATION_CODE", 1, join},
        options.scan ? scanRightCode : typeRightCode,
        {"join with it", "JOIN_SESSION", 1, join},
    };
    const auto* const document = options.outcomeOf("document");
    const Planned readPassport{"read the passport", document != nullptr ? document->code : "DOCUMENT_SCAN",
                               document != nullptr ? 2U : 3U,
                               options.chip ? readChip
                                            : std::function<std::string(IdvCompletion)>{scan(
                                                  AcquisitionObject::nfcScan, "passportOptionContainerView")},
                               options.withholds("document")};
    const auto* const face = options.outcomeOf("face");
    const auto* const card = options.outcomeOf("idcard");
    const Planned scanFace{"scan the face", face != nullptr ? face->code : "FACE_SCAN", face != nullptr ? 1U : 2U,
                           scan(AcquisitionObject::facemapScan, "nextButton"), options.withholds("face")};
    const Planned scanCard{"scan the ID card", card != nullptr ? card->code : "OCR_SCAN", 1,
                           scan(AcquisitionObject::ocrScan, "")};
    const Planned deliver[]{
        {"update", "UPDATE_SESSION", 1,
         calling([&](auto response) { session->update("inform", "The person has the document at hand", response); })},
        {"upload an image", "UPLOAD_DOCUMENT", 2,
         calling([&](auto response) { session->upload(AcquisitionObject::documentMainImage, image, response); })},
        {"status", "SESSION_STATUS", 1, calling([&](auto response) { session->status(response); })},
        {"commit", "COMMIT_SESSION", 1, calling([&](auto response) { session->commit(response); })},
    };
    const Planned statusAfterReset{"status after reset", "INVALID_STATUS_SESSION", 0,
                                   calling([&](auto response) { session->status(response); })};

    Walker walker{service, album, report, !options.isSmooth()};
    bool isJoined = false;
    for (const auto& planned : enter) {
        isJoined = walker.step(planned);
    }
    if (isJoined) {
        walker.step(readPassport);
        walker.step(scanFace);
        if (options.version >= "16") {
            walker.step(scanCard);
        }
    }
    display.returnToStart();
    for (const auto& planned : deliver) {
        walker.step(planned);
    }
    if (album) {
        display.showFinalStatus(theme);
        display.tap("backToHomeButton");
    }
    session->reset();
    walker.step(statusAfterReset);
    // The session outlives this function and must not keep the display.
    session->setContext(nullptr);
    return walker.allAsExpected();
}

} // namespace demo
