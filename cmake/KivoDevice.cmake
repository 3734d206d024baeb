# Decides whether the device, a window that shows the screens, is built. Sets kivo_has_device.
set(KIVO_DEVICE ${kivo_if_possible} CACHE STRING "Build the device, which shows the screens: ON, OFF, or AUTO when Qt 6 is there")
set_property(CACHE KIVO_DEVICE PROPERTY STRINGS AUTO ON OFF)

set(kivo_has_device FALSE)
set(kivo_device_reason "KIVO_DEVICE is OFF")
if(KIVO_DEVICE)
  find_package(Qt6 6.4 QUIET COMPONENTS Widgets)
  set(kivo_device_reason "Qt 6 Widgets is not installed (qt6-base-dev)")
  set(kivo_has_device ${Qt6_FOUND})
endif()

if(kivo_has_device)
  message(STATUS "Device: built with Qt ${Qt6_VERSION}")
elseif(KIVO_DEVICE STREQUAL "AUTO" OR NOT KIVO_DEVICE)
  message(STATUS "Device: left out (${kivo_device_reason})")
else()
  message(FATAL_ERROR "Device: cannot be built (${kivo_device_reason})")
endif()
