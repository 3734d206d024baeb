#include "NoCamera.hpp"

namespace kivo::platform {
namespace {

class EmptySession final : public CaptureSession {
public:
    bool canAddInput(const CaptureInput& /*input*/) const override { return false; }

    void addInput(std::shared_ptr<CaptureInput> /*input*/) override {}

    bool canAddOutput(const CaptureMetadataOutput& /*output*/) const override { return false; }

    void addOutput(std::shared_ptr<CaptureMetadataOutput> /*output*/) override {}

    bool isRunning() const override { return isRunning_; }

    void startRunning() override { isRunning_ = true; }

    void stopRunning() override { isRunning_ = false; }

private:
    bool isRunning_ = false;
};

class NoCamera final : public Camera {
public:
    std::shared_ptr<CaptureSession> makeSession() override { return std::make_shared<EmptySession>(); }

    std::shared_ptr<CaptureDevice> defaultVideoDevice() override { return nullptr; }

    std::shared_ptr<CaptureInput> makeInput(const std::shared_ptr<CaptureDevice>& /*device*/) override {
        return nullptr;
    }

    std::shared_ptr<CaptureMetadataOutput> makeMetadataOutput() override { return nullptr; }
};

} // namespace

std::shared_ptr<Camera> makeNoCamera() {
    return std::make_shared<NoCamera>();
}

} // namespace kivo::platform
