#include "DeviceFixture.hpp"
#include "support/PassportAtHand.hpp"

#include <kivo/device/LayoutFaults.hpp>
#include <kivo/reader/DocumentReader.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/Person.hpp>

#include <gmock/gmock.h>

#include <chrono>
#include <functional>

namespace kivo::test {
namespace {

using namespace platform;
using namespace std::chrono_literals;
using testing::IsEmpty;

class ReaderLayout : public DeviceFixture {
protected:
    ReaderLayout() {
        services.camera = camera;
        platform::install(services);
    }

    /// At every reading size, on a large and on a small display.
    void expectNoFaults(const std::string& what) {
        for (const auto size : {Size{390, 844}, Size{320, 568}}) {
            window->setSize(size);
            for (int raw = 0; raw <= RawValues<ContentSizeCategory>::last; ++raw) {
                window->setPreferredContentSizeCategory(static_cast<ContentSizeCategory>(raw));
                EXPECT_THAT(device::layoutFaults(*window), IsEmpty())
                    << what << " at reading size " << raw << ", " << size.width << " points wide";
            }
        }
        window->setPreferredContentSizeCategory(ContentSizeCategory::large);
    }

    void tap(std::string_view name) {
        EXPECT_TRUE(becomes([&] { return person.tap(name).has_value(); })) << name << ": " << person.screenInWords();
    }

    bool becomes(const std::function<bool()>& condition) const {
        const auto deadline = std::chrono::steady_clock::now() + 20s;
        while (!mainLoop->runUntil(condition, 1ms)) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            clock->advance(10ms);
        }
        return true;
    }

    std::shared_ptr<simulator::Passport> passport = std::make_shared<simulator::Passport>();
    std::shared_ptr<simulator::Camera> camera = std::make_shared<simulator::Camera>();
    simulator::Person person{window, mainLoop, clock};
};

TEST_F(ReaderLayout, ShowsEveryPageAtEveryReadingSize) {
    reader::DocumentReader documentReader{{.cards = std::make_shared<PassportAtHand>(passport)}};
    const auto flow = std::make_shared<readid::NFCWithAccessControlFlow>();
    flow->allowedDocumentTypes = {readid::DocumentType::passport, readid::DocumentType::identityCardTD1};
    flow->uiResources = documentReader.makeUIResources();
    flow->baseUrl = "https://localhost:1";
    flow->instructionsPlayCount = 1;
    bool isOver = false;
    ASSERT_TRUE(
        documentReader.identify(host, ModalPresentationStyle::fullScreen, flow, [&](const auto&) { isOver = true; }));
    mainLoop->drain();
    expectNoFaults("choice");
    tap("choosePassport");
    expectNoFaults("instructions");
    tap("instructionsContinue");
    expectNoFaults("aim");
    tap("aimType");
    tap("typeContinue");
    expectNoFaults("typing with a fault");
    const auto type = [&](const char* field, const std::string& text) { EXPECT_TRUE(person.type(field, text)); };
    type("typeDocumentNumber", passport->documentNumber());
    type("typeDateOfBirth", typedDate(passport->dateOfBirth(), "19"));
    type("typeDateOfExpiry", "01.01.2001");
    expectNoFaults("typed");
    tap("typeContinue");
    EXPECT_TRUE(becomes([&] { return person.sees("The chip does not open"); })) << person.screenInWords();
    expectNoFaults("wrong values");
    tap("failureType");
    type("typeDocumentNumber", passport->documentNumber());
    type("typeDateOfBirth", typedDate(passport->dateOfBirth(), "19"));
    type("typeDateOfExpiry", typedDate(passport->dateOfExpiry(), "20"));
    tap("typeContinue");
    expectNoFaults("lay down");
    EXPECT_TRUE(becomes([&] { return person.sees("The chip was read"); })) << person.screenInWords();
    EXPECT_TRUE(becomes([&] { return window->find("chipResultPortrait")->isVisible(); }));
    expectNoFaults("result");
    tap("chipResultContinue");
    EXPECT_TRUE(becomes([&] { return person.sees("The document could not be sent"); })) << person.screenInWords();
    expectNoFaults("no connection");
    tap("failureEnd");
    EXPECT_TRUE(becomes([&] { return isOver; }));
}

} // namespace
} // namespace kivo::test
