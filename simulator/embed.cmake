# Writes SOURCE, which holds the bytes of FILES as arrays: cmake -D SOURCE=... -D "FILES=A;B" -P embed.cmake
set(arrays)
foreach(file ${FILES})
  get_filename_component(name ${file} NAME)
  string(MAKE_C_IDENTIFIER ${name} variable)
  file(READ ${file} bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(APPEND arrays "constexpr std::uint8_t ${variable}_bytes[]{${bytes}};\nconst View ${variable}{${variable}_bytes};\n")
endforeach()
file(WRITE ${SOURCE} "#include \"passport/Pictures.hpp\"

namespace kivo::simulator::chip {

${arrays}
} // namespace kivo::simulator::chip
")
