# What every target of the project is compiled with, and one function per kind of target.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(vellumcast_build_settings INTERFACE)
target_compile_features(vellumcast_build_settings INTERFACE cxx_std_17)
target_compile_options(vellumcast_build_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Werror)
target_compile_definitions(vellumcast_build_settings INTERFACE
  QT_DISABLE_DEPRECATED_BEFORE=0x050f00
  QT_NO_CAST_TO_ASCII
  QT_NO_URL_CAST_FROM_STRING
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
  QT_NO_FOREACH)
target_include_directories(vellumcast_build_settings INTERFACE ${PROJECT_SOURCE_DIR})

if(VELLUMCAST_SANITIZERS)
  target_compile_options(vellumcast_build_settings INTERFACE
    -fsanitize=${VELLUMCAST_SANITIZERS} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(vellumcast_build_settings INTERFACE -fsanitize=${VELLUMCAST_SANITIZERS})
endif()

# Linked into every executable: defaults of the sanitizers' run time, nothing in a plain build.
add_library(vellumcast_sanitizer_defaults INTERFACE)
if(VELLUMCAST_SANITIZERS)
  target_sources(vellumcast_sanitizer_defaults INTERFACE ${PROJECT_SOURCE_DIR}/cmake/sanitizerdefaults.cpp)
endif()

# vellumcast_library(store SOURCES … PUBLIC_DEPENDS … DEPENDS …): one static library for one folder.
function(vellumcast_library folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_DEPENDS;DEPENDS" ${ARGN})
  if(ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "vellumcast_library(${folder}): unknown arguments ${ARG_UNPARSED_ARGUMENTS}")
  endif()
  set(target vellumcast_${folder})
  add_library(${target} STATIC ${ARG_SOURCES})
  add_library(Vellumcast::${folder} ALIAS ${target})
  set_target_properties(${target} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON CXX_EXTENSIONS OFF)
  target_link_libraries(${target} PUBLIC vellumcast_build_settings ${ARG_PUBLIC_DEPENDS} PRIVATE ${ARG_DEPENDS})
endfunction()

# vellumcast_test(tst_metadata SOURCES … DEPENDS … [GUI] [TIMEOUT seconds] [LABELS …])
# Each test runs with folders of its own; a GUI test also gets a virtual screen of its own with a window manager.
function(vellumcast_test name)
  cmake_parse_arguments(ARG "GUI" "TIMEOUT" "SOURCES;DEPENDS;LABELS" ${ARGN})
  if(ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "vellumcast_test(${name}): unknown arguments ${ARG_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT ARG_SOURCES)
    set(ARG_SOURCES ${name}.cpp)
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  find_package(Qt5 5.15 REQUIRED COMPONENTS Test)
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON CXX_EXTENSIONS OFF)
  target_link_libraries(${name} PRIVATE vellumcast_build_settings vellumcast_sanitizer_defaults vellumcast_test_support ${ARG_DEPENDS} Qt5::Test)
  set(display)
  if(ARG_GUI)
    set(display DISPLAY)
  endif()
  vellumcast_add_isolated_test(NAME ${name} COMMAND $<TARGET_FILE:${name}> TIMEOUT ${ARG_TIMEOUT} ${display} LABELS ${ARG_LABELS})
endfunction()

# vellumcast_add_isolated_test(NAME … COMMAND … [TIMEOUT seconds] [DISPLAY] [LABELS …]):
# a ctest entry whose HOME, XDG folders and TMPDIR are new and empty; with DISPLAY it also has a virtual screen of its
# own with a window manager.
function(vellumcast_add_isolated_test)
  cmake_parse_arguments(ARG "DISPLAY" "NAME;TIMEOUT" "COMMAND;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  if(VELLUMCAST_SANITIZERS)
    math(EXPR ARG_TIMEOUT "${ARG_TIMEOUT} * 4")
  endif()
  set(wrapper ${PROJECT_SOURCE_DIR}/tests/support/isolated)
  if(ARG_DISPLAY)
    list(APPEND wrapper --display 1600x1200)
  endif()
  add_test(NAME ${ARG_NAME} COMMAND ${wrapper} - ${ARG_COMMAND})
  set_tests_properties(${ARG_NAME} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
  if(NOT ARG_DISPLAY)
    set_tests_properties(${ARG_NAME} PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
  endif()
  if(ARG_LABELS)
    set_tests_properties(${ARG_NAME} PROPERTIES LABELS "${ARG_LABELS}")
  endif()
endfunction()
