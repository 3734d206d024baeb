#include "JoinedHost.hpp"
#include "support/PassportAtHand.hpp"

#include <kivo/reader/DocumentReader.hpp>
#include <kivo/simulator/Person.hpp>

#include <gmock/gmock.h>

namespace kivo::test {
namespace {

using namespace std::chrono_literals;
using platform::readid::FailureReason;
using simulator::ChipFault;
using testing::HasSubstr;

/// The document reader from the first page to a session's document proxy: a simulated passport in this process, real
/// TLS, and a person who types.
class ReaderRoad : public JoinedHost {
protected:
    ReaderRoad() {
        simulator::CountryAuthority{}.save(certificates);
        window->setRootViewController(start);
        flow->applicationLevelEncryptionPins = {joined("biodata-encrypt-key")};
        flow->shouldShowDocumentSelection = false;
    }

    bool becomes(const std::function<bool()>& condition) const {
        const auto deadline = std::chrono::steady_clock::now() + 30s;
        while (!mainLoop->runUntil(condition, 1ms)) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
        }
        return true;
    }

    void tap(const char* name) {
        EXPECT_TRUE(becomes([&] { return person.tap(name).has_value(); })) << name << ": " << person.screenInWords();
    }

    void type(const char* field, const std::string& text) {
        const auto typed = person.type(field, text);
        EXPECT_TRUE(typed) << typed.error();
    }

    void begin() {
        heard.clear();
        const auto begun = reading.identify(start, platform::ModalPresentationStyle::fullScreen, flow,
                                            [this](auto result) { heard.push_back(std::move(result)); });
        ASSERT_TRUE(begun) << begun.error().message;
        type("typeDocumentNumber", passport->documentNumber());
        type("typeDateOfBirth", typedDate(passport->dateOfBirth(), "19"));
        type("typeDateOfExpiry", typedDate(passport->dateOfExpiry(), "20"));
        tap("typeContinue");
    }

    bool sees(std::string_view words) {
        return becomes([&] { return person.sees(words); });
    }

    std::filesystem::path certificates = folder.path() / "certificates";
    std::shared_ptr<simulator::Passport> passport = std::make_shared<simulator::Passport>();
    reader::DocumentReader reading{{.cards = std::make_shared<PassportAtHand>(passport),
                                    .countryCertificates = certificates,
                                    .usesCamera = false}};
    std::shared_ptr<platform::ViewController> start = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::Window> window = std::make_shared<platform::Window>();
    simulator::Person person{window, mainLoop, clock};
    std::vector<platform::readid::ReadIDResult> heard;
};

TEST_F(ReaderRoad, EndsAtTheServiceWhichFindsNothingWrong) {
    ASSERT_NO_FATAL_FAILURE(begin());
    EXPECT_TRUE(sees("The document is genuine.")) << person.screenInWords();
    EXPECT_TRUE(becomes([this] { return window->find("chipResultPortrait")->isVisible(); }));
    EXPECT_TRUE(person.sees("The chip is no copy."));
    tap("chipResultContinue");
    ASSERT_TRUE(becomes([this] { return !heard.empty(); })) << person.screenInWords();
    ASSERT_TRUE(heard.front());
    const auto& chip = std::get<platform::readid::NFCOnly>(*heard.front());
    EXPECT_THAT(chip.nfc.readIDSession->sessionId(), HasSubstr("reading-"));
    EXPECT_EQ(violations(), 0U);
    EXPECT_EQ(documents(), 1);
}

TEST_F(ReaderRoad, TellsWhatIsWrongWithTheChip) {
    const struct {
        const char* words;
        ChipFault fault;
        FailureReason reason;
    } rows[] = {
        {"The chip does not open", ChipFault::refusesKey(), FailureReason::nfcAccessControlError},
        {"The document was taken away", ChipFault::takenAway(2500), FailureReason::nfcError},
        {"The chip's answers are damaged", ChipFault::garbage(), FailureReason::nfcError},
        {"The chip's answers are damaged", ChipFault::replay(), FailureReason::nfcError},
        {"The chip's answers are damaged", ChipFault::shortAnswers(), FailureReason::nfcError},
        {"The chip's answers are damaged", ChipFault::endlessFiles(), FailureReason::nfcError},
    };

    for (const auto& row : rows) {
        passport->setFault(row.fault);
        passport->layDown();
        ASSERT_NO_FATAL_FAILURE(begin());
        EXPECT_TRUE(sees(row.words)) << row.words << ": " << person.screenInWords();
        tap("failureEnd");
        ASSERT_TRUE(becomes([this] { return !heard.empty(); }));
        ASSERT_FALSE(heard.front());
        EXPECT_EQ(heard.front().error().failureReason, row.reason) << row.words;
    }
    EXPECT_EQ(documents(), 0);
}

TEST_F(ReaderRoad, LeavesForgeriesToTheServiceAndTellsThePerson) {
    const struct {
        const char* words;
        ChipFault fault;
    } rows[] = {
        {"The data was changed.", ChipFault::falseDigest()},
        {"The document was not issued by a known state.", ChipFault::unknownCountry()},
        {"The seal was withdrawn.", ChipFault::revokedSigner()},
        {"The seal was not valid when the document was made.", ChipFault::expiredSigner()},
        {"The chip may be a copy.", ChipFault::copy()},
    };

    for (const auto& row : rows) {
        passport->setFault(row.fault);
        ASSERT_NO_FATAL_FAILURE(begin());
        EXPECT_TRUE(sees("The document has failed a check.")) << row.words << ": " << person.screenInWords();
        EXPECT_TRUE(person.sees(row.words)) << person.screenInWords();
        tap("readerClose");
        ASSERT_TRUE(becomes([this] { return !heard.empty(); }));
    }
    passport->setFault(ChipFault::falseDigest());
    ASSERT_NO_FATAL_FAILURE(begin());
    tap("chipResultContinue");
    EXPECT_TRUE(sees("The service has refused the document")) << person.screenInWords();
    tap("failureEnd");
    ASSERT_TRUE(becomes([this] { return !heard.empty(); }));
    EXPECT_EQ(heard.front().error().failureReason, FailureReason::serverSessionError);
}

} // namespace
} // namespace kivo::test
