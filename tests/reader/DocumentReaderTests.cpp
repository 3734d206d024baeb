#include "ReaderScreensFixture.hpp"

#include <kivo/reader/DocumentReader.hpp>

#include <filesystem>

namespace kivo::test {
namespace {

using platform::readid::ReadIDError;
using testing::HasSubstr;

/// Readers of cards on which no card ever lies.
class EmptyReaders final : public reader::CardSource {
public:
    std::expected<std::unique_ptr<reader::Card>, reader::CardError> waitForCard(std::chrono::milliseconds /*patience*/,
                                                                                std::stop_token /*stop*/) override {
        return std::unexpected{reader::CardError::noCard};
    }

    bool isAvailable() const override { return isRunning; }

    std::vector<std::string> readers() const override { return {"Reader 00 00"}; }

    bool isRunning = true;
};

class DocumentReader : public ReaderScreensFixture {
protected:
    std::expected<void, ReadIDError> identify(reader::DocumentReader& with) {
        return with.identify(host, platform::ModalPresentationStyle::fullScreen,
                             std::make_shared<platform::readid::NFCWithAccessControlFlow>(flow),
                             [this](auto result) { heard.push_back(std::move(result)); });
    }

    std::shared_ptr<EmptyReaders> cards = std::make_shared<EmptyReaders>();
};

TEST_F(DocumentReader, RefusesWhatCannotBegin) {
    using enum ReadIDError::Kind;

    const struct {
        std::string url;
        std::vector<std::string> keys;
        std::filesystem::path certificates;
        bool isRunning;
        ReadIDError::Kind kind;
        const char* message;
    } rows[] = {
        {"http://proxy.example", {}, {}, true, invalidConfiguration, "baseUrl"},
        {"", {}, {}, true, invalidConfiguration, "baseUrl"},
        {"https://proxy.example", {"no key"}, {}, true, invalidConfiguration, "applicationLevelEncryptionPins"},
        {"https://proxy.example", {}, "/nowhere/at/all", true, invalidConfiguration, "/nowhere/at/all"},
        {"https://proxy.example", {}, {}, false, nfcNotSupported, "pcscd"},
    };

    for (const auto& row : rows) {
        flow.baseUrl = row.url;
        flow.applicationLevelEncryptionPins = row.keys;
        cards->isRunning = row.isRunning;
        reader::DocumentReader refusing{{.cards = cards, .countryCertificates = row.certificates}};
        const auto begun = identify(refusing);
        ASSERT_FALSE(begun) << row.message;
        EXPECT_EQ(begun.error().kind, row.kind) << row.message;
        EXPECT_THAT(begun.error().message, HasSubstr(row.message));
        EXPECT_EQ(host->presentedViewController(), nullptr);
    }
    EXPECT_TRUE(heard.empty());
    EXPECT_THAT(diagnostics_->texts(), testing::Contains(HasSubstr("pcscd"))) << "the host hears the kind alone";
}

TEST_F(DocumentReader, ReadsOneDocumentAtATimeAndShowsInstructionsAsOftenAsTold) {
    reader::DocumentReader reading{{.cards = cards, .usesCamera = false}};
    for (const auto& [count, onlyFirst, shows] : {std::tuple{0, false, false}, std::tuple{1, true, false},
                                                  std::tuple{1, false, true}, std::tuple{1, true, false}}) {
        flow.instructionsPlayCount = count;
        flow.shouldOnlyShowInstructionsOnFirstUse = onlyFirst;
        ASSERT_TRUE(identify(reading));
        EXPECT_EQ(identify(reading).error().kind, ReadIDError::Kind::other);
        EXPECT_EQ(sees("Have your document at hand"), shows);
        tap("readerClose");
        settle();
    }
    EXPECT_EQ(heard.size(), 4U);
    reader::DocumentReader fresh{{.cards = cards, .usesCamera = false}};
    ASSERT_TRUE(identify(fresh));
    EXPECT_TRUE(sees("Have your document at hand"));
    EXPECT_TRUE(sees("Type three values")) << "the values alone";
    EXPECT_FALSE(sees("camera"));
}

TEST_F(DocumentReader, GoesOnToItsEndWithoutItsObject) {
    {
        reader::DocumentReader reading{{.cards = cards, .usesCamera = false}};
        ASSERT_TRUE(identify(reading));
        settle();
    }
    typeValues();
    EXPECT_TRUE(becomes([this] { return person.sees("No chip was found"); })) << person.screenInWords();
    tap("failureEnd");
    settle();
    EXPECT_EQ(answer(), failure(FailureReason::noChip));
}

} // namespace
} // namespace kivo::test
