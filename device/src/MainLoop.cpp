#include <kivo/device/MainLoop.hpp>

#include <QSocketNotifier>
#include <utility>

namespace kivo::device {

struct MainLoop::Notifier {
    explicit Notifier(std::shared_ptr<platform::RunLoop> toDrain)
        : loop{std::move(toDrain)}
        , socket{loop->fileDescriptor(), QSocketNotifier::Read} {}

    std::shared_ptr<platform::RunLoop> loop;
    QSocketNotifier socket;
};

MainLoop::MainLoop(std::shared_ptr<platform::RunLoop> loop)
    : notifier_{std::make_unique<Notifier>(std::move(loop))} {
    QObject::connect(&notifier_->socket, &QSocketNotifier::activated, &notifier_->socket,
                     [this] { notifier_->loop->drain(); });
}

MainLoop::~MainLoop() = default;

} // namespace kivo::device
