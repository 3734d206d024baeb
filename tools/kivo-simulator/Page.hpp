#pragma once

#include <string_view>

namespace simulation {

/// A file of the page, which the build puts into the program.
struct PageFile {
    std::string_view path;
    std::string_view contentType;
    std::string_view content;
};

/// The file with this path; null for none.
const PageFile* pageFile(std::string_view path);

} // namespace simulation
