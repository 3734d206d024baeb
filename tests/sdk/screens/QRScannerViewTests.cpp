#include "services/acquisition/qr/inhouse/QRCodeScannerVC.hpp"
#include "support/ScreenFixture.hpp"

namespace kivo {
namespace {

using platform::MetadataObject;
using platform::MetadataObjectType;

/// A camera, its session, input and output in one, whose sight is what a test says.
struct FakeCamera final : platform::Camera,
                          platform::CaptureSession,
                          platform::CaptureDevice,
                          platform::CaptureInput,
                          platform::CaptureMetadataOutput,
                          std::enable_shared_from_this<FakeCamera> {
    bool running = false;
    std::vector<MetadataObjectType> types{};
    std::weak_ptr<platform::CaptureMetadataOutputDelegate> listener{};
    std::shared_ptr<platform::DispatchQueue> queue{};

    std::shared_ptr<platform::CaptureSession> makeSession() override { return shared_from_this(); }

    std::shared_ptr<platform::CaptureDevice> defaultVideoDevice() override { return shared_from_this(); }

    std::shared_ptr<platform::CaptureInput> makeInput(const std::shared_ptr<CaptureDevice>& /*device*/) override {
        return shared_from_this();
    }

    std::shared_ptr<platform::CaptureMetadataOutput> makeMetadataOutput() override { return shared_from_this(); }

    bool canAddInput(const CaptureInput& /*input*/) const override { return true; }

    void addInput(std::shared_ptr<CaptureInput> /*input*/) override {}

    bool canAddOutput(const CaptureMetadataOutput& /*output*/) const override { return true; }

    void addOutput(std::shared_ptr<CaptureMetadataOutput> /*output*/) override {}

    bool isRunning() const override { return running; }

    void startRunning() override { running = true; }

    void stopRunning() override { running = false; }

    platform::PreviewFrame preview() const override { return {}; }

    void setDelegate(std::weak_ptr<platform::CaptureMetadataOutputDelegate> delegate,
                     std::shared_ptr<platform::DispatchQueue> on) override {
        listener = std::move(delegate);
        queue = std::move(on);
    }

    void setObjectTypes(std::vector<MetadataObjectType> wanted) override { types = std::move(wanted); }
};

struct Heard final : QRScannerViewDelegate {
    explicit Heard(const FakeCamera& watched)
        : camera{watched} {}

    const FakeCamera& camera;
    std::vector<std::string> words{};

    void scanningDidFail() override { words.emplace_back("failed"); }

    void scanningSucceeded(std::string code) override { words.push_back(code + (camera.running ? ", running" : "")); }

    void scanningDidStop() override { words.emplace_back(camera.running ? "not stopped" : "stopped"); }
};

struct VibratingWorkspace final : platform::Workspace {
    void open(const std::string& /*url*/) override {}

    void vibrate() override { onVibration(); }

    std::function<void()> onVibration = [] {};
};

class QRScannerViewWithCamera : public test::ScreenFixture {
protected:
    QRScannerViewWithCamera() {
        platform::Services services;
        services.camera = camera;
        services.workspace = workspace;
        platform::install(services);
    }

    std::shared_ptr<FakeCamera> camera = std::make_shared<FakeCamera>();
    std::shared_ptr<VibratingWorkspace> workspace = std::make_shared<VibratingWorkspace>();
};

TEST_F(QRScannerViewWithCamera, StartsLookingForTheFourKindsOfCodeOnTheMainQueue) {
    const auto view = std::make_shared<QRScannerView>();
    EXPECT_TRUE(camera->running);
    EXPECT_EQ(camera->types, (std::vector{MetadataObjectType::qr, MetadataObjectType::ean8, MetadataObjectType::ean13,
                                          MetadataObjectType::pdf417}));
    EXPECT_EQ(camera->queue, loop_);
    EXPECT_EQ(view->previewSession(), camera);
}

TEST_F(QRScannerViewWithCamera, ReportsTheFirstObjectOnlyAndThenStops) {
    struct Case {
        std::vector<MetadataObject> objects;
        std::vector<std::string> heard;
    };

    const MetadataObject code{.type = MetadataObjectType::qr, .text = "text"};
    const MetadataObject face{};
    const MetadataObject unread{.type = MetadataObjectType::qr, .text = {}};
    for (const auto& each : std::vector<Case>{{{code, face}, {"vibrated", "text, running", "stopped"}},
                                              {{face, code}, {}},
                                              {{unread, code}, {}},
                                              {{}, {"stopped"}}}) {
        const auto view = std::make_shared<QRScannerView>();
        const auto heard = std::make_shared<Heard>(*camera);
        view->delegate = heard;
        workspace->onVibration = [&] { heard->words.emplace_back("vibrated"); };
        camera->listener.lock()->didOutput(each.objects);
        EXPECT_EQ(heard->words, each.heard);
        EXPECT_EQ(camera->running, each.heard.empty());
    }
}

} // namespace
} // namespace kivo
