#pragma once

#include <kivo/platform/Clock.hpp>
#include <kivo/platform/FrameCamera.hpp>
#include <kivo/platform/RunLoop.hpp>
#include <kivo/platform/Services.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo::test {

/// A main loop that runs only when told to, and diagnostics of any thread, which arrive on it.
class CaptureFixture : public ::testing::Test {
protected:
    CaptureFixture() {
        platform::Services services;
        services.mainQueue = loop;
        services.diagnostics = std::make_shared<Diagnostics>(*this);
        platform::install(services);
    }

    /// Runs the main loop until `done` holds, and looks again and again: pictures come on threads that tell nobody.
    bool await(const std::function<bool()>& done) const {
        for (int i = 0; i < 10000; ++i) {
            if (loop->runUntil(done, std::chrono::milliseconds{2})) {
                return true;
            }
        }
        return false;
    }

    const std::shared_ptr<platform::ManualClock> clock = std::make_shared<platform::ManualClock>();
    const std::shared_ptr<platform::RunLoop> loop = std::make_shared<platform::RunLoop>(clock);
    std::vector<std::string> reported;

private:
    struct Diagnostics final : platform::Diagnostics {
        explicit Diagnostics(CaptureFixture& fixture)
            : fixture_{fixture} {}

        void report(std::string_view /*component*/, std::string_view text) override {
            fixture_.loop->async([this, line = std::string{text}] { fixture_.reported.push_back(line); });
        }

        CaptureFixture& fixture_;
    };
};

/// A session on a camera, set up as a scanning screen does, and what is heard from it on the main loop.
class CaptureRig final : public platform::CaptureMetadataOutputDelegate {
public:
    static std::shared_ptr<CaptureRig> on(platform::Camera& camera, std::shared_ptr<platform::DispatchQueue> queue) {
        using enum platform::MetadataObjectType;
        auto rig = std::make_shared<CaptureRig>();
        rig->session = camera.makeSession();
        if (const auto device = camera.defaultVideoDevice()) {
            if (auto input = camera.makeInput(device)) {
                rig->session->addInput(std::move(input));
            }
        }
        const auto output = camera.makeMetadataOutput();
        output->setDelegate(rig, std::move(queue));
        output->setObjectTypes({qr, ean8, ean13, pdf417});
        rig->session->addOutput(output);
        return rig;
    }

    void didOutput(const std::vector<platform::MetadataObject>& objects) override {
        std::vector<std::string> texts;
        for (const auto& object : objects) {
            texts.push_back(object.text.value_or("unread"));
        }
        heard.push_back(std::move(texts));
        if (onHeard) {
            onHeard();
        }
    }

    std::shared_ptr<platform::CaptureSession> session;
    std::vector<std::vector<std::string>> heard;
    std::function<void()> onHeard;
};

} // namespace kivo::test
