#include "platform/camera/CodeScan.hpp"
#include "platform/camera/Modules.hpp"

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/FrameCamera.hpp>
#include <kivo/platform/FrameSource.hpp>
#include <kivo/platform/Services.hpp>

#include <chrono>
#include <expected>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

namespace kivo::platform {
namespace {

void report(const std::string& problem) {
    services().diagnostics->report("camera", problem);
}

/// Shares one source among several sessions, one session at a time: the last session to open or start the source has
/// its pictures.
class SharedSource {
public:
    explicit SharedSource(std::shared_ptr<FrameSource> source)
        : source_{std::move(source)} {}

    bool isThere() { return source_->isThere(); }

    std::expected<void, std::string> open() {
        takeOver();
        return source_->open();
    }

    void start(const std::shared_ptr<FrameSink>& sink) {
        takeOver();
        user_ = sink;
        source_->start(sink);
    }

    /// Stops the source unless another sink has taken it over.
    void stop(const std::shared_ptr<FrameSink>& sink) {
        if (user_ == sink) {
            user_ = nullptr;
            source_->stop();
        }
    }

    /// Closes the source unless a session uses it.
    void close() {
        if (!user_) {
            source_->stop();
        }
    }

private:
    void takeOver() {
        if (const auto former = std::exchange(user_, nullptr)) {
            source_->stop();
            former->end("another session has taken the camera over; close one scanning screen before opening the next");
        }
    }

    const std::shared_ptr<FrameSource> source_;
    std::shared_ptr<FrameSink> user_;
};

class FrameInput final : public CaptureInput {
public:
    explicit FrameInput(std::shared_ptr<SharedSource> from)
        : source{std::move(from)} {}

    FrameInput(const FrameInput&) = delete;
    FrameInput& operator=(const FrameInput&) = delete;

    ~FrameInput() override { source->close(); }

    const std::shared_ptr<SharedSource> source;
};

/// Reads codes in the pictures of a source.
class FrameSession final : public CaptureSession {
public:
    FrameSession() = default;
    FrameSession(const FrameSession&) = delete;
    FrameSession& operator=(const FrameSession&) = delete;

    ~FrameSession() override { endScan(); }

    bool canAddInput(const CaptureInput& input) const override {
        return !input_ && dynamic_cast<const FrameInput*>(&input) != nullptr;
    }

    void addInput(std::shared_ptr<CaptureInput> input) override {
        input_ = std::dynamic_pointer_cast<FrameInput>(std::move(input));
    }

    bool canAddOutput(const CaptureMetadataOutput& output) const override {
        return !output_ && dynamic_cast<const MetadataOutput*>(&output) != nullptr;
    }

    void addOutput(std::shared_ptr<CaptureMetadataOutput> output) override {
        output_ = std::dynamic_pointer_cast<MetadataOutput>(std::move(output));
    }

    bool isRunning() const override { return isRunning_ && !(scan_ && scan_->hasEnded()); }

    void startRunning() override {
        if (isRunning()) {
            return;
        }
        endScan();
        isRunning_ = true;
        if (!input_ || !output_) {
            return;
        }
        // An output exists only when the module does. The reader is made on this thread: a process that exits while the
        // reader's library makes its tables would destroy the tables under another thread.
        auto reader = (*codesModule())->makeReader();
        const auto scan = std::make_shared<CodeScan>(std::move(reader), output_, preview());
        if (const auto error = scan->start()) {
            report("pictures cannot be read: " + error.message());
            isRunning_ = false;
            return;
        }
        {
            const std::scoped_lock lock{mutex_};
            scan_ = scan;
        }
        input_->source->start(scan);
        services().mainQueue->asyncAfter(firstPictureTime, [weak = std::weak_ptr{scan}] {
            if (const auto run = weak.lock()) {
                run->reportSilence(firstPictureTime);
            }
        });
    }

    void stopRunning() override {
        isRunning_ = false;
        endScan();
    }

    PreviewFrame preview() const override {
        const std::scoped_lock lock{mutex_};
        return scan_ ? scan_->preview() : PreviewFrame{};
    }

private:
    /// Slow cameras need a second or two.
    static constexpr std::chrono::seconds firstPictureTime{5};

    void endScan() {
        if (scan_) {
            scan_->stop();
            input_->source->stop(scan_);
        }
    }

    std::shared_ptr<FrameInput> input_;
    std::shared_ptr<MetadataOutput> output_;
    bool isRunning_ = false;
    mutable std::mutex mutex_;
    /// The present run, or the last one. Written on the main thread, under the lock.
    std::shared_ptr<CodeScan> scan_;
};

class FrameDevice final : public CaptureDevice {
public:
    explicit FrameDevice(std::shared_ptr<SharedSource> from)
        : source{std::move(from)} {}

    const std::shared_ptr<SharedSource> source;
};

class FrameCamera final : public Camera {
public:
    explicit FrameCamera(std::shared_ptr<FrameSource> source)
        : source_{std::make_shared<SharedSource>(std::move(source))} {}

    std::shared_ptr<CaptureSession> makeSession() override { return std::make_shared<FrameSession>(); }

    std::shared_ptr<CaptureDevice> defaultVideoDevice() override {
        if (!source_->isThere()) {
            report("there is no camera; connect a camera, or name another source of pictures in the options of "
                   "the platform's services");
            return nullptr;
        }
        return std::make_shared<FrameDevice>(source_);
    }

    std::shared_ptr<CaptureInput> makeInput(const std::shared_ptr<CaptureDevice>& device) override {
        const auto own = std::dynamic_pointer_cast<FrameDevice>(device);
        if (!own) {
            return nullptr;
        }
        if (const auto opened = own->source->open(); !opened) {
            report(opened.error());
            return nullptr;
        }
        return std::make_shared<FrameInput>(own->source);
    }

    std::shared_ptr<CaptureMetadataOutput> makeMetadataOutput() override {
        if (const auto module = codesModule(); !module) {
            report(module.error());
            return nullptr;
        }
        return std::make_shared<MetadataOutput>();
    }

private:
    const std::shared_ptr<SharedSource> source_;
};

} // namespace

std::shared_ptr<Camera> makeFrameCamera(std::shared_ptr<FrameSource> source) {
    return std::make_shared<FrameCamera>(std::move(source));
}

} // namespace kivo::platform
