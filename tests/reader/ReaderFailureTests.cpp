#include "ReaderScreensFixture.hpp"

#include <nlohmann/json.hpp>

namespace kivo::test {
namespace {

using platform::UrlErrorKind;
using reader::ChipFailure;

class ReaderFailures : public ReaderScreensFixture {};

TEST_F(ReaderFailures, TellThePersonWhatFailedAndTheHostWhy) {
    const struct {
        const char* words;
        const char* wayOut;
        ChipFailure failure;
        FailureReason reason;
    } rows[] = {
        {"Connect a card reader to this machine, then try again.", "failureRetry", ChipFailure::noReader,
         FailureReason::nfcError},
        {"The card reader cannot be used", "failureRetry", ChipFailure::noService, FailureReason::nfcError},
        {"No chip was found", "failureRetry", ChipFailure::noChip, FailureReason::noChip},
        {"The chip does not open", "failureType", ChipFailure::accessDenied, FailureReason::nfcAccessControlError},
        {"The document was taken away", "failureRetry", ChipFailure::takenAway, FailureReason::nfcError},
        {"This chip cannot be read", "failureRetry", ChipFailure::unsupported, FailureReason::unsupportedDocument},
        {"The reading took too long", "failureRetry", ChipFailure::tookTooLong, FailureReason::nfcError},
        {"The chip's answers are damaged", "failureRetry", ChipFailure::broken, FailureReason::nfcError},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.words);
        begin();
        readPage();
        readChip(std::unexpected{row.failure});
        EXPECT_TRUE(sees(row.words)) << person.screenInWords();
        EXPECT_TRUE(heard.empty());
        tap(row.wayOut);
        if (row.failure == ChipFailure::accessDenied) {
            typeValues();
        }
        EXPECT_TRUE(sees("Lay the document on the reader"));
        readChip(std::unexpected{row.failure});
        tap("failureEnd");
        EXPECT_EQ(answer(), failure(row.reason, row.failure != ChipFailure::accessDenied));
    }
}

TEST_F(ReaderFailures, LetAPersonGoOnWithoutTheChipAfterAsManyFailuresAsTheFlowSays) {
    for (const int allowed : {0, 1, 2}) {
        flow.allowSkipReadingAfterAttempts = allowed;
        begin();
        readPage();
        for (int failed = 1; failed <= 3; ++failed) {
            readChip(std::unexpected{ChipFailure::takenAway});
            EXPECT_EQ(sees("Go on without the chip"), allowed > 0 && failed >= allowed) << allowed << " " << failed;
            if (failed < 3) {
                tap("failureRetry");
            }
        }
        if (allowed == 0) {
            tap("failureEnd");
            EXPECT_EQ(answer(), failure(FailureReason::nfcError, true));
            continue;
        }
        tap("failureSkip");
        EXPECT_FALSE(nlohmann::json::parse(network->requests.back().request.body).contains("chip"));
        proxyAnswers(accepted());
        EXPECT_EQ(answer(), "page");
    }
    // Without a page there would be nothing to go on with.
    begin();
    tap("aimType");
    typeValues();
    for (int failed = 0; failed < 3; ++failed) {
        readChip(std::unexpected{ChipFailure::takenAway});
        EXPECT_FALSE(sees("Go on without the chip"));
        tap("failureRetry");
    }
}

TEST_F(ReaderFailures, OfferToSendAgainWhereThatCanHelp) {
    const auto breaks = [](UrlErrorKind kind) -> platform::UrlOutcome {
        return std::unexpected{platform::UrlError{.kind = kind, .text = {}}};
    };
    const auto says = [](int status) -> platform::UrlOutcome {
        return platform::UrlResponse{.status = status, .headers = {}, .body = {}};
    };

    const struct {
        platform::UrlOutcome outcome;
        FailureReason reason;
        bool isWorthRetrying;
    } rows[] = {
        {breaks(UrlErrorKind::cannotConnect), FailureReason::connectionError, true},
        {breaks(UrlErrorKind::pinMismatch), FailureReason::sslError, false},
        {says(429), FailureReason::tooManyRequestsError, true},
        {says(401), FailureReason::authorisationError, false},
        {says(410), FailureReason::sessionExpired, false},
        {says(500), FailureReason::serverSessionError, false},
    };

    for (const auto& row : rows) {
        begin();
        readPage();
        readChip(documentWith(passportLines()));
        proxyAnswers(row.outcome);
        EXPECT_EQ(sees("Send again"), row.isWorthRetrying) << person.screenInWords();
        if (row.isWorthRetrying) {
            tap("failureRetry");
            proxyAnswers(row.outcome);
        }
        tap("failureEnd");
        EXPECT_EQ(answer(), failure(row.reason, true));
    }
    begin();
    readPage();
    readChip(documentWith(passportLines()));
    proxyAnswers(breaks(UrlErrorKind::timedOut));
    tap("failureRetry");
    proxyAnswers(accepted());
    EXPECT_EQ(answer(), "page and chip");
}

} // namespace
} // namespace kivo::test
