# Decides whether the Python package is built. Sets kivo_has_python and KIVO_PYTHON_INTERPRETER.
set(KIVO_PYTHON ${kivo_if_possible} CACHE STRING "Build the package for hosts in Python: ON, OFF, or AUTO when cffi is there")
set_property(CACHE KIVO_PYTHON PROPERTY STRINGS AUTO ON OFF)

set(kivo_has_python FALSE)
set(kivo_python_reason "KIVO_PYTHON is OFF")
if(KIVO_PYTHON)
  # The system's own Python comes first: cffi is its package, and another Python on the path does not see it.
  find_program(KIVO_PYTHON_INTERPRETER python3 PATHS /usr/bin NO_DEFAULT_PATH)
  find_program(KIVO_PYTHON_INTERPRETER python3)
  set(kivo_python_reason "there is no python3")
  if(KIVO_PYTHON_INTERPRETER)
    execute_process(COMMAND ${KIVO_PYTHON_INTERPRETER} -c "import cffi, sys; sys.exit(sys.version_info < (3, 11))"
      RESULT_VARIABLE kivo_python_lacks ERROR_QUIET)
    set(kivo_python_reason "${KIVO_PYTHON_INTERPRETER} is older than 3.11 or has no cffi")
    if(kivo_python_lacks EQUAL 0)
      set(kivo_has_python TRUE)
    endif()
  endif()
endif()

if(kivo_has_python)
  message(STATUS "Python package: built with ${KIVO_PYTHON_INTERPRETER}")
elseif(KIVO_PYTHON STREQUAL "AUTO" OR NOT KIVO_PYTHON)
  message(STATUS "Python package: left out (${kivo_python_reason})")
else()
  message(FATAL_ERROR "Python package: cannot be built (${kivo_python_reason})")
endif()
