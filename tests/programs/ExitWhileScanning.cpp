// Exits while codes are read in pictures that come without end. Argument: the pipeline, or nothing for pictures from a
// thread of the program; "at once" exits as soon as the session runs. A scan that cannot be is status 1.

#include <kivo/platform/FrameCamera.hpp>
#include <kivo/platform/RunLoop.hpp>
#include <kivo/simulator/Camera.hpp>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace kivo::platform;

struct Endless final : FrameSource {
    void start(std::shared_ptr<FrameSink> sink) override {
        std::thread{[sink] {
            const auto frame = std::make_shared<VideoFrame>(kivo::simulator::qrCodeFrame("text"));
            for (;;) {
                sink->take(frame);
            }
        }}.detach();
    }

    void stop() override {}
};

struct Counter final : CaptureMetadataOutputDelegate {
    void didOutput(const std::vector<MetadataObject>& /*objects*/) override { ++number; }

    int number = 0;
};

} // namespace

int main(int count, char** arguments) {
    const std::string argument = count > 1 ? arguments[1] : "";
    const bool atOnce = argument == "at once";
    const auto pipeline = atOnce ? "" : argument;
    const auto camera = makeFrameCamera(pipeline.empty() ? std::make_shared<Endless>() : makePipelineSource(pipeline));
    // Never let go, like a host's globals.
    static const auto& session = *new std::shared_ptr{camera->makeSession()};
    const auto counter = std::make_shared<Counter>();
    const auto output = camera->makeMetadataOutput();
    const auto input = camera->makeInput(camera->defaultVideoDevice());
    if (!output || !input) {
        return 1;
    }
    output->setDelegate(counter, RunLoop::main());
    output->setObjectTypes({MetadataObjectType::qr, MetadataObjectType::pdf417});
    session->addInput(input);
    session->addOutput(output);
    session->startRunning();
    if (atOnce) {
        return 0;
    }
    const auto isBusy = [&] { return counter->number > 1 || (!pipeline.empty() && session->preview().number > 1); };
    for (int i = 0;
         i < 10000 && session->isRunning() && !RunLoop::main()->runUntil(isBusy, std::chrono::milliseconds{1}); ++i) {
    }
    return isBusy() ? 0 : 1;
}
