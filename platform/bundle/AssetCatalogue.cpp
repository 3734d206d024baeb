#include "platform/bundle/AssetCatalogue.hpp"

#include "platform/base/Number.hpp"
#include "platform/json/Json.hpp"
#include "platform/posix/Files.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <optional>
#include <span>
#include <stdexcept>
#include <system_error>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

constexpr auto contentsFile = "Contents.json";

/// The fault of a set; caught in this source file.
class Malformed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

json::Value readContents(const fs::path& set) {
    const auto bytes = readFile(set / contentsFile);
    if (!bytes || !*bytes) {
        throw Malformed{bytes ? "does not exist" : bytes.error()};
    }
    auto contents = json::read(**bytes);
    if (!contents && contents.error().isBeyondLimits()) {
        throw Malformed{"is larger or deeper than a file of a set may be"};
    }
    if (!contents || contents->kind() != json::Kind::object) {
        throw Malformed{"is no JSON with an object in it"};
    }
    return std::move(*contents);
}

std::span<const json::Value> entries(const json::Value& contents, const char* name) {
    const auto* const found = contents.find(name);
    if (found == nullptr || found->kind() != json::Kind::array) {
        throw Malformed{"has no list \"" + std::string{name} + "\""};
    }
    return found->elements();
}

std::string text(const json::Value& object, const char* name) {
    const auto* const found = object.textOf(name);
    return found != nullptr ? *found : std::string{};
}

/// Whether an entry of a set is for every device and for this appearance. The entries of the light appearance name
/// none; those of other appearances, such as a high contrast, are left out.
bool isFor(UserInterfaceStyle style, const json::Value& entry) {
    if (text(entry, "idiom") != "universal") {
        return false;
    }
    const auto* const appearances = entry.find("appearances");
    if (appearances == nullptr || style == UserInterfaceStyle::light) {
        return appearances == nullptr && style == UserInterfaceStyle::light;
    }
    const auto named = appearances->elements();
    return named.size() == 1 && text(named.front(), "appearance") == "luminosity" &&
           text(named.front(), "value") == "dark";
}

std::optional<double> hexNumber(std::string_view digits) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return error == std::errc{} && end == digits.data() + digits.size() ? std::optional{number} : std::nullopt;
}

/// "0.5" is a fraction; "128" and "0x80" count in 255ths.
double component(const json::Value& components, const char* name) {
    const auto written = text(components, name);
    const bool isHex = written.starts_with("0x") || written.starts_with("0X");
    const bool isFraction = written.contains('.');
    const auto number = isHex ? hexNumber(written.substr(2)) : decimalNumber(written);
    const double level =
        isFraction || std::string_view{name} == "alpha" ? number.value_or(-1) : number.value_or(-1) / 255;
    if (level < 0 || level > 1) {
        throw Malformed{"has no usable \"" + std::string{name} + R"(" (write "0.5", "128" or "0x80"))"};
    }
    return level;
}

std::optional<Color> colorIn(UserInterfaceStyle style, const json::Value& contents) {
    for (const auto& entry : entries(contents, "colors")) {
        const auto* const color = isFor(style, entry) ? entry.find("color") : nullptr;
        if (color == nullptr) {
            continue;
        }
        const json::Value none;
        const auto* const found = color->find("components");
        const auto& components = found != nullptr ? *found : none;
        return Color{.red = component(components, "red"),
                     .green = component(components, "green"),
                     .blue = component(components, "blue"),
                     .alpha = component(components, "alpha")};
    }
    return std::nullopt;
}

Color readColor(const fs::path& set) {
    const auto contents = readContents(set);
    const auto light = colorIn(UserInterfaceStyle::light, contents);
    if (!light) {
        throw Malformed{"has no universal colour"};
    }
    const auto dark = colorIn(UserInterfaceStyle::dark, contents);
    return dark ? Color::adaptive(*light, *dark) : *light;
}

/// The size of a PNG file in points, at `scale` pixels a point. Zero for other files, absent for a PNG file with an
/// impossible size.
std::optional<Size> pictureSize(const fs::path& path, double scale) {
    std::array<unsigned char, 24> header{};
    std::ifstream file{path, std::ios::binary};
    file.read(reinterpret_cast<char*>(header.data()), header.size());
    constexpr std::array<unsigned char, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (!file || !std::ranges::equal(signature, std::span{header}.first<8>())) {
        return Size{};
    }
    const auto pixels = [&](std::size_t at) {
        std::uint32_t number = 0;
        for (const auto byte : std::span{header}.subspan(at, 4)) {
            number = number << 8U | byte;
        }
        return number;
    };
    const auto width = pixels(16);
    const auto height = pixels(20);
    constexpr std::uint32_t longestSide = (std::uint32_t{1} << 31U) - 1; // in the PNG format itself
    if (width == 0 || height == 0 || width > longestSide || height > longestSide) {
        return std::nullopt;
    }
    return Size{width / scale, height / scale};
}

double scaleOf(const json::Value& entry) {
    const auto scale = text(entry, "scale");
    return scale == "3x" ? 3 : scale == "2x" ? 2 : 1;
}

/// A file of an image set, and its size in points.
struct Picture {
    fs::path file;
    Size size;
    bool isDirectional;
};

/// The finest picture for that appearance; absent when the set has none.
std::optional<Picture> pictureIn(UserInterfaceStyle style, const json::Value& contents, const fs::path& set) {
    const json::Value* best = nullptr;
    for (const auto& entry : entries(contents, "images")) {
        if (isFor(style, entry) && !text(entry, "filename").empty() && (!best || scaleOf(entry) > scaleOf(*best))) {
            best = &entry;
        }
    }
    if (!best) {
        return std::nullopt;
    }
    const fs::path file{text(*best, "filename")};
    std::error_code error;
    if (file.has_parent_path() || !fs::is_regular_file(set / file, error)) {
        throw Malformed{"names the file \"" + file.string() + "\", which is not in its folder"};
    }
    const auto size = pictureSize(set / file, scaleOf(*best));
    if (!size) {
        throw Malformed{"names the file \"" + file.string() + "\", whose picture has an impossible width or height"};
    }
    return Picture{set / file, *size, text(*best, "language-direction") == "left-to-right"};
}

std::shared_ptr<const Image> readImage(const fs::path& set, std::string_view name) {
    const auto contents = readContents(set);
    const auto light = pictureIn(UserInterfaceStyle::light, contents, set);
    if (!light) {
        throw Malformed{"has no universal image with a file"};
    }
    const auto dark = pictureIn(UserInterfaceStyle::dark, contents, set);
    const auto* const properties = contents.find("properties");
    const bool isTemplate = properties != nullptr && text(*properties, "template-rendering-intent") == "template";
    return std::make_shared<const Image>(std::string{name}, light->file, light->size, isTemplate, light->isDirectional,
                                         dark ? dark->file : fs::path{});
}

/// The result of `read`, or the fault of the set at `set`.
template <class Read>
auto guarded(const fs::path& set, const Read& read) -> std::expected<decltype(read()), std::string> {
    try {
        return read();
    } catch (const Malformed& problem) {
        return std::unexpected{"\"" + (set / contentsFile).string() + "\" " + problem.what()};
    }
}

} // namespace

std::expected<std::optional<Color>, std::string> AssetCatalogue::color(std::string_view name) const {
    {
        const std::scoped_lock lock{mutex_};
        if (const auto known = colors_.find(name); known != colors_.end()) {
            return known->second;
        }
    }
    auto read = readColorOf(name);
    if (read) {
        const std::scoped_lock lock{mutex_};
        colors_.emplace(name, *read);
    }
    return read;
}

AssetCatalogue::FoundColor AssetCatalogue::readColorOf(std::string_view name) const {
    const auto set = find(name, ".colorset");
    return set ? guarded(*set, [&] { return std::optional{readColor(*set)}; }) : std::optional<Color>{};
}

std::expected<std::shared_ptr<const Image>, std::string> AssetCatalogue::image(std::string_view name) const {
    const auto set = find(name, ".imageset");
    return set ? guarded(*set, [&] { return readImage(*set, name); }) : nullptr;
}

std::optional<fs::path> AssetCatalogue::find(std::string_view name, std::string_view kind) const {
    std::call_once(listed_, [this] { sets_ = listSets(); });
    const auto found = sets_.find(std::string{name}.append(kind));
    return found == sets_.end() ? std::nullopt : std::optional{found->second};
}

std::map<std::string, fs::path, std::less<>> AssetCatalogue::listSets() const {
    std::map<std::string, fs::path, std::less<>> sets;
    std::error_code error;
    for (fs::directory_iterator catalogue{bundle_, error}, end; !error && catalogue != end;
         catalogue.increment(error)) {
        if (catalogue->path().extension() != ".xcassets") {
            continue;
        }
        std::error_code inside;
        for (fs::recursive_directory_iterator entry{catalogue->path(), inside}, last; !inside && entry != last;
             entry.increment(inside)) {
            const auto& path = entry->path();
            if (path.extension() == ".colorset" || path.extension() == ".imageset") {
                sets.emplace(path.filename(), path);
            }
        }
    }
    return sets;
}

} // namespace kivo::platform
