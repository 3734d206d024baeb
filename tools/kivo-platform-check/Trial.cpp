#include "Trial.hpp"

#include <array>
#include <cstdio>
#include <fstream>

namespace kivo::check {
namespace {

constexpr std::size_t longestShown = 120;

} // namespace

std::string shown(std::string_view text) {
    std::string all = "\"";
    for (const char character : text.substr(0, longestShown)) {
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) {
            std::array<char, 8> escaped{};
            std::snprintf(escaped.data(), escaped.size(), "\\x%02X", static_cast<unsigned>(character));
            all += escaped.data();
        } else {
            all += character;
        }
    }
    return all + (text.size() > longestShown ? "\"... (" + std::to_string(text.size()) + " bytes)" : "\"");
}

std::string shown(platform::UrlErrorKind kind) {
    return std::string{name(kind)};
}

std::filesystem::path Trial::write(const std::filesystem::path& name, std::string_view bytes) const {
    const auto file = folder / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream{file, std::ios::binary}.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file;
}

void Trial::fail(std::string detail) {
    finding_.result = Result::broken;
    // The first lines tell enough; a loop may fail a thousand times.
    constexpr std::size_t mostDetails = 8;
    if (finding_.details.size() < mostDetails) {
        finding_.details.push_back(std::move(detail));
    }
}

void Trial::giveUp(const std::string& why) {
    throw Unchecked{why};
}

bool Trial::expectSoon(const std::string& what, const std::function<bool()>& holds) {
    const bool came = await(holds);
    if (!came) {
        fail("expected within " + std::to_string(under.patience.count()) + " ms: " + what);
    }
    return came;
}

bool Trial::await(std::chrono::milliseconds limit, const std::function<bool()>& holds) const {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        under.runMainQueue(std::chrono::milliseconds{1});
    }
    return true;
}

} // namespace kivo::check
