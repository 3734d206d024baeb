#include "platform/camera/FrameSession.hpp"
#include "platform/camera/Modules.hpp"

#include <kivo/platform/FrameCamera.hpp>
#include <kivo/platform/Services.hpp>

#include <utility>

namespace kivo::platform {
namespace {

void report(const std::string& problem) {
    services().diagnostics->report("camera", problem);
}

class FrameDevice final : public CaptureDevice {
public:
    explicit FrameDevice(std::shared_ptr<Feed> from)
        : feed{std::move(from)} {}

    const std::shared_ptr<Feed> feed;
};

class FrameCamera final : public Camera {
public:
    explicit FrameCamera(std::shared_ptr<FrameSource> source)
        : feed_{std::make_shared<Feed>(std::move(source))} {}

    std::shared_ptr<CaptureSession> makeSession() override {
        // A session has an output only when the module is there.
        return std::make_shared<FrameSession>([] { return (*codesModule())->makeReader(); });
    }

    std::shared_ptr<CaptureDevice> defaultVideoDevice() override {
        if (!feed_->isThere()) {
            report(
                "there is no camera; connect one, or name another source of pictures in LinuxOptions::cameraPipeline");
            return nullptr;
        }
        return std::make_shared<FrameDevice>(feed_);
    }

    std::shared_ptr<CaptureInput> makeInput(const std::shared_ptr<CaptureDevice>& device) override {
        const auto own = std::dynamic_pointer_cast<FrameDevice>(device);
        if (!own) {
            return nullptr;
        }
        if (const auto opened = own->feed->open(); !opened) {
            report(opened.error());
            return nullptr;
        }
        return std::make_shared<FrameInput>(own->feed);
    }

    std::shared_ptr<CaptureMetadataOutput> makeMetadataOutput() override {
        if (const auto module = codesModule(); !module) {
            report(module.error());
            return nullptr;
        }
        return std::make_shared<MetadataOutput>();
    }

private:
    const std::shared_ptr<Feed> feed_;
};

} // namespace

std::shared_ptr<Camera> makeFrameCamera(std::shared_ptr<FrameSource> source) {
    return std::make_shared<FrameCamera>(std::move(source));
}

} // namespace kivo::platform
