#pragma once

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace program {

/// A file or a folder with its content that must not outlive the program: it is removed with the object, and when a
/// signal ends the program.
class Temporary {
public:
    /// `make` makes the file or folder, and returns its path. A signal waits until `make` has returned.
    explicit Temporary(const std::function<std::filesystem::path()>& make);
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;
    ~Temporary();

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// A folder that nobody else can read, below the system's folder for temporary files.
class TemporaryFolder {
public:
    /// Throws `std::runtime_error` with a sentence when the folder cannot be made.
    explicit TemporaryFolder(const std::string& name);

    const std::filesystem::path& path() const { return folder_.path(); }

    /// Calls `work` and returns its result. Whatever takes the system's folder for temporary files meanwhile gets this
    /// folder. No other thread may use the environment meanwhile.
    template <class Work>
    auto holding(const Work& work) const {
        const Environment environment{path()};
        return work();
    }

private:
    class Environment {
    public:
        explicit Environment(const std::filesystem::path& folder);
        Environment(const Environment&) = delete;
        Environment& operator=(const Environment&) = delete;
        ~Environment();

    private:
        std::optional<std::string> before_;
    };

    Temporary folder_;
};

/// Removes every temporary file and folder of the program. None can be made while the returned lock is held.
[[nodiscard]] std::unique_lock<std::mutex> removeTemporaries();

} // namespace program
