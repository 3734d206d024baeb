#include "platform/bundle/FolderBundles.hpp"

#include "platform/base/Ascii.hpp"
#include "platform/bundle/PropertyListReader.hpp"
#include "platform/posix/Files.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <expected>
#include <system_error>
#include <utility>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

// Names come from outside: a name that leads out of the folder finds nothing.
bool staysInFolder(std::string_view name) {
    return !name.empty() && name != "." && !name.contains('/') && !name.contains('\0') && !name.contains("..");
}

// An entry that cannot be examined exists: an unreadable resource must not pass for a missing resource.
bool isThere(const std::string& path) {
    struct stat entry{};
    return ::lstat(path.c_str(), &entry) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

void appendMissing(std::vector<std::string>& names, const std::vector<std::string>& more) {
    for (const auto& name : more) {
        if (std::ranges::find(names, name) == names.end()) {
            names.push_back(name);
        }
    }
}

} // namespace

std::vector<std::string> languageFolders(std::string_view locale) {
    const std::string name{locale.substr(0, locale.find_first_of(".@"))};
    const bool isName = std::ranges::all_of(
        name, [](char character) { return ascii::isLetterOrDigit(character) || character == '_' || character == '-'; });
    if (name.empty() || !isName || name == "C" || name == "POSIX") {
        return {};
    }
    std::vector<std::string> folders{name};
    for (const auto& [from, to] : {std::pair{'_', '-'}, std::pair{'-', '_'}}) {
        auto other = name;
        std::ranges::replace(other, from, to);
        appendMissing(folders, {other});
    }
    appendMissing(folders, {name.substr(0, name.find_first_of("_-"))});
    return folders;
}

FolderBundle::FolderBundle(fs::path folder, Presence presence, std::vector<std::string> languages,
                           std::shared_ptr<Diagnostics> diagnostics, std::shared_ptr<const FolderBundle> host)
    : folder_{std::move(folder)}
    , catalogue_{folder_}
    , presence_{presence}
    , personLanguages_{std::move(languages)}
    , diagnostics_{std::move(diagnostics)}
    , host_{std::move(host)} {}

std::optional<std::string> FolderBundle::bundleIdentifier() const {
    return infoText("CFBundleIdentifier");
}

std::optional<std::string> FolderBundle::infoText(std::string_view key) const {
    const auto& info = contents().info;
    const auto found = info.find(std::string{key});
    const auto* text = found == info.end() ? nullptr : found->second.text();
    return text ? std::optional{*text} : std::nullopt;
}

std::optional<fs::path> FolderBundle::pathForResource(std::string_view name, std::string_view type) const {
    std::string file;
    file.reserve(name.size() + type.size() + 1);
    file.append(name);
    if (!type.empty()) {
        file.append(".").append(type);
    }
    if (name.empty() || !staysInFolder(file)) {
        return std::nullopt;
    }
    // One text for all places, because each request to a server asks for a resource that most hosts do not have.
    constexpr std::size_t roomForLanguage = 32;
    std::string path;
    path.reserve(folder_.native().size() + roomForLanguage + file.size());
    path.append(folder_.native()).append("/");
    const auto folderLength = path.size();
    if (isThere(path.append(file))) {
        return path;
    }
    for (const auto& language : contents().languages) {
        path.resize(folderLength);
        if (isThere(path.append(language).append(".lproj/").append(file))) {
            return path;
        }
    }
    return std::nullopt;
}

std::optional<PropertyValue> FolderBundle::propertyList(std::string_view name) const {
    contents();
    const auto path = pathForResource(name, "plist");
    if (!path) {
        return std::nullopt;
    }
    const auto bytes = readFile(*path);
    const auto tell = [&](const std::string& problem) {
        reportOnce(quoted(*path) + " " + problem + "; put a property list with a dictionary or a list there.");
    };
    if (!bytes) {
        tell(bytes.error());
        return std::nullopt;
    }
    if (!*bytes) {
        return std::nullopt;
    }
    auto root = readPropertyList(**bytes);
    if (!root) {
        tell(root.error());
        return std::nullopt;
    }
    if (!root->dictionary() && !root->list()) {
        tell("holds a single value");
        return std::nullopt;
    }
    return std::move(*root);
}

std::string FolderBundle::localizedString(std::string_view key, std::string_view table) const {
    if (!staysInFolder(table)) {
        return std::string{key};
    }
    contents();
    std::vector<std::string> problems;
    std::string text{key};
    {
        const std::scoped_lock lock{mutex_};
        auto known = tables_.find(table);
        if (known == tables_.end()) {
            known = tables_.emplace(table, readTable(table, problems)).first;
        }
        if (const auto found = known->second.find(key); found != known->second.end()) {
            text = found->second;
        }
    }
    std::ranges::for_each(problems, [this](const auto& problem) { reportOnce(problem); });
    return text;
}

std::string FolderBundle::language() const {
    return contents().language;
}

std::optional<Color> FolderBundle::color(std::string_view name) const {
    const auto color = catalogue_.color(name);
    if (!color) {
        reportOnce(color.error() + "; correct the colour.");
    }
    return color.value_or(std::nullopt);
}

std::shared_ptr<const Image> FolderBundle::image(std::string_view name) const {
    const auto image = catalogue_.image(name);
    if (!image) {
        reportOnce(image.error() + "; correct the image.");
    }
    return image.value_or(nullptr);
}

const FolderBundle::Contents& FolderBundle::contents() const {
    std::string problem;
    std::call_once(contentsRead_, [&] {
        contents_ = readContents();
        problem = contents_.problem;
    });
    if (!problem.empty()) {
        reportOnce(problem);
    }
    return contents_;
}

FolderBundle::Contents FolderBundle::readContents() const {
    const auto hostLanguage = host_ ? host_->language() : std::string{};
    Contents contents{{}, hostLanguage.empty() ? personLanguages_ : languageFolders(hostLanguage), {}, {}};
    const auto addLanguage = [&](std::string_view name) { appendMissing(contents.languages, languageFolders(name)); };
    const auto path = folder_ / "Info.plist";
    std::error_code error;
    const auto type = fs::status(folder_, error).type();
    if (type == fs::file_type::not_found) {
        if (presence_ == Presence::expected) {
            contents.problem = "The folder " + quoted(folder_) + " does not exist; install the bundle there.";
        }
    } else if (type != fs::file_type::directory) {
        contents.problem = quoted(folder_) + " is not a folder that can be read" +
                           (error ? " (" + error.message() + ")" : "") +
                           "; a bundle is a folder with an Info.plist in it.";
    } else if (const auto bytes = readFile(path); !bytes) {
        contents.problem = quoted(path) + " " + bytes.error() + "; the bundle's settings need it.";
    } else if (*bytes) {
        auto root = readPropertyList(**bytes);
        if (!root) {
            contents.problem = quoted(path) + " " + root.error() + "; correct the file.";
        } else if (!root->dictionary()) {
            contents.problem = quoted(path) + " does not hold a dictionary; make its root a <dict>.";
        } else {
            contents.info = std::get<PropertyValue::Dictionary>(std::move(root->value));
        }
    }
    if (const auto region = contents.info.find("CFBundleDevelopmentRegion"); region != contents.info.end()) {
        if (const auto* text = region->second.text()) {
            addLanguage(*text);
        }
    }
    addLanguage("en");
    addLanguage("Base");
    const auto found = std::ranges::find_if(
        contents.languages, [&](const auto& name) { return fs::is_directory(folder_ / (name + ".lproj"), error); });
    contents.language = found == contents.languages.end() ? std::string{} : *found;
    return contents;
}

StringTable FolderBundle::readTable(std::string_view name, std::vector<std::string>& problems) const {
    StringTable merged;
    const auto file = std::string{name} + ".strings";
    const auto add = [&](const fs::path& path) {
        const auto bytes = readFile(path);
        if (bytes && !*bytes) {
            return;
        }
        auto table = bytes ? readStringsFile(**bytes) : std::unexpected{bytes.error()};
        if (table) {
            merged.merge(*table); // entries of a better language stay
        } else {
            problems.push_back(quoted(path) + " " + table.error() + "; its texts are left out until it is corrected.");
        }
    };
    for (const auto& language : contents_.languages) {
        add(folder_ / (language + ".lproj") / file);
    }
    add(folder_ / file);
    return merged;
}

void FolderBundle::reportOnce(const std::string& problem) const {
    {
        const std::scoped_lock lock{mutex_};
        if (!reported_.insert(problem).second) {
            return;
        }
    }
    if (diagnostics_) {
        diagnostics_->report("bundle", problem);
    }
}

} // namespace kivo::platform
