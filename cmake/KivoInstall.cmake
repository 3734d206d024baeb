include(CMakePackageConfigHelpers)

# The minor version is part of every place but the programs', so that two releases can be installed into one prefix.
set(kivo_versioned kivo-${KIVO_SOVERSION})
set(kivo_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Kivo-${KIVO_SOVERSION})
set(kivo_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/${kivo_versioned})

install(TARGETS kivo EXPORT KivoTargets)
install(TARGETS kivo_codes kivo_camera DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/kivo DESTINATION ${kivo_include_dir})
install(DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/ZORFramework.bundle DESTINATION ${CMAKE_INSTALL_DATADIR}/${kivo_versioned})
install(EXPORT KivoTargets NAMESPACE Kivo:: DESTINATION ${kivo_cmake_dir})

if(KIVO_SIMULATOR)
  install(TARGETS kivo_simulator EXPORT KivoSimulatorTargets DESTINATION ${CMAKE_INSTALL_LIBDIR}/${kivo_versioned})
  install(DIRECTORY simulator/include/kivo DESTINATION ${kivo_include_dir})
  install(EXPORT KivoSimulatorTargets NAMESPACE Kivo:: DESTINATION ${kivo_cmake_dir})
endif()

if(kivo_has_device)
  install(TARGETS kivo_device EXPORT KivoDeviceTargets)
  set_target_properties(kivo_device PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(DIRECTORY device/include/kivo DESTINATION ${kivo_include_dir})
  install(EXPORT KivoDeviceTargets NAMESPACE Kivo:: DESTINATION ${kivo_cmake_dir})
endif()
if(TARGET kivo-device-app)
  set_target_properties(kivo-device-app PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS kivo-device-app)
  install(DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kivo-device.bundle DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# A package's folder finds its prefix, wherever the library folder is below it.
file(RELATIVE_PATH kivo_prefix_from_pc /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" kivo_prefix_from_pc ${kivo_prefix_from_pc})

if(kivo_has_objc)
  install(TARGETS kivo_objc EXPORT KivoObjCTargets)
  install(DIRECTORY sdk/ObjCCompatibility/objc/include/kivo DESTINATION ${kivo_include_dir})
  install(EXPORT KivoObjCTargets NAMESPACE Kivo:: DESTINATION ${kivo_cmake_dir})
  install(FILES cmake/KivoObjCToolchain.cmake DESTINATION ${kivo_cmake_dir})
  # The runtime's headers for pkg-config, which cannot look for them itself: a copy, because the folder that they come from
  # belongs to one version of GCC.
  install(DIRECTORY ${Kivo_OBJC_RUNTIME_INCLUDE}/objc DESTINATION ${kivo_include_dir}/kivo/objc/kivo-objc-runtime)
  configure_file(cmake/kivo-objc.pc.in ${PROJECT_BINARY_DIR}/kivo-objc.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/kivo-objc.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()

if(KIVO_TOOLS)
  set_target_properties(kivo-demo kivo-platform-check PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS kivo-demo kivo-pins kivo-platform-check)
  install(DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kivo-demo.bundle DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(KIVO_INSTALLED_BUNDLE ${CMAKE_INSTALL_DATADIR}/${kivo_versioned}/ZORFramework.bundle)
configure_package_config_file(cmake/KivoConfig.cmake.in ${PROJECT_BINARY_DIR}/KivoConfig.cmake
  INSTALL_DESTINATION ${kivo_cmake_dir} PATH_VARS KIVO_INSTALLED_BUNDLE)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KivoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KivoConfig.cmake ${PROJECT_BINARY_DIR}/KivoConfigVersion.cmake
  cmake/KivoResources.cmake DESTINATION ${kivo_cmake_dir})

configure_file(cmake/kivo.pc.in ${PROJECT_BINARY_DIR}/kivo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kivo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
