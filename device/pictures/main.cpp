// Makes the pictures of the documentation from screens that the demo has drawn, and compares such pictures. A tool of
// the project itself, run by ./dev pictures and ./dev check.
#include "Compare.hpp"
#include "Strip.hpp"
#include "WindowPicture.hpp"
#include "app/AnimatedPng.hpp"
#include "program/CommandLine.hpp"
#include "program/Program.hpp"

#include <QApplication>
#include <QPainter>
#include <QSaveFile>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace kivo::device;
using namespace std::chrono_literals;

constexpr int stripWidth = 1960;
constexpr int animationWidth = 320;
constexpr auto shown = 1400ms; // of each screen
constexpr auto moving = 60ms;  // of each frame of a passage
constexpr int framesOfPassage = 2;

struct Job {
    std::string name;
    std::string file;
    pictures::Page page;
    bool isFromTheRight = false;
    std::vector<pictures::Step> steps;
    std::vector<std::string> folders;
};

/// Takes "CAPTION=FILE" with a picture.
std::string takeStep(const std::string& text, Job& job) {
    const auto equals = text.find('=');
    QImage screen{QString::fromStdString(text.substr(equals + 1))};
    if (equals == std::string::npos || screen.isNull()) {
        return "no CAPTION=FILE with a picture: \"" + text + "\"";
    }
    job.steps.push_back({.caption = QString::fromStdString(text.substr(0, equals)), .screen = std::move(screen)});
    return "";
}

void write(const std::string& name, const QByteArray& bytes) {
    QSaveFile file{QString::fromStdString(name)};
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        throw std::runtime_error{name + " could not be written (" + file.errorString().toStdString() + ")"};
    }
}

void save(const std::string& name, const QImage& picture) {
    if (!picture.save(QString::fromStdString(name), "PNG", 0)) {
        throw std::runtime_error{name + " could not be written"};
    }
}

/// One screen after the other on a phone, each pushed in from the right.
QByteArray animation(const Job& job) {
    app::AnimatedPng made;
    for (std::size_t i = 0; i < job.steps.size(); ++i) {
        const auto& now = job.steps[i].screen;
        const auto& next = job.steps[(i + 1) % job.steps.size()].screen;
        made.add(pictures::phone(now, animationWidth, job.page), shown);
        for (int step = 1; step <= framesOfPassage; ++step) {
            const auto rest = 1 - static_cast<double>(step) / (framesOfPassage + 1);
            auto between = now;
            QPainter painter{&between};
            painter.drawImage(QPointF{next.width() * rest * rest, 0}, next);
            painter.end();
            made.add(pictures::phone(between, animationWidth, job.page), moving);
        }
    }
    return made.file();
}

int compare(const Job& job) {
    const auto found = pictures::differences(job.folders.at(0), job.folders.at(1));
    for (const auto& each : found) {
        std::fprintf(stderr, "%s\n", each.c_str());
    }
    return found.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int make(const Job& job) {
    if (job.name == "window" && !job.file.empty()) {
        save(job.file, pictures::windowPicture(job.page.isDark));
        return EXIT_SUCCESS;
    }
    if (job.steps.empty()) {
        program::complain("there are no steps to show");
        return 2;
    }
    if (job.name == "strip") {
        save(job.file, pictures::strip(job.steps, stripWidth, job.page));
    } else {
        write(job.file, animation(job));
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    return program::run("kivo-pictures", [&]() -> int {
        Job job;
        program::CommandLine line{{.name = "kivo-pictures",
                                   .arguments = "[--dark] [--right-to-left] strip|animation FILE CAPTION=SCREEN... | "
                                                "window FILE | compare FOLDER FOLDER",
                                   .purpose = "Makes pictures for the documentation out of pictures of screens, or "
                                              "compares the pictures of two folders.\n",
                                   .statuses = {{0, "the picture is written, or the folders hold the same pictures"},
                                                {1, "the picture could not be written, or a picture differs"},
                                                {2, "the command line is wrong"}}}};
        line.flag("--dark", job.page.isDark, "for a dark page");
        line.flag("--right-to-left", job.isFromTheRight, "for phones of a person who reads from the right");
        line.arguments([&](const std::string& text) -> std::string {
            if (job.name.empty()) {
                job.name = text;
                return text == "strip" || text == "animation" || text == "window" || text == "compare"
                           ? ""
                           : "no such job: " + text;
            }
            if (job.name == "compare") {
                job.folders.push_back(text);
                return "";
            }
            if (job.file.empty()) {
                job.file = text;
                return "";
            }
            return takeStep(text, job);
        });
        // Qt draws letters into memory, for which it needs an application, but no display.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_SCALE_FACTOR", "2");
        int count = 1;
        const QApplication application{count, argv};
        if (const auto status = line.read(argc, argv)) {
            return *status;
        }
        job.page.direction = job.isFromTheRight ? Qt::RightToLeft : Qt::LeftToRight;
        if (job.name == "compare" && job.folders.size() != 2) {
            program::complain("compare takes two folders");
            return 2;
        }
        return job.name == "compare" ? compare(job) : make(job);
    });
}
