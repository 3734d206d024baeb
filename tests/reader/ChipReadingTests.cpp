#include "reading/ChipReading.hpp"

#include "reader/OwnCardService.hpp"
#include "reader/PassportCards.hpp"
#include "support/Eventually.hpp"
#include "support/TemporaryFolder.hpp"
#include "verification/TrustAnchors.hpp"

#include <kivo/platform/RunLoop.hpp>
#include <kivo/reader/CardSources.hpp>
#include <kivo/simulator/VirtualReader.hpp>

#include <gtest/gtest.h>

#include <optional>

namespace kivo::reader {
namespace {

using namespace std::chrono_literals;
using simulator::ChipFault;
using simulator::Passport;
using simulator::PassportConfiguration;
using Outcome = std::expected<ChipDocument, ChipFailure>;

constexpr std::chrono::seconds longestTest{60};
const std::vector allGroups{DocumentFile::dg1, DocumentFile::dg2, DocumentFile::dg7, DocumentFile::dg11,
                            DocumentFile::dg12};

constexpr std::pair<DocumentFile, const char*> names[] = {{DocumentFile::cardAccess, "CardAccess"},
                                                          {DocumentFile::cardSecurity, "CardSecurity"},
                                                          {DocumentFile::com, "COM"},
                                                          {DocumentFile::sod, "SOD"},
                                                          {DocumentFile::dg1, "DG1"},
                                                          {DocumentFile::dg2, "DG2"},
                                                          {DocumentFile::dg7, "DG7"},
                                                          {DocumentFile::dg11, "DG11"},
                                                          {DocumentFile::dg12, "DG12"},
                                                          {DocumentFile::dg14, "DG14"},
                                                          {DocumentFile::dg15, "DG15"}};

AccessKey keyOf(const Passport& passport) {
    return {.documentNumber = passport.documentNumber(),
            .dateOfBirth = passport.dateOfBirth(),
            .dateOfExpiry = passport.dateOfExpiry()};
}

std::shared_ptr<const TrustAnchors> utopia() {
    const test::TemporaryFolder folder;
    simulator::CountryAuthority{}.save(folder.path());
    return trustAnchorsIn(folder.path()).value();
}

// A reading, and everything that it tells, on this thread.
class Told {
public:
    Told(const std::shared_ptr<CardSource>& source, ChipReadingOrder order)
        : source_{source.get(), [source](CardSource*) {}}
        , reading_{ChipReading::start(
              source_, std::move(order),
              [this](const ChipProgress& progress) {
                  EXPECT_FALSE(outcome_);
                  EXPECT_LE(progress.bytesRead, progress.bytesInAll);
                  if (steps_.empty() || steps_.back() != progress.step) {
                      steps_.push_back(progress.step);
                  }
              },
              [this](Outcome outcome) {
                  EXPECT_FALSE(outcome_);
                  outcome_ = std::move(outcome);
              })} {}

    Told(const Told&) = delete;
    Told& operator=(const Told&) = delete;

    // A thread that outlives the program's main function would use what the libraries have taken down.
    ~Told() {
        reading_ = nullptr;
        EXPECT_TRUE(test::eventually([this] { return source_.use_count() == 1; })) << "the thread lets go of the cards";
    }

    Outcome outcome() {
        EXPECT_TRUE(platform::RunLoop::main()->runUntil([&] { return outcome_.has_value(); }, longestTest));
        platform::RunLoop::main()->drain();
        return *outcome_;
    }

    bool reaches(ChipProgress::Step step) {
        return platform::RunLoop::main()->runUntil([&] { return !steps_.empty() && steps_.back() == step; },
                                                   longestTest);
    }

    ChipReading& reading() { return *reading_; }

    const std::vector<ChipProgress::Step>& steps() const { return steps_; }

private:
    std::optional<Outcome> outcome_{};
    std::vector<ChipProgress::Step> steps_{};
    // The test's source, counted apart.
    std::shared_ptr<CardSource> source_;
    std::shared_ptr<ChipReading> reading_;
};

Outcome outcomeOf(const std::shared_ptr<Passport>& passport, ChipReadingOrder order) {
    return Told{std::make_shared<PassportCards>(passport), std::move(order)}.outcome();
}

void expectWholeDocument(const Outcome& outcome, const Passport& passport) {
    ASSERT_TRUE(outcome) << static_cast<int>(outcome.error());
    for (const auto& [file, name] : names) {
        const auto read = outcome->files.find(file);
        const bool isOfMapping = file == DocumentFile::cardSecurity;
        if (!isOfMapping || read != outcome->files.end()) {
            EXPECT_EQ(read == outcome->files.end() ? Bytes{} : read->second, passport.file(name)) << name;
        }
    }
    const auto& verdict = outcome->verdict;
    for (const auto proof : {verdict.dataIsUnchanged, verdict.signatureHolds, verdict.signerIsTrusted,
                             verdict.signerIsNotRevoked, verdict.datesHold}) {
        EXPECT_EQ(proof, Proof::proven);
    }
}

TEST(ChipReading, ReadsAllKindsOfDocuments) {
    using enum simulator::PaceMapping;
    using enum simulator::ChipCipher;
    const auto pace = [](simulator::PaceMapping mapping, simulator::ChipCipher cipher, int parameters) {
        return PassportConfiguration{.pace = {{mapping, cipher, parameters}}};
    };
    auto number = PassportConfiguration{.basicAccess = false};
    auto both = pace(generic, aes128, 13);
    both.pace.push_back({integrated, aes256, 0});

    const struct {
        const char* what;
        PassportConfiguration configuration;
        bool byNumber = false;
        Proof chip = Proof::proven;
    } rows[] = {
        {"BAC", {.pace = {}}},
        {"BAC, short messages", {.pace = {}, .extendedLength = false}},
        {"BAC, a large face", {.faceBytes = 70000, .pace = {}}},
        {"PACE, a large face, short messages", {.faceBytes = 40000, .extendedLength = false}},
        {"ECDH GM 3DES", pace(generic, tripleDes, 12)},
        {"ECDH GM AES-192", pace(generic, aes192, 15)},
        {"ECDH GM AES-256", pace(generic, aes256, 18)},
        {"ECDH IM AES-128", pace(integrated, aes128, 13)},
        {"ECDH IM AES-192", pace(integrated, aes192, 16)},
        {"ECDH IM AES-256", pace(integrated, aes256, 17)},
        {"ECDH CAM AES-128", pace(chipAuthentication, aes128, 13)},
        {"ECDH CAM AES-256", pace(chipAuthentication, aes256, 16)},
        {"ECDH CAM AES-128, no other proof", {.pace = {{chipAuthentication, aes128, 12}}, .chipAuthentication = {}}},
        {"DH GM 3DES", pace(generic, tripleDes, 0)},
        {"DH GM AES-256", pace(generic, aes256, 2)},
        {"DH IM 3DES", pace(integrated, tripleDes, 1)},
        {"DH IM AES-192", pace(integrated, aes192, 2)},
        {"two offers", both},
        {"card access number", number, true},
        {"identity card", {.format = simulator::DocumentFormat::td1}, true},
        {"TD2", {.format = simulator::DocumentFormat::td2}},
        {"chip authentication with 3DES", {.chipAuthentication = {{tripleDes, 12}}}},
        {"chip authentication with DH", {.chipAuthentication = {{aes256, 2}}}},
        {"active authentication, RSA",
         {.chipAuthentication = {}, .activeAuthentication = simulator::ActiveAuthentication::rsa}},
        {"active authentication, ECDSA",
         {.pace = {},
          .chipAuthentication = {},
          .activeAuthentication = simulator::ActiveAuthentication::ecdsa,
          .extendedLength = false}},
        {"no proof of the chip", {.chipAuthentication = {}}, false, Proof::notTried},
    };

    const auto anchors = utopia();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto passport = std::make_shared<Passport>(row.configuration);
        auto key = keyOf(*passport);
        if (row.byNumber) {
            key = {.cardAccessNumber = passport->cardAccessNumber()};
        }
        const auto outcome = outcomeOf(passport, {.key = key, .groups = allGroups, .anchors = anchors});
        expectWholeDocument(outcome, *passport);
        if (outcome) {
            EXPECT_EQ(outcome->verdict.chipIsGenuine, row.chip);
            const bool isBasic = row.configuration.pace.empty();
            EXPECT_EQ(outcome->access == ChipDocument::Access::basicAccessControl, isBasic);
        }
    }
}

TEST(ChipReading, TellsWhatIsWrongWithADocument) {
    const auto anchors = utopia();

    const struct {
        ChipFault fault;
        std::optional<ChipFailure> failure;
        Proof Verdict::* refuted = nullptr;
    } rows[] = {
        {ChipFault::refusesKey(), ChipFailure::accessDenied},
        {ChipFault::falseDigest(), {}, &Verdict::dataIsUnchanged},
        {ChipFault::expiredSigner(), {}, &Verdict::datesHold},
        {ChipFault::unknownCountry(), {}, &Verdict::signerIsTrusted},
        {ChipFault::revokedSigner(), {}, &Verdict::signerIsNotRevoked},
        {ChipFault::copy(), {}, &Verdict::chipIsGenuine},
        {ChipFault::slow(1ms), {}, nullptr},
        {ChipFault::shortAnswers(), ChipFailure::broken},
        {ChipFault::garbage(), ChipFailure::broken},
        {ChipFault::replay(), ChipFailure::broken},
        {ChipFault::endlessFiles(), ChipFailure::broken},
        {ChipFault::takenAway(0), ChipFailure::takenAway},
        {ChipFault::takenAway(1), ChipFailure::takenAway},
        {ChipFault::takenAway(100), ChipFailure::takenAway},
        {ChipFault::takenAway(333), ChipFailure::takenAway},
        {ChipFault::takenAway(1000), ChipFailure::takenAway},
        {ChipFault::takenAway(20000), ChipFailure::takenAway},
    };

    const std::vector<simulator::PaceOffer> offers[] = {
        {simulator::PaceOffer{}}, {}, {{.mapping = simulator::PaceMapping::chipAuthentication}}};
    for (const auto& offer : offers) {
        for (const auto& row : rows) {
            PassportConfiguration configuration{.pace = offer, .fault = row.fault};
            const auto passport = std::make_shared<Passport>(configuration);
            const auto outcome =
                outcomeOf(passport, {.key = keyOf(*passport), .groups = allGroups, .anchors = anchors});
            SCOPED_TRACE(testing::Message()
                         << "fault " << static_cast<int>(row.fault.kind()) << " of " << row.fault.bytes());
            EXPECT_EQ(outcome ? std::nullopt : std::optional{outcome.error()}, row.failure);
            if (outcome && row.refuted != nullptr) {
                EXPECT_EQ(outcome->verdict.*row.refuted, Proof::refuted);
            }
        }
    }
}

TEST(ChipReading, RefusesWhatIsNoKeyOfTheDocument) {
    const auto passport = std::make_shared<Passport>();
    const auto onlyBasic = std::make_shared<Passport>(PassportConfiguration{.pace = {}});
    auto key = keyOf(*passport);
    key.dateOfBirth = "010101";
    EXPECT_EQ(outcomeOf(passport, {.key = key}).error(), ChipFailure::accessDenied);
    EXPECT_EQ(outcomeOf(onlyBasic, {.key = key}).error(), ChipFailure::accessDenied);
    EXPECT_EQ(outcomeOf(passport, {.key = {.cardAccessNumber = "123456"}}).error(), ChipFailure::accessDenied);
    EXPECT_EQ(outcomeOf(onlyBasic, {.key = {.cardAccessNumber = "500540"}}).error(), ChipFailure::accessDenied);
    EXPECT_EQ(outcomeOf(passport, {.key = {}}).error(), ChipFailure::accessDenied);
}

TEST(ChipReading, TellsTheStepsInOrder) {
    const auto passport = std::make_shared<Passport>();
    Told told{std::make_shared<PassportCards>(passport), {.key = keyOf(*passport), .groups = {DocumentFile::dg1}}};
    EXPECT_TRUE(told.outcome());
    using enum ChipProgress::Step;
    EXPECT_EQ(told.steps(), (std::vector{waitingForCard, opening, reading, provingChip}));
}

TEST(ChipReading, EndsAtOnceWhenItIsStopped) {
    const auto passport = std::make_shared<Passport>(PassportConfiguration{.fault = ChipFault::silent()});
    Told told{std::make_shared<PassportCards>(passport), {.key = keyOf(*passport)}};
    ASSERT_TRUE(told.reaches(ChipProgress::Step::opening));
    told.reading().stop();
    EXPECT_EQ(told.outcome().error(), ChipFailure::stopped);
    told.reading().stop();
    platform::RunLoop::main()->drain();
    passport->takeAway();
}

TEST(ChipReading, EndsWhenItsTimeIsOver) {
    const auto passport = std::make_shared<Passport>(PassportConfiguration{.fault = ChipFault::slow(5ms)});
    EXPECT_EQ(outcomeOf(passport, {.key = keyOf(*passport), .patienceForReading = 1ms}).error(),
              ChipFailure::tookTooLong);
}

TEST(ChipReading, TellsWhyNoCardCame) {
    class Without final : public CardSource {
    public:
        explicit Without(CardError error)
            : error_{error} {}

        std::expected<std::unique_ptr<Card>, CardError> waitForCard(std::chrono::milliseconds,
                                                                    std::stop_token) override {
            return std::unexpected{error_};
        }

        std::vector<std::string> readers() const override {
            return error_ == CardError::noCard ? std::vector<std::string>{"reader"} : std::vector<std::string>{};
        }

    private:
        CardError error_;
    };

    const std::pair<CardError, ChipFailure> rows[] = {{CardError::noCard, ChipFailure::noChip},
                                                      {CardError::noReader, ChipFailure::noReader},
                                                      {CardError::noService, ChipFailure::noService}};
    for (const auto& [error, failure] : rows) {
        EXPECT_EQ((Told{std::make_shared<Without>(error), {.patienceForCard = 1ms}}.outcome().error()), failure);
    }
}

TEST(ChipReading, ReadsThroughASocket) {
    const auto passport = std::make_shared<Passport>();
    const simulator::CardSocket socket{passport};
    const auto source = cardsBehindSocket("127.0.0.1", static_cast<std::uint16_t>(socket.port()));
    for (int i = 0; i < 2; ++i) {
        Told told{source, {.key = keyOf(*passport), .groups = allGroups, .anchors = utopia()}};
        expectWholeDocument(told.outcome(), *passport);
    }
    passport->setFault(ChipFault::takenAway(2000));
    EXPECT_EQ((Told{source, {.key = keyOf(*passport)}}.outcome().error()), ChipFailure::takenAway);
}

TEST(ChipReading, ReadsThroughTheCardService) {
    const auto service = test::startedCardService();
    if (!service) {
        GTEST_SKIP() << service.error();
    }
    const auto source = systemCards();
    ASSERT_TRUE(source->isAvailable());
    EXPECT_FALSE(source->readers().empty());

    const auto passport = std::make_shared<Passport>();
    ChipReadingOrder order{.key = keyOf(*passport), .groups = allGroups, .anchors = utopia()};
    Told stopped{source, order};
    ASSERT_TRUE(stopped.reaches(ChipProgress::Step::waitingForCard));
    stopped.reading().stop();
    EXPECT_EQ(stopped.outcome().error(), ChipFailure::stopped);
    order.patienceForCard = 1ms;
    EXPECT_EQ((Told{source, order}.outcome().error()), ChipFailure::noChip);
    order.patienceForCard = longestTest;

    Told told{source, order};
    ASSERT_TRUE(told.reaches(ChipProgress::Step::waitingForCard));
    const simulator::VirtualReader reader{passport, **service};
    expectWholeDocument(told.outcome(), *passport);
    expectWholeDocument(Told{source, order}.outcome(), *passport);

    passport->setFault(ChipFault::takenAway(2000));
    EXPECT_EQ((Told{source, order}.outcome().error()), ChipFailure::takenAway);
}

} // namespace
} // namespace kivo::reader
