#pragma once

#include <kivo/platform/RunLoop.hpp>

#include <memory>

namespace kivo::device {

/// Folds a run loop into Qt's. The run loop's blocks run on the thread that made this object, while Qt's loop runs
/// there.
class KIVO_EXPORT MainLoop {
public:
    /// Begins to run `loop` in Qt's event loop. Main thread, after the `QApplication` was made.
    explicit MainLoop(std::shared_ptr<platform::RunLoop> loop = platform::RunLoop::main());
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;
    ~MainLoop();

private:
    struct Notifier;

    std::unique_ptr<Notifier> notifier_;
};

} // namespace kivo::device
