#pragma once

#include <kivo/simulator/IdentityService.hpp>

#include <QPlainTextEdit>
#include <QSocketNotifier>
#include <QTabWidget>
#include <QTreeWidget>
#include <functional>
#include <memory>
#include <string>

namespace kivo::device::app {

/// The traffic between the library and the world: the requests, with their bodies on demand, and the log.
class Records final : public QTabWidget {
public:
    explicit Records(QWidget* parent = nullptr);

    /// Adds a request; its secrets stay hidden.
    void add(const simulator::RecordedRequest& request);

    void addLogLine(const QString& line);

private:
    QTreeWidget* requests_;
    QPlainTextEdit* log_;
};

/// The body of a request or an answer, indented for reading, without the values that are secret or personal: codes,
/// keys, scans and images. Of a body that is no JSON object only the length is told.
QString withoutSecrets(const std::string& body);

/// Hands every line that the process prints on standard output, where the library's log goes, to a listener. The lines
/// still reach the former standard output. Main thread.
class StandardOutput {
public:
    explicit StandardOutput(std::function<void(const QString& line)> listener);
    ~StandardOutput();
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

    /// Reads what is left. Returns the reason why a line did not reach the former standard output, or an empty text.
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
