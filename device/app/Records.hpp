#pragma once

#include <kivo/simulator/IdentityService.hpp>

#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTreeWidget>

namespace kivo::device::app {

/// What passes between the library and the world: the requests, with their bodies on demand, and the log.
class Records final : public QTabWidget {
public:
    explicit Records(QWidget* parent = nullptr);

    /// Adds a request; any secret in it stays hidden.
    void add(const simulator::RecordedRequest& request);

    void addLogLine(const QString& line);

private:
    QTreeWidget* requests_;
    QPlainTextEdit* log_;
};

} // namespace kivo::device::app
