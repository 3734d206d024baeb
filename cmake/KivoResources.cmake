# kivo_add_resources(target): puts the SDK's storyboard and its sample colours, images and texts into the main bundle of an
# executable, the folder `<executable>.bundle` beside it. Screens other than the activation code screen and the
# scanning screen are laid out there, and the theme takes its colours from there. A host with a storyboard of its own does without. Texts of the
# host's own, in a folder such as en.lproj, go before the sample's.
#
# The global property KIVO_RESOURCES is the folder to copy from.
function(kivo_add_resources target)
  get_property(from GLOBAL PROPERTY KIVO_RESOURCES)
  file(GLOB_RECURSE files CONFIGURE_DEPENDS ${from}/ZORFramework.storyboard ${from}/Localizable.strings ${from}/Kivo.xcassets/*)
  set(bundle $<TARGET_FILE_DIR:${target}>/$<TARGET_FILE_NAME:${target}>.bundle)
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}-kivo-resources.stamp)
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${bundle}
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${from}/Kivo.xcassets ${bundle}/Kivo.xcassets
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${from}/ZORFramework.storyboard ${from}/Localizable.strings ${bundle}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${files}
    VERBATIM)
  add_custom_target(${target}-kivo-resources DEPENDS ${stamp})
  add_dependencies(${target} ${target}-kivo-resources)
endfunction()
