#include "reading/ChipReading.hpp"

#include "reading/ChipWork.hpp"
#include "reading/ReadingUnderWay.hpp"

#include <kivo/platform/Services.hpp>

#include <mutex>
#include <utility>

namespace kivo::reader {
namespace {

// What the thread and the holder of the reading share. Everything is told on the main queue, and nothing after the end.
class Telling {
public:
    Telling(ChipReading::Progress progress, ChipReading::End end)
        : progress_{std::move(progress)}
        , end_{std::move(end)} {}

    void progress(const ChipProgress& progress) {
        const std::scoped_lock lock{mutex_};
        if (end_ && progress_) {
            queue_->async([tell = progress_, progress] { tell(progress); });
        }
    }

    void end(std::expected<ChipDocument, ChipFailure> outcome) {
        const std::scoped_lock lock{mutex_};
        if (end_) {
            queue_->async([tell = std::exchange(end_, nullptr),
                           told = std::make_shared<std::expected<ChipDocument, ChipFailure>>(std::move(outcome))] {
                tell(std::move(*told));
            });
        }
    }

private:
    std::shared_ptr<platform::MainQueue> queue_ = platform::services().mainQueue;
    std::mutex mutex_{};
    ChipReading::Progress progress_;
    ChipReading::End end_;
};

class Reading final : public ChipReading {
public:
    Reading(std::shared_ptr<CardSource> source, ChipReadingOrder order, Progress progress, End end)
        : telling_{std::make_shared<Telling>(std::move(progress), std::move(end))} {
        ReadingUnderWay::prepare();
        auto queue = std::make_shared<platform::SerialQueue>("kivo.chip", platform::QualityOfService::userInitiated);
        queue->async(
            [queue, telling = telling_, stop = stop_, source = std::move(source), order = std::move(order)]() mutable {
                const ReadingUnderWay underWay{stop};
                // Released here, before an exiting process goes on.
                const auto cards = std::move(source);
                const auto task = std::move(order);
                telling->end(
                    documentRead(*cards, task, stop.get_token(), [&](const auto& step) { telling->progress(step); }));
            });
    }

    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    ~Reading() override { Reading::stop(); }

    // The thread may still wait for the chip, so the end does not wait for the thread.
    void stop() override {
        telling_->end(std::unexpected{ChipFailure::stopped});
        stop_.request_stop();
    }

private:
    std::stop_source stop_{};
    std::shared_ptr<Telling> telling_;
};

} // namespace

std::shared_ptr<ChipReading> ChipReading::start(std::shared_ptr<CardSource> source, ChipReadingOrder order,
                                                Progress progress, End end) {
    return std::make_shared<Reading>(std::move(source), std::move(order), std::move(progress), std::move(end));
}

} // namespace kivo::reader
