// Makes pictures of the document reader's screens, in the language of LC_ALL. A tool of the project itself, run by
// ./dev pictures and ./dev check.
#include "app/Models.hpp"
#include "contrast/ContrastReport.hpp"
#include "desk/ReaderTour.hpp"
#include "pictures/reader/PagePicture.hpp"
#include "program/CommandLine.hpp"
#include "program/Program.hpp"

#include <kivo/device/Pictures.hpp>
#include <kivo/platform/LinuxServices.hpp>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

using namespace kivo;
using namespace std::chrono_literals;

/// The same page with a wrong check digit, so that the camera goes on looking.
std::vector<std::string> unread(std::vector<std::string> lines) {
    auto& digit = lines.back().back();
    digit = digit == '0' ? '1' : '0';
    return lines;
}

void draw(const std::filesystem::path& folder, bool isDark, bool isLarge) {
    const auto pictures = device::Pictures::open();
    auto services = platform::linuxServices();
    services.fonts = pictures->fonts();
    platform::install(services);
    const auto window = std::make_shared<platform::Window>();
    const auto& model = device::app::usualModel();
    window->setSize(model.size);
    window->setSafeArea(model.safeArea);
    window->setUserInterfaceStyle(isDark ? platform::UserInterfaceStyle::dark : platform::UserInterfaceStyle::light);
    using enum platform::ContentSizeCategory;
    window->setPreferredContentSizeCategory(isLarge ? accessibilityExtraExtraExtraLarge : large);
    const auto host = std::make_shared<platform::ViewController>();
    window->setRootViewController(host);
    const auto passport =
        std::make_shared<simulator::Passport>(simulator::PassportConfiguration{.extendedLength = false});
    desk::ReaderTour tour{passport,
                          {.unread = device::pictures::pagePicture(unread(passport->zone())),
                           .readable = device::pictures::pagePicture(passport->zone())},
                          host,
                          window,
                          simulator::Person{window},
                          [](const auto& condition) { return platform::RunLoop::main()->runUntil(condition, 20s); }};
    contrast::Report contrasts{folder};
    const auto save = [&](const std::string& page) {
        if (const auto saved = pictures->save(*window, folder / (page + ".png")); !saved) {
            throw std::runtime_error{saved.error()};
        }
        if (const auto hardlyRead = contrasts.add(page, pictures->contrasts(*window)); !hardlyRead.empty()) {
            throw std::runtime_error{hardlyRead};
        }
    };
    tour.goWell(save);
    tour.goWrong(save);
}

} // namespace

int main(int argc, char** argv) {
    return program::run("kivo-reader-pictures", [&] {
        std::string folder;
        bool isDark = false;
        bool isLarge = false;
        program::CommandLine line{
            {.name = "kivo-reader-pictures",
             .arguments = "[options] FOLDER",
             .purpose = "Puts a picture of every page of the document reader's screens into a folder.\n",
             .statuses = {{0, "the pictures are written"},
                          {1, "a page did not come, a picture could not be written, or a text hardly stands out"},
                          {2, "the command line is wrong"}}}};
        line.flag("--dark", isDark, "the dark appearance");
        line.flag("--large", isLarge, "the largest reading size");
        line.arguments([&](const std::string& text) -> std::string {
            if (!folder.empty()) {
                return "takes one folder";
            }
            folder = text;
            return "";
        });
        if (const auto status = line.read(argc, argv)) {
            return *status;
        }
        if (folder.empty()) {
            return line.refuse("a folder is needed");
        }
        std::filesystem::create_directories(folder);
        draw(folder, isDark, isLarge);
        return EXIT_SUCCESS;
    });
}
