#include "screens/PageCamera.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <system_error>
#include <utility>

namespace kivo::reader {
namespace {

using namespace std::chrono_literals;

/// A little faster than cameras give pictures.
constexpr auto timeBetweenLooks = 30ms;

} // namespace

struct PageCamera::Searcher {
    explicit Searcher(ZoneReaders make)
        : makeReader{std::move(make)} {}

    ZoneReaders makeReader;
    /// Made by the first search, on the queue.
    std::unique_ptr<ZoneReader> reader;
    platform::SerialQueue queue{"document page"};
};

std::shared_ptr<PageCamera> PageCamera::open(ZoneReaders makeReader, Seen seen) {
    auto camera = std::make_shared<PageCamera>(std::move(makeReader), std::move(seen));
    camera->state_ = camera->start();
    return camera;
}

PageCamera::PageCamera(ZoneReaders makeReader, Seen seen)
    : seen_{std::move(seen)}
    , searcher_{std::make_shared<Searcher>(std::move(makeReader))} {}

PageCamera::~PageCamera() {
    if (session_) {
        session_->stopRunning();
    }
}

PageCamera::State PageCamera::start() {
    auto& camera = *platform::services().camera;
    const auto device = camera.defaultVideoDevice();
    if (!device) {
        return State::missing;
    }
    auto session = camera.makeSession();
    auto input = camera.makeInput(device);
    if (!input || !session->canAddInput(*input)) {
        return State::refused;
    }
    session->addInput(std::move(input));
    // A session gives pictures only where it has an output, too. The codes that the output may find are of no interest.
    auto output = camera.makeMetadataOutput();
    if (!output || !session->canAddOutput(*output)) {
        return State::missing;
    }
    output->setObjectTypes({});
    session->addOutput(std::move(output));
    session->startRunning();
    session_ = std::move(session);
    lookLater();
    return State::running;
}

void PageCamera::lookLater() {
    platform::services().mainQueue->asyncAfter(timeBetweenLooks, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->look();
            self->lookLater();
        }
    });
}

void PageCamera::look() {
    const auto [picture, number] = session_->preview();
    if (isSearching_ || !picture || number == lastNumber_) {
        return;
    }
    lastNumber_ = number;
    isSearching_ = true;
    // The block holds the searcher: a search that outlives the page ends on its own thread, and nobody waits for it.
    auto search = [weak = weak_from_this(), searcher = searcher_, picture] {
        if (!searcher->reader) {
            searcher->reader = searcher->makeReader();
        }
        const auto sight = searcher->reader ? searcher->reader->look(*picture) : ZoneReader::Sight{};
        platform::services().mainQueue->async([weak, sight] {
            if (const auto self = weak.lock()) {
                self->isSearching_ = false;
                self->seen_(sight);
            }
        });
    };
    try {
        searcher_->queue.async(std::move(search));
    } catch (const std::system_error&) {
        // No thread is left: the person can type.
        isSearching_ = false;
    }
}

} // namespace kivo::reader
