#pragma once

#include "screens/Walk.hpp"
#include "support/ScreenFixture.hpp"
#include "support/ScriptedUrlSessions.hpp"
#include "tlv/Tlv.hpp"

#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/Person.hpp>

#include <gmock/gmock.h>

#include <chrono>
#include <numeric>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kivo::test {

using namespace std::chrono_literals;
using platform::readid::DocumentType;
using platform::readid::FailureReason;

/// A reading whose steps and end the test tells.
class ScriptedReading final : public reader::ChipReading {
public:
    ScriptedReading(reader::ChipReadingOrder given, Progress progress, End end)
        : order{std::move(given)}
        , tell{std::move(progress)}
        , end_{std::move(end)} {}

    void stop() override {
        isStopped = true;
        platform::services().mainQueue->async([end = end_] { end(std::unexpected{reader::ChipFailure::stopped}); });
    }

    void end(std::expected<reader::ChipDocument, reader::ChipFailure> outcome) const { end_(std::move(outcome)); }

    reader::ChipReadingOrder order;
    Progress tell;
    bool isStopped = false;

private:
    End end_;
};

/// The reader's screens over a host's screen, with a person, a camera, a scripted chip, and a scripted network.
class ReaderScreensFixture : public ScreenFixture {
protected:
    ReaderScreensFixture() {
        platform::Services services;
        services.camera = camera;
        services.urlSessions = network;
        platform::install(services);
        window_->setRootViewController(host);
        flow.baseUrl = "https://proxy.example";
        flow.shouldShowDocumentSelection = false;
        flow.shouldShowVIZResult = false;
        flow.shouldShowNFCResult = false;
        settle();
    }

    static const std::vector<std::string>& passportLines() {
        static const std::vector<std::string> lines{"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<",
                                                    "L898902C36UTO7408122F1204159ZE184226B<<<<<10"};
        return lines;
    }

    static const std::vector<std::string>& cardLines() {
        static const std::vector<std::string> lines{"I<UTOD231458907<<<<<<<<<<<<<<<", "7408122F1204159UTO<<<<<<<<<<<6",
                                                    "ERIKSSON<<ANNA<MARIA<<<<<<<<<<"};
        return lines;
    }

    /// What the camera sees, by the brightness of its picture.
    enum Sight : std::uint8_t { darkness, table, passport, card };

    void showToCamera(Sight sight) const {
        camera->show({.width = 16, .height = 16, .bytes = std::vector<std::uint8_t>(256, sight)});
    }

    class Eyes final : public reader::ZoneReader {
    public:
        Sight look(const platform::VideoFrame& frame) override {
            switch (frame.bytes.front()) {
            case passport:
                return {.zone = reader::parsedZone(passportLines())};
            case card:
                return {.zone = reader::parsedZone(cardLines())};
            default:
                return {.isTooDark = frame.bytes.front() == darkness};
            }
        }
    };

    static reader::ChipDocument documentWith(const std::vector<std::string>& lines) {
        const auto zone = std::accumulate(lines.begin(), lines.end(), std::string{});
        const reader::Bytes value(zone.begin(), zone.end());
        return {.files = {{reader::DocumentFile::dg1, reader::encodedTlv(0x61, reader::encodedTlv(0x5F1F, value))}},
                .access = reader::ChipDocument::Access::pace,
                .verdict = {.dataIsUnchanged = reader::Proof::proven, .signatureHolds = reader::Proof::proven}};
    }

    /// Begins a reading. The answers are heard in order, each with the screen that a person sees at that moment.
    void begin(bool withInstructions = false) {
        reader::ReaderParts parts;
        parts.readChip = [this](auto order, auto progress, auto end) {
            chip = std::make_shared<ScriptedReading>(std::move(order), std::move(progress), std::move(end));
            return chip;
        };
        if (hasEyes) {
            parts.makeZoneReader = [] { return std::make_unique<Eyes>(); };
        }
        heard.clear();
        chip = nullptr;
        walk = std::make_shared<reader::Walk>(flow, parts, [this](auto result) {
            EXPECT_EQ(window_->visibleViewController(), host) << "the screens have closed";
            heard.push_back(std::move(result));
        });
        walk->begin(*host, platform::ModalPresentationStyle::fullScreen, withInstructions);
        settle();
    }

    void tap(std::string_view name) {
        const auto tapped = person.tap(name);
        EXPECT_TRUE(tapped) << tapped.error();
    }

    void type(std::string_view name, std::string_view text) {
        const auto typed = person.type(name, text);
        EXPECT_TRUE(typed) << typed.error();
    }

    void typeValues() {
        type("typeDocumentNumber", "l898902c3");
        type("typeDateOfBirth", "12.08.1974");
        type("typeDateOfExpiry", "15.04.2012");
        tap("typeContinue");
    }

    /// Waits while the camera's threads are real and the delays of the screens pass by hand.
    bool becomes(const std::function<bool()>& condition) const {
        const auto deadline = std::chrono::steady_clock::now() + 20s;
        while (!loop_->runUntil(condition, 1ms)) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            clock_->advance(10ms);
        }
        return true;
    }

    bool sees(std::string_view text) {
        settle();
        return person.sees(text);
    }

    void readPage(Sight sight = passport) {
        showToCamera(sight);
        EXPECT_TRUE(becomes([this] { return person.sees("pageResultTitle") || !window_->find("aimTitle"); }))
            << person.screenInWords();
    }

    void readChip(std::expected<reader::ChipDocument, reader::ChipFailure> outcome) const {
        chip->end(std::move(outcome));
        settle();
    }

    void proxyAnswers(platform::UrlOutcome outcome) const {
        network->requests.back().answer(std::move(outcome));
        settle();
    }

    static platform::UrlOutcome accepted() {
        return platform::UrlResponse{.status = 200, .headers = {}, .body = R"({"sessionId":"r1"})"};
    }

    /// The one answer of the reading: its kind, or its reason as a number.
    std::string answer() {
        settle();
        EXPECT_EQ(heard.size(), 1U) << person.screenInWords();
        if (heard.empty()) {
            return "none";
        }
        const auto& result = heard.front();
        if (!result) {
            return "failure " + std::to_string(static_cast<int>(result.error().failureReason)) +
                   (result.error().viz ? " with page" : "");
        }
        constexpr std::array names{"page and chip", "chip", "page", "unknown"};
        return names.at(result->index());
    }

    static std::string failure(FailureReason reason, bool withPage = false) {
        return "failure " + std::to_string(static_cast<int>(reason)) + (withPage ? " with page" : "");
    }

    std::shared_ptr<simulator::Camera> camera = std::make_shared<simulator::Camera>();
    std::shared_ptr<ScriptedUrlSessions> network = std::make_shared<ScriptedUrlSessions>();
    std::shared_ptr<platform::ViewController> host = std::make_shared<platform::ViewController>();
    simulator::Person person{window_, loop_, clock_};
    platform::readid::NFCWithAccessControlFlow flow;
    bool hasEyes = true;
    std::shared_ptr<reader::Walk> walk;
    std::shared_ptr<ScriptedReading> chip;
    std::vector<platform::readid::ReadIDResult> heard;
};

} // namespace kivo::test
