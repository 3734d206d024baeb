#include "Records.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <QFontDatabase>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTime>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace kivo::device::app {
namespace {

constexpr int mostLogLines = 5000;

/// The members whose texts may be read. All other texts are masked, except addresses of endpoints.
constexpr std::array openMembers{"kivo-action",
                                 "response-type",
                                 "response-code",
                                 "os",
                                 "status",
                                 "message",
                                 "source",
                                 "target-env",
                                 "appVersion",
                                 "networkType",
                                 "sdkVersion",
                                 "apiLevel",
                                 "retry-limit",
                                 "app-doclist",
                                 "kivo-app-doclist",
                                 "kivo-expiry-grace",
                                 "kivo-images",
                                 "kivo-doc-issuers",
                                 "kivo-facematch-min",
                                 "deviceModel"};

QJsonValue masked(const QString& member, const QJsonValue& value) {
    if (value.isObject()) {
        auto object = value.toObject();
        for (auto each = object.begin(); each != object.end(); ++each) {
            *each = masked(each.key(), *each);
        }
        return object;
    }
    if (value.isArray()) {
        QJsonArray array;
        for (const auto& each : value.toArray()) {
            array.append(masked(member, each));
        }
        return array;
    }
    const bool isOpen = !value.isString() || member.endsWith("-endpoint") ||
                        std::ranges::any_of(openMembers, [&](const auto* open) { return member == open; });
    return isOpen ? value : QJsonValue{QString{"\u2022\u2022\u2022 (%1 characters)"}.arg(value.toString().size())};
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
    log->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    log_ = log.get();
    addTab(log.release(), "Log");
}

void Records::add(const simulator::RecordedRequest& request) {
    auto row = std::make_unique<QTreeWidgetItem>(
        QStringList{QString::fromUtf8(simulator::name(request.endpoint)), QString::fromStdString(request.method),
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

QString withoutSecrets(const std::string& body) {
    const auto bytes = QByteArray::fromStdString(body);
    const auto document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) {
        return bytes.isEmpty() ? QString{"(empty)"} : QString{"(%1 bytes that are no JSON object)"}.arg(bytes.size());
    }
    return QString::fromUtf8(QJsonDocument{masked({}, document.object()).toObject()}.toJson());
}

StandardOutput::StandardOutput(std::function<void(const QString&)> listener)
    : listener_{std::move(listener)} {
    std::array<int, 2> ends{};
    // The writing end never blocks. When the pipe is full, the program goes on and the line is lost.
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    std::fflush(stdout);
    original_ = dup(STDOUT_FILENO);
    pipe_ = ends[0];
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
    notifier_ = std::make_unique<QSocketNotifier>(pipe_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { read(); });
}

StandardOutput::~StandardOutput() {
    if (original_ < 0) {
        return;
    }
    std::fflush(stdout);
    read();
    dup2(original_, STDOUT_FILENO);
    notifier_.reset();
    close(original_);
    close(pipe_);
}

std::string StandardOutput::finish() {
    std::fflush(stdout);
    read();
    return error_ == 0 ? "" : "standard output could not be written (" + std::generic_category().message(error_) + ")";
}

void StandardOutput::passOn(const char* bytes, std::size_t count) {
    while (count > 0) {
        const auto written = write(original_, bytes, count);
        if (written < 0 && errno != EINTR) {
            error_ = errno;
            return;
        }
        const auto done = static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        bytes += done;
        count -= done;
    }
}

void StandardOutput::read() {
    std::array<char, 4096> part{};
    for (auto count = ::read(pipe_, part.data(), part.size()); count > 0;
         count = ::read(pipe_, part.data(), part.size())) {
        passOn(part.data(), static_cast<std::size_t>(count));
        rest_.append(part.data(), count);
    }
    for (auto end = rest_.indexOf('\n'); end >= 0; end = rest_.indexOf('\n')) {
        listener_(QString::fromUtf8(rest_.left(end)));
        rest_.remove(0, end + 1);
    }
}

} // namespace kivo::device::app
