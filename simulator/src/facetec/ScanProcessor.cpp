#include "ScanProcessor.hpp"

#include <string_view>
#include <utility>
#include <vector>

namespace kivo::simulator {
namespace {

std::string base64OfLength(std::size_t length) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text(length - length % 4, 'A');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = alphabet[i % alphabet.size()];
    }
    return text;
}

std::vector<std::string> imagesOf(const ScanScript& script) {
    std::vector<std::string> images(script.images);
    for (auto& image : images) {
        image = base64OfLength(script.imageBytes);
    }
    return images;
}

std::optional<std::string> scanOf(const ScanScript& script) {
    return script.hasScan ? std::optional{base64OfLength(script.scanBytes)} : std::nullopt;
}

std::string inWords(const char* what, int status) {
    return std::string{what} + " with status " + std::to_string(status);
}

class FaceResult final : public platform::FaceTecSessionResult {
public:
    FaceResult(int status, const ScanScript& script)
        : status_{status}
        , sessionId_{script.sessionId} {
        if (status == faceScanStatus::completed) {
            faceScan_ = scanOf(script);
            auditTrail_ = imagesOf(script);
            lowQualityAuditTrail_ = auditTrail_;
        }
    }

    int status() const override { return status_; }

    std::optional<std::string> sessionId() const override { return sessionId_; }

    const std::optional<std::string>& faceScanBase64() const override { return faceScan_; }

    const std::vector<std::string>& auditTrailCompressedBase64() const override { return auditTrail_; }

    const std::vector<std::string>& lowQualityAuditTrailCompressedBase64() const override {
        return lowQualityAuditTrail_;
    }

    std::string description() const override { return inWords("a simulated face scan", status_); }

private:
    int status_;
    std::optional<std::string> sessionId_;
    std::optional<std::string> faceScan_;
    std::vector<std::string> auditTrail_;
    std::vector<std::string> lowQualityAuditTrail_;
};

class IDScanResult final : public platform::FaceTecIDScanResult {
public:
    IDScanResult(const Scan& scan, const ScanScript& script)
        : status_{scan.status}
        , sessionId_{script.sessionId} {
        if (scan.status == idScanStatus::completed) {
            idScan_ = scanOf(script);
            front_ = scan.hasFront ? imagesOf(script) : std::vector<std::string>{};
            back_ = scan.hasBack ? imagesOf(script) : std::vector<std::string>{};
        }
    }

    int status() const override { return status_; }

    std::optional<std::string> sessionId() const override { return sessionId_; }

    const std::optional<std::string>& idScanBase64() const override { return idScan_; }

    const std::vector<std::string>& frontImagesCompressedBase64() const override { return front_; }

    const std::vector<std::string>& backImagesCompressedBase64() const override { return back_; }

    std::string description() const override { return inWords("a simulated ID scan", status_); }

private:
    int status_;
    std::optional<std::string> sessionId_;
    std::optional<std::string> idScan_;
    std::vector<std::string> front_;
    std::vector<std::string> back_;
};

class FaceCallback final : public platform::FaceTecFaceScanResultCallback {
public:
    explicit FaceCallback(std::shared_ptr<ScanVerdict> verdict)
        : verdict_{std::move(verdict)} {}

    bool onFaceScanResultProceedToNextStep(const std::string& scanResultBlob) override {
        return verdict_->proceed(scanResultBlob);
    }

    void onFaceScanResultCancel() override { verdict_->cancel(); }

    void onFaceScanUploadProgress(float progress) override { verdict_->setProgress(progress); }

    void onFaceScanUploadMessageOverride(const platform::AttributedText& message) override {
        verdict_->setMessage(message);
    }

private:
    std::shared_ptr<ScanVerdict> verdict_;
};

class IDScanCallback final : public platform::FaceTecIDScanResultCallback {
public:
    explicit IDScanCallback(std::shared_ptr<ScanVerdict> verdict)
        : verdict_{std::move(verdict)} {}

    bool onIDScanResultProceedToNextStep(const std::string& scanResultBlob) override {
        return verdict_->proceed(scanResultBlob);
    }

    void onIDScanResultCancel() override { verdict_->cancel(); }

    void onIDScanUploadProgress(float progress) override { verdict_->setProgress(progress); }

private:
    std::shared_ptr<ScanVerdict> verdict_;
};

} // namespace

std::unique_ptr<ScanProcessor>
makeScanProcessor(std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate> faceScanProcessor) {
    return std::make_unique<ScanProcessor>(ScanProcessor{
        .kind = ScanRecord::Kind::face,
        .numbers = {.cancelled = faceScanStatus::cancelled,
                    .timeout = faceScanStatus::timeout,
                    .contextSwitch = faceScanStatus::contextSwitch,
                    .cameraRefused = faceScanStatus::cameraRefused},
        .process =
            [faceScanProcessor](const Scan& scan, const ScanScript& script, std::shared_ptr<ScanVerdict> verdict) {
                faceScanProcessor->processSessionWhileFaceTecSDKWaits(
                    std::make_shared<FaceResult>(scan.status, script),
                    std::make_shared<FaceCallback>(std::move(verdict)));
            },
        .done = [faceScanProcessor] { faceScanProcessor->onFaceTecSDKCompletelyDone(); }});
}

std::unique_ptr<ScanProcessor>
makeScanProcessor(std::shared_ptr<platform::FaceTecIDScanProcessorDelegate> idScanProcessor) {
    return std::make_unique<ScanProcessor>(ScanProcessor{
        .kind = ScanRecord::Kind::idDocument,
        .numbers = {.cancelled = idScanStatus::cancelled,
                    .timeout = idScanStatus::timeout,
                    .contextSwitch = idScanStatus::contextSwitch,
                    .cameraRefused = idScanStatus::cameraRefused},
        .process =
            [idScanProcessor](const Scan& scan, const ScanScript& script, std::shared_ptr<ScanVerdict> verdict) {
                idScanProcessor->processIDScanWhileFaceTecSDKWaits(
                    std::make_shared<IDScanResult>(scan, script), std::make_shared<IDScanCallback>(std::move(verdict)));
            },
        .done = [idScanProcessor] { idScanProcessor->onFaceTecSDKCompletelyDone(); }});
}

} // namespace kivo::simulator
