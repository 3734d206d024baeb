# Writes SOURCE, which holds the bytes of FILES for pageFile(): cmake -D SOURCE=... -D "FILES=A;B" -P embed.cmake
set(arrays)
set(rows)
foreach(file ${FILES})
  get_filename_component(name ${file} NAME)
  string(MAKE_C_IDENTIFIER ${name} variable)
  file(READ ${file} bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  if(name MATCHES "\\.html$")
    set(type "text/html; charset=utf-8")
    set(path /)
  elseif(name MATCHES "\\.css$")
    set(type "text/css; charset=utf-8")
  elseif(name MATCHES "\\.js$")
    set(type "text/javascript; charset=utf-8")
  else()
    set(type application/json)
  endif()
  if(NOT name MATCHES "\\.html$")
    set(path /${name})
  endif()
  string(APPEND arrays "constexpr unsigned char ${variable}[]{${bytes}};\n")
  string(APPEND rows "    {\"${path}\", \"${type}\", text(${variable})},\n")
endforeach()
file(WRITE ${SOURCE} "#include \"Page.hpp\"

#include <algorithm>
#include <array>
#include <cstddef>

namespace simulation {
namespace {

${arrays}
template <std::size_t size>
std::string_view text(const unsigned char (&bytes)[size]) {
    return {reinterpret_cast<const char*>(bytes), size};
}

} // namespace

const PageFile* pageFile(std::string_view path) {
    static const std::array files{std::to_array<PageFile>({
${rows}    })};
    const auto* const found = std::ranges::find(files, path, &PageFile::path);
    return found == files.end() ? nullptr : found;
}

} // namespace simulation
")
