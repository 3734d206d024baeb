// Every line that the screens log, at its level and in its order.
#include "support/SessionJournal.hpp"
#include "support/VendorScreens.hpp"

#include <kivo/Deployment.hpp>
#include <kivo/ReadIDUIResourcesWrapper.hpp>

namespace kivo {
namespace {

using namespace platform::readid;
using namespace std::chrono_literals;
using test::Scan;
using test::Texts;

class ScreenJournal : public test::VendorScreens {
protected:
    void document(const test::Joined& joined, int tag) {
        join(joined);
        const auto screen = pushed<AuthMenuVC>();
        screen->view()->find("otherCardContainerView")->setHidden(false);
        if (tag > 0) {
            EXPECT_TRUE(screen->view()->viewWithTag(tag)->touch());
        }
        advance(100ms);
    }

    void refusedDocument(ReadIDError::Kind kind, const char* why) {
        reader->refusal = ReadIDError{.kind = kind, .message = why};
        document({}, 1);
        reader->refusal.reset();
    }

    void face(int status, const char* answer) {
        const auto screen = faceScan();
        scanner->initialized(status == 0);
        sendAndEnd(answer, [&] { handOverFace(std::make_shared<Scan>(status)); });
    }

    void card(int status, const char* answer) {
        cardScan();
        sendAndEnd(answer, [&] { handOverCard(std::make_shared<Scan>(status)); });
    }

    void sendAndEnd(const char* answer, const std::function<void()>& handOver) {
        handOver();
        if (answer != nullptr) {
            network->requests.back().answer(answer);
        }
        settle();
        scannerIsDone();
    }
};

TEST_F(ScreenJournal, HasNoSecretAboveDebug) {
    KivoSDK::setLogLevel(LogLevel::debug);
    const auto* const pass = R"({"response-type":"pass"})";
    const auto* const refuse = R"({"response-type":"data"})";
    const test::Joined unlisted{.documentList = "false", .biodata = R"("biodata-access-key":"A","biodata-proxy":"P")"};
    const VIZResult page{.mrzData = {.mrz = {.lines = {"P<SECRET"}}}};
    const std::pair<const char*, std::function<void()>> steps[] = {
        {"passport",
         [&] {
             document({}, 1);
             reader->succeed(VIZNFC{});
         }},
        {"identity card",
         [&] {
             document({}, 2);
             reader->succeed(NFCOnly{});
         }},
        {"page alone, without a list and a key",
         [&] {
             ReadIDUIResourcesWrapper{}.setCustomStringTableName("Texts");
             document(unlisted, 0);
             reader->succeed(VIZOnly{.viz = page});
         }},
        {"strange reading",
         [&] {
             document(unlisted, 0);
             reader->succeed(UnknownSuccess{});
         }},
        {"cancelled reading",
         [&] {
             document({}, 1);
             reader->fail(FailureReason::userCancelled, &page);
         }},
        {"reading refused",
         [&] {
             refusedDocument(ReadIDError::Kind::invalidConfiguration, "no key");
             refusedDocument(ReadIDError::Kind::nfcNotSupported, "");
             refusedDocument(ReadIDError::Kind::other, "busy");
         }},
        {"other card without a layout", [&] { document({}, 3); }},
        {"other card in a layout without its screen",
         [&] {
             folder.write("Host.bundle/ZORFramework.storyboard", R"({"scenes":{}})");
             document({}, 3);
         }},
        {"other card in a layout of another class",
         [&] {
             folder.write("Host.bundle/ZORFramework.storyboard",
                          R"({"scenes":{"OCRScanInitializeVC":{"class":"ViewController","view":{}}}})");
             document({}, 3);
         }},
        {"face", [&] { face(0, pass); }},
        {"face refused", [&] { face(0, refuse); }},
        {"face in vain, in production",
         [&] {
             Deployment deployment;
             deployment.faceTecProduction = true;
             deployment.faceTecProductionKey = "vendor-key";
             Deployment::install(deployment);
             face(8, nullptr);
         }},
        {"face without a result",
         [&] {
             faceScan();
             scannerIsDone();
         }},
        {"face without a screen",
         [&] {
             scanner->makesScreens = false;
             faceScan();
         }},
        {"card without a screen",
         [&] {
             scanner->face = nullptr;
             cardScan();
         }},
        {"no token",
         [&] {
             scanner->makesScreens = true;
             join({.facemap = ""});
             faceScan();
             cardScan();
             join();
         }},
        {"card", [&] { card(0, pass); }},
        {"card refused", [&] { card(0, refuse); }},
        {"card in vain", [&] { card(3, nullptr); }},
        {"card without a result",
         [&] {
             cardScan();
             scannerIsDone();
         }},
        {"reading size",
         [&] {
             pushed<QRCodeVC>();
             window->setPreferredContentSizeCategory(platform::ContentSizeCategory::small);
         }},
    };
    auto expected = test::expectedJournals("18");
    for (const auto& [step, act] : steps) {
        SCOPED_TRACE(step);
        join();
        testing::internal::CaptureStdout();
        act();
        advance(1s);
        std::istringstream output{testing::internal::GetCapturedStdout()};
        Texts lines;
        for (std::string line; std::getline(output, line);) {
            lines.push_back(test::plain(line));
            if (const auto session = storedSession()->encode(); line.ends_with(session)) {
                lines.back().replace(lines.back().size() - session.size(), session.size(), "SESSION");
            }
            if (const auto at = lines.back().find(folder.path().string()); at != std::string::npos) {
                lines.back().erase(at, folder.path().string().size());
            }
        }
        EXPECT_THAT(lines, testing::ElementsAreArray(expected[std::string{"screen: "} + step]));
    }
}

} // namespace
} // namespace kivo
