# The Access provider runs a JDBC driver for Jet files inside a JVM that the
# library starts on first use (JNI invocation API, libjvm opened with dlopen,
# so nothing links against Java). This module finds the JDK's JNI headers
# and libjvm, the driver's jars (fetched by scripts/fetch-access-jars.sh) and
# compiles the provider's Java half into the build tree. What it found goes
# into a generated header, platform/ado/jet/jet_config.h, for both library
# targets.
#
# Without a JDK or without the jars the library still builds; an Access
# catalog then fails at its first statement with the reason written here.
#
#   ZOLSDK_ACCESS_JARS_DIR  folder of the jars; by default the fetch script's
#                           ($ZOLSDK_ACCESS_JARS, else ~/.cache/zolsdk/access-jars)

set(_zol_jet_default_jars "")
if(DEFINED ENV{ZOLSDK_ACCESS_JARS} AND NOT "$ENV{ZOLSDK_ACCESS_JARS}" STREQUAL "")
  set(_zol_jet_default_jars "$ENV{ZOLSDK_ACCESS_JARS}")
elseif(DEFINED ENV{XDG_CACHE_HOME} AND NOT "$ENV{XDG_CACHE_HOME}" STREQUAL "")
  set(_zol_jet_default_jars "$ENV{XDG_CACHE_HOME}/zolsdk/access-jars")
elseif(DEFINED ENV{HOME})
  set(_zol_jet_default_jars "$ENV{HOME}/.cache/zolsdk/access-jars")
endif()
set(ZOLSDK_ACCESS_JARS_DIR "${_zol_jet_default_jars}" CACHE PATH
    "Folder of the Access provider's jars (filled by scripts/fetch-access-jars.sh)")

set(_zol_jet_reason "")
set(_zol_jet_jvm "")
set(_zol_jet_classpath "")
set(_zol_jet_classes_dir "${CMAKE_BINARY_DIR}/access-provider/classes")
set(_zol_jet_java_sources
    "${CMAKE_CURRENT_SOURCE_DIR}/src/platform/ado/jet/java/zolsdk/jet/JetBridge.java")

# ---- the JDK ---------------------------------------------------------------------
find_package(Java 11 QUIET COMPONENTS Development)
# FindJNI looks in a few standard places only; the JDK that javac belongs to
# is the one to use when JAVA_HOME does not say otherwise.
if(Java_JAVAC_EXECUTABLE AND NOT DEFINED JAVA_HOME AND "$ENV{JAVA_HOME}" STREQUAL "")
  get_filename_component(_zol_jet_javac "${Java_JAVAC_EXECUTABLE}" REALPATH)
  get_filename_component(_zol_jet_jdk "${_zol_jet_javac}" DIRECTORY)
  get_filename_component(_zol_jet_jdk "${_zol_jet_jdk}" DIRECTORY)
  set(JAVA_HOME "${_zol_jet_jdk}")
endif()
find_package(JNI QUIET COMPONENTS JVM)
if(NOT Java_JAVAC_EXECUTABLE)
  set(_zol_jet_reason "no Java compiler was found when the library was configured (install a JDK)")
elseif(NOT JNI_FOUND OR NOT JAVA_JVM_LIBRARY OR NOT JNI_INCLUDE_DIRS)
  set(_zol_jet_reason "the JDK's JNI headers or libjvm were not found when the library was configured")
else()
  set(_zol_jet_jvm "${JAVA_JVM_LIBRARY}")
endif()

# ---- the driver's jars --------------------------------------------------------------
if(_zol_jet_reason STREQUAL "")
  file(GLOB _zol_jet_jars "${ZOLSDK_ACCESS_JARS_DIR}/*.jar")
  list(SORT _zol_jet_jars)
  set(_zol_jet_missing "")
  foreach(_need ucanaccess jackcess hsqldb)
    set(_have FALSE)
    foreach(_jar ${_zol_jet_jars})
      get_filename_component(_name "${_jar}" NAME)
      if(_name MATCHES "^${_need}-")
        set(_have TRUE)
      endif()
    endforeach()
    if(NOT _have)
      list(APPEND _zol_jet_missing ${_need})
    endif()
  endforeach()
  if(_zol_jet_missing)
    string(REPLACE ";" ", " _zol_jet_missing "${_zol_jet_missing}")
    set(_zol_jet_reason
        "the JDBC driver's jars (${_zol_jet_missing}) were not in ${ZOLSDK_ACCESS_JARS_DIR} when the library was configured (run scripts/fetch-access-jars.sh)")
  endif()
endif()

# ---- the provider's Java half ---------------------------------------------------------
if(_zol_jet_reason STREQUAL "")
  string(REPLACE ";" ":" _zol_jet_jar_path "${_zol_jet_jars}")
  set(_zol_jet_classpath "${_zol_jet_classes_dir}:${_zol_jet_jar_path}")
  set(_zol_jet_stamp "${CMAKE_BINARY_DIR}/access-provider/classes.stamp")
  add_custom_command(
    OUTPUT "${_zol_jet_stamp}"
    COMMAND ${CMAKE_COMMAND} -E remove_directory "${_zol_jet_classes_dir}"
    COMMAND ${CMAKE_COMMAND} -E make_directory "${_zol_jet_classes_dir}"
    COMMAND "${Java_JAVAC_EXECUTABLE}" --release 11 -nowarn -encoding UTF-8 -cp "${_zol_jet_jar_path}"
            -d "${_zol_jet_classes_dir}" ${_zol_jet_java_sources}
    COMMAND ${CMAKE_COMMAND} -E touch "${_zol_jet_stamp}"
    DEPENDS ${_zol_jet_java_sources} ${_zol_jet_jars}
    COMMENT "Compiling the Access provider's Java classes"
    VERBATIM)
  add_custom_target(zolsdk_jet_classes ALL DEPENDS "${_zol_jet_stamp}")
  foreach(_tgt zolsdk_objects)
    add_dependencies(${_tgt} zolsdk_jet_classes)
    target_include_directories(${_tgt} PRIVATE ${JNI_INCLUDE_DIRS})
  endforeach()
  message(STATUS "Access provider: ${_zol_jet_jvm}, jars in ${ZOLSDK_ACCESS_JARS_DIR}")
else()
  message(WARNING "Access provider left out: ${_zol_jet_reason}")
endif()

# ---- what the library reads --------------------------------------------------------------
if(_zol_jet_reason STREQUAL "")
  set(ZOLSDK_JET_AVAILABLE 1)
else()
  set(ZOLSDK_JET_AVAILABLE 0)
endif()
set(_zol_jet_config_dir "${CMAKE_BINARY_DIR}/generated")
file(CONFIGURE OUTPUT "${_zol_jet_config_dir}/platform/ado/jet/jet_config.h" CONTENT [=[
#pragma once
// Written by cmake/AccessProvider.cmake when the library was configured.
#define ZOLSDK_JET_AVAILABLE @ZOLSDK_JET_AVAILABLE@
#define ZOLSDK_JET_JVM_LIBRARY "@_zol_jet_jvm@"
#define ZOLSDK_JET_CLASSPATH "@_zol_jet_classpath@"
#define ZOLSDK_JET_UNAVAILABLE_REASON "@_zol_jet_reason@"
]=] @ONLY)
foreach(_tgt zolsdk_objects)
  target_include_directories(${_tgt} PRIVATE "${_zol_jet_config_dir}")
endforeach()
