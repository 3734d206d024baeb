#include "services/acquisition/qr/inhouse/QRScannerView.hpp"

#include "support/ScreenFixture.hpp"

namespace kivo {
namespace {

using platform::MetadataObject;
using platform::MetadataObjectType;

/// A camera, its session, input and output in one, which writes down what is asked of it.
struct FakeCamera final : platform::Camera,
                          platform::CaptureSession,
                          platform::CaptureDevice,
                          platform::CaptureInput,
                          platform::CaptureMetadataOutput,
                          std::enable_shared_from_this<FakeCamera> {
    bool hasDevice = true;
    bool opens = true;
    bool acceptsInput = true;
    bool acceptsOutput = true;
    bool running = false;
    std::vector<std::string> asked{};
    std::vector<MetadataObjectType> types{};
    std::weak_ptr<platform::CaptureMetadataOutputDelegate> listener{};
    std::shared_ptr<platform::DispatchQueue> queue{};

    std::shared_ptr<platform::CaptureSession> makeSession() override { return shared_from_this(); }

    std::shared_ptr<platform::CaptureDevice> defaultVideoDevice() override {
        return hasDevice ? shared_from_this() : nullptr;
    }

    std::shared_ptr<platform::CaptureInput> makeInput(const std::shared_ptr<CaptureDevice>& /*device*/) override {
        return opens ? shared_from_this() : nullptr;
    }

    std::shared_ptr<platform::CaptureMetadataOutput> makeMetadataOutput() override { return shared_from_this(); }

    bool canAddInput(const CaptureInput& /*input*/) const override { return acceptsInput; }

    void addInput(std::shared_ptr<CaptureInput> /*input*/) override { asked.emplace_back("input"); }

    bool canAddOutput(const CaptureMetadataOutput& /*output*/) const override { return acceptsOutput; }

    void addOutput(std::shared_ptr<CaptureMetadataOutput> /*output*/) override { asked.emplace_back("output"); }

    bool isRunning() const override { return running; }

    void startRunning() override {
        running = true;
        asked.emplace_back("start");
    }

    void stopRunning() override {
        running = false;
        asked.emplace_back("stop");
    }

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

class QRScannerViewWithCamera : public test::ScreenFixture {
protected:
    QRScannerViewWithCamera() {
        platform::Services services;
        services.camera = camera;
        platform::install(services);
    }

    std::shared_ptr<FakeCamera> camera = std::make_shared<FakeCamera>();
};

TEST_F(QRScannerViewWithCamera, StartsLookingForTheFourKindsOfCodeOnTheMainQueue) {
    const auto view = std::make_shared<QRScannerView>();
    EXPECT_EQ(camera->asked, (std::vector<std::string>{"input", "output", "start"}));
    EXPECT_EQ(camera->types, (std::vector{MetadataObjectType::qr, MetadataObjectType::ean8, MetadataObjectType::ean13,
                                          MetadataObjectType::pdf417}));
    EXPECT_EQ(camera->queue, loop_);
}

TEST_F(QRScannerViewWithCamera, KeepsAnIdleSessionUnlessTheSessionRefusesTheCamera) {
    struct Case {
        bool FakeCamera::* missing;
        bool keepsSession;
        std::vector<std::string> asked;
    };

    for (const auto& each : std::vector<Case>{{&FakeCamera::hasDevice, true, {}},
                                              {&FakeCamera::opens, true, {}},
                                              {&FakeCamera::acceptsInput, false, {}},
                                              {&FakeCamera::acceptsOutput, false, {"input"}}}) {
        (*camera).*each.missing = false;
        const auto view = std::make_shared<QRScannerView>();
        EXPECT_EQ(view->captureSession != nullptr, each.keepsSession);
        EXPECT_EQ(camera->asked, each.asked);
        (*camera).*each.missing = true;
        camera->asked.clear();
    }
}

TEST_F(QRScannerViewWithCamera, ReportsTheFirstObjectOnlyAndThenStops) {
    struct Case {
        std::vector<MetadataObject> objects;
        std::vector<std::string> heard;
    };

    const MetadataObject code{.type = MetadataObjectType::qr, .text = "text"};
    const MetadataObject face{};
    const MetadataObject unread{.type = MetadataObjectType::qr, .text = {}};
    for (const auto& each : std::vector<Case>{{{code, face}, {"text, running", "stopped"}},
                                              {{face, code}, {}},
                                              {{unread, code}, {}},
                                              {{}, {"stopped"}}}) {
        const auto view = std::make_shared<QRScannerView>();
        const auto heard = std::make_shared<Heard>(*camera);
        view->delegate = heard;
        camera->listener.lock()->didOutput(each.objects);
        EXPECT_EQ(heard->words, each.heard);
        EXPECT_EQ(camera->running, each.heard.empty());
    }
}

TEST_F(QRScannerViewWithCamera, TurnsTheCameraOffWhenItGoes) {
    std::make_shared<QRScannerView>().reset();
    EXPECT_FALSE(camera->running);
    EXPECT_TRUE(camera->listener.expired());
}

} // namespace
} // namespace kivo
