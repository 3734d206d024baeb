#pragma once

#include <QSocketNotifier>
#include <QString>
#include <functional>
#include <memory>

namespace kivo::device::app {

/// Takes what the process prints on standard output, where the library's log goes, and hands it on line by line. The
/// lines still come out where they did. Main thread.
class StandardOutput {
public:
    explicit StandardOutput(std::function<void(const QString& line)> listener);
    ~StandardOutput();
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

private:
    void read();

    std::function<void(const QString&)> listener_;
    int original_ = -1;
    int pipe_ = -1;
    QByteArray rest_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace kivo::device::app
