include(CMakePackageConfigHelpers)

# The minor version is part of every place but the programs' and their manuals', so that two releases can be installed into one
# prefix. Each component is a package of its own where packages are made (KivoPackages.cmake).
set(kivo_versioned kivo-${KIVO_SOVERSION})
set(kivo_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Kivo-${KIVO_SOVERSION})
set(kivo_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/${kivo_versioned})
set(kivo_program_dir ${CMAKE_INSTALL_LIBEXECDIR}/${kivo_versioned})
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)

install(TARGETS kivo EXPORT KivoTargets LIBRARY COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS kivo_codes kivo_camera DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library)
install(DIRECTORY include/kivo DESTINATION ${kivo_include_dir})
install(DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/ZORFramework.bundle DESTINATION ${CMAKE_INSTALL_DATADIR}/${kivo_versioned}
  COMPONENT library)
install(EXPORT KivoTargets NAMESPACE Kivo:: DESTINATION ${kivo_cmake_dir})

if(KIVO_SIMULATOR)
  install(TARGETS kivo_simulator EXPORT KivoSimulatorTargets DESTINATION ${CMAKE_INSTALL_LIBDIR}/${kivo_versioned})
  install(DIRECTORY simulator/include/kivo DESTINATION ${kivo_include_dir})
  install(EXPORT KivoSimulatorTargets NAMESPACE Kivo:: DESTINATION ${kivo_cmake_dir})
endif()

if(kivo_has_device)
  install(TARGETS kivo_device EXPORT KivoDeviceTargets LIBRARY COMPONENT device)
  set_target_properties(kivo_device PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(DIRECTORY device/include/kivo DESTINATION ${kivo_include_dir} COMPONENT device)
  install(EXPORT KivoDeviceTargets NAMESPACE Kivo:: DESTINATION ${kivo_cmake_dir} COMPONENT device)
endif()

if(kivo_has_reader)
  install(TARGETS kivo_reader EXPORT KivoReaderTargets LIBRARY COMPONENT reader)
  set_target_properties(kivo_reader PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(DIRECTORY reader/include/kivo DESTINATION ${kivo_include_dir} COMPONENT reader)
  install(DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/KivoReader.bundle DESTINATION ${CMAKE_INSTALL_DATADIR}/${kivo_versioned}
    COMPONENT reader)
  install(EXPORT KivoReaderTargets NAMESPACE Kivo:: DESTINATION ${kivo_cmake_dir} COMPONENT reader)
endif()

# A package's folder finds its prefix, wherever the library folder is below it.
file(RELATIVE_PATH kivo_prefix_from_pc /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" kivo_prefix_from_pc ${kivo_prefix_from_pc})

if(kivo_has_objc)
  install(TARGETS kivo_objc EXPORT KivoObjCTargets LIBRARY COMPONENT objc)
  install(DIRECTORY sdk/ObjCCompatibility/objc/include/kivo DESTINATION ${kivo_include_dir} COMPONENT objc)
  install(EXPORT KivoObjCTargets NAMESPACE Kivo:: DESTINATION ${kivo_cmake_dir} COMPONENT objc)
  install(FILES cmake/KivoObjCToolchain.cmake DESTINATION ${kivo_cmake_dir} COMPONENT objc)
  # The runtime's headers for pkg-config, which cannot look for them itself: a copy, because the folder that they come from
  # belongs to one version of GCC.
  install(DIRECTORY ${Kivo_OBJC_RUNTIME_INCLUDE}/objc DESTINATION ${kivo_include_dir}/kivo/objc/kivo-objc-runtime COMPONENT objc)
  configure_file(cmake/kivo-objc.pc.in ${PROJECT_BINARY_DIR}/kivo-objc.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/kivo-objc.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT objc)
endif()

# kivo_install_program(TARGET PURPOSE): the program, its bundle if it has one, and its manual. A folder has no place among the
# programs, so a program with a bundle is a link there to a place of its own.
file(RELATIVE_PATH kivo_libraries_from_programs /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
file(RELATIVE_PATH kivo_libraries_from_own_place /prefix/${kivo_program_dir} /prefix/${CMAKE_INSTALL_LIBDIR})
file(RELATIVE_PATH kivo_own_place_from_programs /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${kivo_program_dir})
function(kivo_install_program target purpose)
  get_target_property(name ${target} OUTPUT_NAME)
  if(NOT name)
    set(name ${target})
  endif()
  if(TARGET ${target}-kivo-resources)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${kivo_libraries_from_own_place}")
    install(TARGETS ${target} DESTINATION ${kivo_program_dir} COMPONENT tools)
    install(DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}.bundle DESTINATION ${kivo_program_dir} COMPONENT tools)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/links)
    file(CREATE_LINK ${kivo_own_place_from_programs}/${name} ${PROJECT_BINARY_DIR}/links/${name} SYMBOLIC)
    install(FILES ${PROJECT_BINARY_DIR}/links/${name} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  else()
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${kivo_libraries_from_programs}")
    install(TARGETS ${target} COMPONENT tools)
  endif()
  kivo_add_manual(${target} ${name} ${purpose})
  # bash-completion looks for a file of the program's name.
  install(FILES tools/completion.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${name} COMPONENT tools)
endfunction()

include(cmake/KivoManuals.cmake)
set(kivo_programs)
foreach(program kivo-demo kivo-device-app kivo-pins kivo-platform-check kivo-simulator)
  if(TARGET ${program})
    list(APPEND kivo_programs ${program})
  endif()
endforeach()
set(kivo-demo_does "walk a verification session against a simulated identity service")
set(kivo-device-app_does "show the screens of the Kivo SDK in a window")
set(kivo-pins_does "print certificate pins and keep a host's list of them")
set(kivo-platform-check_does "check the promises of a platform of the Kivo SDK")
set(kivo-simulator_does "play the identity service for hosts of any language")
foreach(program IN LISTS kivo_programs)
  kivo_install_program(${program} ${${program}_does})
endforeach()

set(KIVO_INSTALLED_BUNDLE ${CMAKE_INSTALL_DATADIR}/${kivo_versioned}/ZORFramework.bundle)
configure_package_config_file(cmake/KivoConfig.cmake.in ${PROJECT_BINARY_DIR}/KivoConfig.cmake
  INSTALL_DESTINATION ${kivo_cmake_dir} PATH_VARS KIVO_INSTALLED_BUNDLE)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KivoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KivoConfig.cmake ${PROJECT_BINARY_DIR}/KivoConfigVersion.cmake
  cmake/KivoResources.cmake DESTINATION ${kivo_cmake_dir})

configure_file(cmake/kivo.pc.in ${PROJECT_BINARY_DIR}/kivo.pc @ONLY)
configure_file(cmake/kivo-c.pc.in ${PROJECT_BINARY_DIR}/kivo-c.pc @ONLY) # without the language level of C++
install(FILES ${PROJECT_BINARY_DIR}/kivo.pc ${PROJECT_BINARY_DIR}/kivo-c.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

find_program(KIVO_DPKG dpkg)
if(KIVO_DPKG)
  include(cmake/KivoPackages.cmake)
endif()
