#pragma once

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace kivo::device::app {

/// Hands every line that the process prints on standard output, where the library's log goes, to a listener. The lines
/// still reach the former standard output. Main thread.
class StandardOutput {
public:
    explicit StandardOutput(std::function<void(const QString& line)> listener);
    ~StandardOutput();
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

    /// Hands over the lines that were printed but not read yet. Returns the reason why a line did not reach the former
    /// standard output, or an empty text.
    std::string finish();

private:
    void read();
    void passOn(const char* bytes, std::size_t count);

    std::function<void(const QString&)> listener_;
    int original_ = -1;
    int pipe_ = -1;
    int error_ = 0;
    QByteArray rest_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace kivo::device::app
