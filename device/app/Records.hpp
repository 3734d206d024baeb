#pragma once

#include "LogView.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <QTabWidget>
#include <QTime>
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

    void addLogLine(const QString& line) { log_->add(line); }

    /// Sets the clock of the requests' times; the default is the machine's.
    void setClock(std::function<QTime()> clock) { clock_ = std::move(clock); }

    /// Takes the colours of the tool anew.
    void dress();

    void copy();
    void clear();

private:
    void color(QTreeWidgetItem& row) const;

    QTreeWidget* requests_;
    LogView* log_;
    std::function<QTime()> clock_ = QTime::currentTime;
};

} // namespace kivo::device::app
