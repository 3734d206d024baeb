#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

namespace kivo::test {

inline std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

/// A folder of its own for one test, gone with it.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::filesystem::path& place = std::filesystem::temp_directory_path()) {
        auto pattern = (place / "kivo-test-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }

    std::filesystem::path write(const std::filesystem::path& name, std::string_view content) const {
        const auto file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream{file, std::ios::binary}.write(content.data(), static_cast<std::streamsize>(content.size()));
        return file;
    }

private:
    std::filesystem::path path_;
};

} // namespace kivo::test
