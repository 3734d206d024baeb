# The Debian packages, one a component of the installation: ./dev package, or cpack in a build with the prefix /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kivo)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE kivo)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Kivo developers <developers@kivo.example>")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(kivo_release ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(kivo_library_package libkivo${KIVO_SOVERSION})
set(kivo_packages)

# kivo_package(COMPONENT NAME SECTION DESCRIPTION [DEPENDS ...] [RECOMMENDS ...] [SUGGESTS ...] [LIBRARY name] [CONTROL file...]):
# DESCRIPTION is one line and then paragraphs. LIBRARY is the shared library that the package has for others.
function(kivo_package component name section description)
  cmake_parse_arguments(PARSE_ARGV 4 of "" "LIBRARY" "DEPENDS;RECOMMENDS;SUGGESTS;CONTROL")
  string(TOUPPER ${component} upper)
  set(of_NAME ${name})
  set(of_SECTION ${section})
  foreach(field NAME SECTION DEPENDS RECOMMENDS SUGGESTS)
    list(JOIN of_${field} ", " text)
    set(CPACK_DEBIAN_${upper}_PACKAGE_${field} "${text}" PARENT_SCOPE)
  endforeach()
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}" PARENT_SCOPE)
  if(of_LIBRARY)
    # Whoever is linked with the library needs this release or a later one of the same minor version.
    set(shlibs ${PROJECT_BINARY_DIR}/debian/${component}/shlibs)
    file(CONFIGURE OUTPUT ${shlibs} CONTENT "${of_LIBRARY} ${KIVO_SOVERSION} ${name} (>= ${PROJECT_VERSION})\n")
    list(APPEND of_CONTROL ${shlibs} ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
  endif()
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${of_CONTROL}" PARENT_SCOPE)
  list(APPEND kivo_packages ${component})
  set(kivo_packages ${kivo_packages} PARENT_SCOPE)

  # What every Debian package has, and `cmake --install` leaves out.
  set(about ${CMAKE_INSTALL_DATADIR}/doc/${name})
  install(FILES cmake/debian/copyright DESTINATION ${about} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/debian/changelog.gz DESTINATION ${about} RENAME changelog.Debian.gz
    COMPONENT ${component} EXCLUDE_FROM_ALL)
  if(EXISTS ${PROJECT_SOURCE_DIR}/cmake/debian/${component}.lintian-overrides)
    configure_file(cmake/debian/${component}.lintian-overrides ${PROJECT_BINARY_DIR}/debian/${name} @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/debian/${name} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
      COMPONENT ${component} EXCLUDE_FROM_ALL)
  endif()
endfunction()

file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/debian)
execute_process(COMMAND ${PROJECT_SOURCE_DIR}/tools/debian-changelog ${kivo_release} "${CPACK_DEBIAN_PACKAGE_MAINTAINER}"
  ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_BINARY_DIR}/debian/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)

kivo_package(library ${kivo_library_package} libs
"library to prove a person's identity to an identity service
A host application links libkivo and lets a person prove who they are against
a remote identity service: activation code, passport chip and page, face
liveness and ID card.

This package holds the shared library and what the library loads while it
runs: the modules for cameras and codes, and the texts and layouts of the
screens."
  RECOMMENDS ca-certificates gstreamer1.0-plugins-base gstreamer1.0-plugins-good SUGGESTS xdg-utils LIBRARY libkivo)

# What the simulator links as a static library needs their libraries, too.
kivo_package(development libkivo-dev libdevel
"library to prove a person's identity - development files
Headers for hosts in C++ (C++23) and in C (C11), the packages for CMake and
pkg-config, and the simulated identity service, with which a host tests its
integration.

The API for Objective-C is in libkivo-objc, the package for Python in
python3-kivo."
  DEPENDS "${kivo_library_package} (= ${kivo_release})" libcpp-httplib-dev libqrencode-dev libssl-dev SUGGESTS kivo-tools)

if(kivo_has_device)
  kivo_package(device libkivo-device libs
"screens of the Kivo SDK in a Qt window
Shows the screens of a host with libkivo in a window with real input, takes
pictures of them, and finds what a layout cuts off.

This package holds the shared library, its headers and its part of the
package for CMake. Building with it needs libkivo-dev and qt6-base-dev."
    DEPENDS "${kivo_library_package} (= ${kivo_release})" RECOMMENDS fonts-inter
    SUGGESTS "libkivo-dev (= ${kivo_release})" qt6-base-dev LIBRARY libkivo-device)
endif()
if(kivo_has_reader)
  kivo_package(reader libkivo-reader libs
"document reader of the Kivo SDK
Lets hosts of libkivo read passports and identity cards: the page with a
camera or by hand, the chip with a contactless card reader (PC/SC), with
screens for the person, and checks what the issuing state has signed.

This package holds the shared library, the texts and pictures of its screens,
its headers and its part of the package for CMake. Building with it needs
libkivo-dev."
    DEPENDS "${kivo_library_package} (= ${kivo_release})" tesseract-ocr-eng RECOMMENDS pcscd libccid
    SUGGESTS "libkivo-dev (= ${kivo_release})" LIBRARY libkivo-reader)
endif()
if(kivo_has_objc)
  kivo_package(objc libkivo-objc libs
"Objective-C classes of the Kivo SDK
Lets hosts in Objective-C, compiled with clang and with GNUstep's Foundation,
prove a person's identity with libkivo: classes, completion blocks and
screens.

This package holds the shared library, its headers and its part of the
packages for CMake and pkg-config. Building with it needs libkivo-dev,
clang-19, gobjc++ and libgnustep-base-dev."
    DEPENDS "${kivo_library_package} (= ${kivo_release})"
    SUGGESTS "libkivo-dev (= ${kivo_release})" clang-19 gobjc++ libgnustep-base-dev LIBRARY libkivo-objc)
endif()
if(kivo_has_python)
  kivo_package(python python3-kivo python
"package for Python over the Kivo SDK
Lets hosts in Python prove a person's identity with libkivo: requests as
coroutines of asyncio, failures as exceptions, and the screens as data."
    DEPENDS "${kivo_library_package} (= ${kivo_release})" "python3 (>= 3.11)" python3-cffi
    CONTROL ${PROJECT_SOURCE_DIR}/cmake/debian/postinst ${PROJECT_SOURCE_DIR}/cmake/debian/prerm)
endif()
if(KIVO_TOOLS)
  set(kivo_tools_reader)
  if(kivo_has_reader)
    set(kivo_tools_reader "libkivo-reader (= ${kivo_release})")
  endif()
  kivo_package(tools kivo-tools utils
"programs of the Kivo SDK
kivo-demo walks a verification session against a simulated identity service,
kivo-simulator is that service for hosts of any language, kivo-device shows
the screens in a window, kivo-pins prints certificate pins and keeps a host's
list of them, and kivo-platform-check checks the services of a platform."
    DEPENDS "${kivo_library_package} (= ${kivo_release})" "libkivo-device (= ${kivo_release})" ${kivo_tools_reader})
endif()

# Written when the packages are made, because only then all is linked.
install(CODE "execute_process(COMMAND /usr/bin/python3 -B \"${PROJECT_SOURCE_DIR}/tools/sbom\" \"${PROJECT_BINARY_DIR}\"
  \"${PROJECT_BINARY_DIR}/kivo.spdx.json\" COMMAND_ERROR_IS_FATAL ANY)" COMPONENT library EXCLUDE_FROM_ALL)
install(FILES ${PROJECT_BINARY_DIR}/kivo.spdx.json DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${kivo_library_package}
  COMPONENT library EXCLUDE_FROM_ALL)

# All that the packages hold, for a build that needs no more.
add_custom_target(kivo_packaged)
foreach(part kivo kivo_simulator kivo_device kivo_reader kivo_objc kivo_python ${kivo_programs})
  if(TARGET ${part})
    add_dependencies(kivo_packaged ${part})
  endif()
endforeach()
foreach(program IN LISTS kivo_programs)
  string(REGEX REPLACE "-app$" "" name ${program})
  if(TARGET ${name}-manual)
    add_dependencies(kivo_packaged ${name}-manual)
  endif()
endforeach()

set(CPACK_COMPONENTS_ALL ${kivo_packages})
include(CPack)
