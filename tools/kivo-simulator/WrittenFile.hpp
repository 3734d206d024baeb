#pragma once

#include "program/Temporary.hpp"

#include <filesystem>
#include <string_view>

namespace simulation {

/// A file that appears under its name when it is whole. Until then its bytes lie beside it in a temporary file.
class WrittenFile {
public:
    enum class Readers { owner, all };

    /// Throws `std::runtime_error` with a sentence when no file can be made there: the program tells that at its start.
    WrittenFile(const std::filesystem::path& file, Readers readers);
    WrittenFile(const WrittenFile&) = delete;
    WrittenFile& operator=(const WrittenFile&) = delete;
    ~WrittenFile();

    /// Gives the file its content and its name. Throws `std::runtime_error` with a sentence.
    void finish(std::string_view content);

private:
    [[noreturn]] void fail() const;

    const std::filesystem::path file_;
    int descriptor_ = -1;
    program::Temporary beside_;
};

} // namespace simulation
