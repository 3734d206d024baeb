#pragma once

#include <kivo/platform/FaceTec.hpp>
#include <kivo/platform/ReadID.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kivo::test {

using Texts = std::vector<std::string>;

/// A scan of either kind.
class Scan final : public platform::FaceTecSessionResult, public platform::FaceTecIDScanResult {
public:
    explicit Scan(int status = 0)
        : number{status} {}

    int number;
    std::optional<std::string> session = "session-1";
    std::optional<std::string> scan = "c2Nhbg==";
    Texts first{"Zmlyc3Q=", "bm90IHRoaXM="};
    Texts second{"c2Vjb25k"};

    int status() const override { return number; }

    std::optional<std::string> sessionId() const override { return session; }

    std::string description() const override { return "a scan"; }

    const std::optional<std::string>& faceScanBase64() const override { return scan; }

    const std::optional<std::string>& idScanBase64() const override { return scan; }

    const Texts& auditTrailCompressedBase64() const override { return first; }

    const Texts& lowQualityAuditTrailCompressedBase64() const override { return second; }

    const Texts& frontImagesCompressedBase64() const override { return first; }

    const Texts& backImagesCompressedBase64() const override { return second; }
};

/// Writes down what the waiting library is told about its scan.
class Waiting final : public platform::FaceTecFaceScanResultCallback, public platform::FaceTecIDScanResultCallback {
public:
    bool agrees = true;
    Texts heard;
    std::function<void()> onProgress = [] {};

    bool onFaceScanResultProceedToNextStep(const std::string& blob) override {
        heard.push_back("proceed \"" + blob + '"');
        return agrees;
    }

    bool onIDScanResultProceedToNextStep(const std::string& blob) override {
        return onFaceScanResultProceedToNextStep(blob);
    }

    void onFaceScanResultCancel() override { heard.emplace_back("cancel"); }

    void onIDScanResultCancel() override { onFaceScanResultCancel(); }

    void onFaceScanUploadProgress(float progress) override {
        heard.push_back(std::to_string(progress));
        onProgress();
    }

    void onIDScanUploadProgress(float progress) override { onFaceScanUploadProgress(progress); }

    void onFaceScanUploadMessageOverride(const platform::AttributedText& message) override {
        heard.push_back("message \"" + message.text + '"');
    }
};

/// A face scan library that a test leads by the hand: it keeps what it is given and does nothing by itself.
class ScanVendor final : public platform::FaceTec {
public:
    Texts calls;
    std::function<void(bool)> initialized;
    bool makesScreens = true;
    std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate> face;
    std::shared_ptr<platform::FaceTecIDScanProcessorDelegate> id;
    std::string successMessage = "none";
    std::shared_ptr<platform::FaceTecCustomization> customization;
    std::shared_ptr<platform::FaceTecCustomization> lowLightCustomization;

    void initializeInProductionMode(const std::string& productionKey, const std::string& key,
                                    const std::string& encryptionKey, std::function<void(bool)> completion) override {
        calls.push_back("production " + productionKey + ' ' + key + ' ' + encryptionKey);
        initialized = std::move(completion);
    }

    void initializeInDevelopmentMode(const std::string& key, const std::string& encryptionKey,
                                     std::function<void(bool)> completion) override {
        calls.push_back("development " + key + ' ' + encryptionKey);
        initialized = std::move(completion);
    }

    void setLanguage(std::string_view language) override { calls.push_back("language " + std::string{language}); }

    std::shared_ptr<platform::FaceTecCustomization> makeCustomization() override {
        return std::make_shared<platform::FaceTecCustomization>();
    }

    void setCustomization(std::shared_ptr<platform::FaceTecCustomization> look) override {
        calls.emplace_back("look");
        customization = std::move(look);
    }

    void setLowLightCustomization(std::shared_ptr<platform::FaceTecCustomization> look) override {
        lowLightCustomization = std::move(look);
    }

    void setOverrideResultScreenSuccessMessage(const std::string& message) override { successMessage = message; }

    std::string createFaceTecAPIUserAgentString(const std::string& sessionId) override { return "agent/" + sessionId; }

    std::shared_ptr<platform::ViewController>
    createSessionVC(std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate> processor,
                    const std::string& sessionToken) override {
        face = std::move(processor);
        return makeScreen("face " + sessionToken);
    }

    std::shared_ptr<platform::ViewController>
    createSessionVC(std::shared_ptr<platform::FaceTecIDScanProcessorDelegate> processor,
                    const std::string& sessionToken) override {
        id = std::move(processor);
        return makeScreen("id " + sessionToken);
    }

    /// Takes its screen away and says so.
    void done() {
        if (const auto screen = std::exchange(screen_, nullptr)) {
            screen->dismiss(false);
        }
        if (face) {
            std::exchange(face, nullptr)->onFaceTecSDKCompletelyDone();
        }
        if (id) {
            std::exchange(id, nullptr)->onFaceTecSDKCompletelyDone();
        }
    }

private:
    std::shared_ptr<platform::ViewController> makeScreen(std::string call) {
        calls.push_back(std::move(call));
        screen_ = makesScreens ? std::make_shared<platform::ViewController>() : nullptr;
        return screen_;
    }

    std::shared_ptr<platform::ViewController> screen_;
};

/// Looks that only this vendor has.
struct VendorLooks final : platform::readid::UIResources {
    VendorLooks() { textSize = 21; }
};

/// A document reading library that the test controls: the library keeps each reading's handler for the test to call.
class DocumentVendor final : public platform::ReadID {
public:
    std::optional<platform::readid::ReadIDError> refusal;
    std::shared_ptr<platform::readid::NFCWithAccessControlFlow> flow;
    /// Null until a reading has begun.
    std::function<void(platform::readid::ReadIDResult)> handler;

    std::shared_ptr<platform::readid::UIResources> makeUIResources() override {
        return std::make_shared<VendorLooks>();
    }

    std::expected<void, platform::readid::ReadIDError>
    identify(const std::shared_ptr<platform::ViewController>& /*from*/, platform::ModalPresentationStyle style,
             const std::shared_ptr<platform::readid::NFCWithAccessControlFlow>& given,
             std::function<void(platform::readid::ReadIDResult)> then) override {
        EXPECT_EQ(style, platform::ModalPresentationStyle::fullScreen);
        flow = given;
        if (refusal) {
            return std::unexpected{*refusal};
        }
        handler = std::move(then);
        return {};
    }

    /// Ends the reading with this page or chip. Made in place: GCC 12 takes a moved variant for uninitialised under the
    /// sanitizers.
    template <class Value>
    void succeed(const Value& value) const {
        handler(platform::readid::ReadIDResult{std::in_place, std::in_place_type<Value>, value});
    }

    void fail(platform::readid::FailureReason reason, const platform::readid::VIZResult* page = nullptr) const {
        platform::readid::Failure failure;
        failure.failureReason = reason;
        if (page != nullptr) {
            failure.viz = *page;
        }
        handler(std::unexpected{std::move(failure)});
    }
};

struct VendorSession final : platform::readid::ReadIDSession {
    int finished = 0;

    std::string sessionId() const override { return "R1"; }

    void finish(std::function<void()> completionHandler) override {
        ++finished;
        completionHandler();
    }
};

} // namespace kivo::test
