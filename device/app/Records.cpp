#include "Records.hpp"

#include "ToolLook.hpp"

#include <kivo/simulator/Secrets.hpp>

#include <QBoxLayout>
#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHeaderView>
#include <QToolButton>
#include <cstdint>
#include <memory>

namespace kivo::device::app {
namespace {

/// The columns of the requests.
struct Column {
    enum : std::uint8_t { endpoint, method, status, time, session };
};

constexpr int mostRequests = 2000;

void addBody(QTreeWidgetItem& row, const QString& title, const std::string& body) {
    auto heading = std::make_unique<QTreeWidgetItem>(QStringList{title});
    auto text = std::make_unique<QTreeWidgetItem>(
        QStringList{body.empty() ? QString{"(empty)"} : QString::fromStdString(simulator::withoutSecrets(body))});
    text->setFont(0, QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* const shown = text.release();
    heading->addChild(shown);
    row.addChild(heading.release());
    shown->setFirstColumnSpanned(true);
}

/// The item as a person would paste it into a report: its texts, and those below it.
QString textOf(const QTreeWidgetItem& item) {
    QStringList words;
    for (int column = 0; column < item.columnCount(); ++column) {
        words.append(item.text(column));
    }
    auto text = words.join('\t').trimmed() + '\n';
    for (int i = 0; i < item.childCount(); ++i) {
        text += textOf(*item.child(i));
    }
    return text;
}

} // namespace

Records::Records(QWidget* parent)
    : QTabWidget{parent} {
    auto requests = std::make_unique<QTreeWidget>();
    requests->setAccessibleName("Requests");
    requests->setHeaderLabels({"Endpoint", "Method", "Status", "Time", "Session"});
    requests->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    requests->header()->setStretchLastSection(true);
    requests->setUniformRowHeights(false);
    requests->setFrameShape(QFrame::NoFrame);
    requests_ = requests.get();
    addTab(requests.release(), "Requests");
    auto log = std::make_unique<LogView>();
    log_ = log.get();
    addTab(log.release(), "Log");
    setDocumentMode(false);
    dress();
}

void Records::add(const simulator::RecordedRequest& request) {
    auto row = std::make_unique<QTreeWidgetItem>(
        QStringList{QString::fromUtf8(simulator::name(request.endpoint)), QString::fromStdString(request.method),
                    request.status == 0 ? QString{"no answer"} : QString::number(request.status),
                    clock_().toString("HH:mm:ss.zzz"), QString::fromStdString(request.session)});
    if (request.violation) {
        row->setText(Column::status,
                     row->text(Column::status) + " (" + QString::fromStdString(*request.violation) + ")");
    }
    constexpr int firstFailure = 400;
    const bool isBad = request.violation.has_value() || request.status == 0 || request.status >= firstFailure;
    row->setData(Column::status, Qt::UserRole, isBad);
    color(*row);
    addBody(*row, "Request", request.body);
    addBody(*row, "Answer", request.answer);
    requests_->addTopLevelItem(row.release());
    if (requests_->topLevelItemCount() > mostRequests) {
        const std::unique_ptr<QTreeWidgetItem> oldest{requests_->takeTopLevelItem(0)};
    }
    requests_->scrollToBottom();
}

void Records::color(QTreeWidgetItem& row) const {
    const auto& colors = toolColors(isToolDark());
    row.setForeground(Column::status, row.data(Column::status, Qt::UserRole).toBool() ? colors.bad : colors.good);
    for (const auto column : {Column::method, Column::time, Column::session}) {
        row.setForeground(column, colors.faintText);
    }
}

void Records::dress() {
    for (int i = 0; i < requests_->topLevelItemCount(); ++i) {
        color(*requests_->topLevelItem(i));
    }
    log_->dress();
}

void Records::copy() {
    if (currentWidget() == log_) {
        log_->copy();
        return;
    }
    QString text;
    const auto chosen = requests_->selectedItems();
    for (const auto* const item : chosen) {
        text += textOf(*item);
    }
    for (int i = 0; chosen.isEmpty() && i < requests_->topLevelItemCount(); ++i) {
        text += textOf(*requests_->topLevelItem(i));
    }
    QGuiApplication::clipboard()->setText(text);
}

void Records::clear() {
    if (currentWidget() == log_) {
        log_->clear();
    } else {
        requests_->clear();
    }
}

} // namespace kivo::device::app
