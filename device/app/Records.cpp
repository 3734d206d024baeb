#include "Records.hpp"

#include "Secrets.hpp"

#include <QFontDatabase>
#include <QHeaderView>
#include <QTime>
#include <memory>

namespace kivo::device::app {
namespace {

constexpr int mostLogLines = 5000;

QString toText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

void addBody(QTreeWidgetItem& row, const QString& title, const std::string& body) {
    auto heading = std::make_unique<QTreeWidgetItem>(QStringList{title});
    auto text = std::make_unique<QTreeWidgetItem>(QStringList{withoutSecrets(body)});
    text->setFont(0, QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* const shown = text.release();
    heading->addChild(shown);
    row.addChild(heading.release());
    shown->setFirstColumnSpanned(true);
}

} // namespace

Records::Records(QWidget* parent)
    : QTabWidget{parent} {
    auto requests = std::make_unique<QTreeWidget>();
    requests->setAccessibleName("Requests");
    requests->setHeaderLabels({"Endpoint", "Method", "Status", "Time"});
    requests->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    requests_ = requests.get();
    addTab(requests.release(), "Requests");
    auto log = std::make_unique<QPlainTextEdit>();
    log->setAccessibleName("Log");
    log->setReadOnly(true);
    log->setMaximumBlockCount(mostLogLines);
    log->setLineWrapMode(QPlainTextEdit::NoWrap);
    log->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    log_ = log.get();
    addTab(log.release(), "Log");
}

void Records::add(const simulator::RecordedRequest& request) {
    auto row = std::make_unique<QTreeWidgetItem>(
        QStringList{toText(simulator::name(request.endpoint)), QString::fromStdString(request.method),
                    request.status == 0 ? QString{"no answer"} : QString::number(request.status),
                    QTime::currentTime().toString("HH:mm:ss.zzz")});
    if (request.violation) {
        row->setText(2, row->text(2) + " (" + QString::fromStdString(*request.violation) + ")");
    }
    addBody(*row, "Request", request.body);
    addBody(*row, "Answer", request.answer);
    requests_->addTopLevelItem(row.release());
    requests_->scrollToBottom();
}

void Records::addLogLine(const QString& line) {
    log_->appendPlainText(line);
}

} // namespace kivo::device::app
