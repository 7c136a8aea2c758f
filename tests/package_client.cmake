# Installs the built library into a scratch prefix, builds the example
# client against the installed package and runs it.
set(prefix "${BUILD_DIR}/package-test/prefix")
set(client "${BUILD_DIR}/package-test/client")
file(REMOVE_RECURSE "${BUILD_DIR}/package-test")
foreach(step
    "${CMAKE_COMMAND};--install;${BUILD_DIR};--prefix;${prefix}"
    "${CMAKE_COMMAND};-S;${SOURCE_DIR}/examples/client;-B;${client};-DCMAKE_PREFIX_PATH=${prefix}"
    "${CMAKE_COMMAND};--build;${client}"
    "${client}/client")
  execute_process(COMMAND ${step} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  message("${out}${err}")
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "step failed: ${step}")
  endif()
endforeach()
