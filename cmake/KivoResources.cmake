# kivo_add_resources(target [FILES path...]): makes the main bundle of an executable, the folder `<executable>.bundle` beside
# it, from the SDK's storyboard, its sample colours, images and texts, and the host's own FILES: files, and folders such as
# en.lproj, copied under their own names. The host's Info.plist belongs there: without one the bundle has no identifier and no
# version. A storyboard, an asset catalogue or a Localizable.strings among the FILES takes the place of the SDK's.
#
# Screens other than the activation code screen and the scanning screen are laid out in the bundle, and the theme takes its
# colours from there. Texts of the host's own, in a folder such as en.lproj, go before the sample's.
#
# The global property KIVO_RESOURCES is the folder to copy from.
function(kivo_add_resources target)
  cmake_parse_arguments(PARSE_ARGV 1 own "" "" "FILES")
  if(own_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "kivo_add_resources(${target}): write FILES before \"${own_UNPARSED_ARGUMENTS}\".")
  endif()
  get_property(from GLOBAL PROPERTY KIVO_RESOURCES)
  set(bundle $<TARGET_FILE_DIR:${target}>/$<TARGET_FILE_NAME:${target}>.bundle)
  set(copies)
  set(files)
  foreach(path ${from}/ZORFramework.storyboard ${from}/Localizable.strings ${from}/Kivo.xcassets ${own_FILES})
    get_filename_component(path ${path} ABSOLUTE)
    get_filename_component(name ${path} NAME)
    if(IS_DIRECTORY ${path})
      file(GLOB_RECURSE contents CONFIGURE_DEPENDS ${path}/*)
      list(APPEND files ${contents})
      list(APPEND copies COMMAND ${CMAKE_COMMAND} -E copy_directory ${path} ${bundle}/${name})
    else()
      list(APPEND files ${path})
      list(APPEND copies COMMAND ${CMAKE_COMMAND} -E copy_if_different ${path} ${bundle}/${name})
    endif()
  endforeach()
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}-kivo-resources.stamp)
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${bundle}
    ${copies}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${files}
    VERBATIM)
  add_custom_target(${target}-kivo-resources DEPENDS ${stamp})
  add_dependencies(${target} ${target}-kivo-resources)
endfunction()
