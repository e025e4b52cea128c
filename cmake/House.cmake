# The options and helper functions that all targets of this house share.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

find_program(CCACHE ccache)
if(CCACHE)
  # Precompiled headers need the looser rules.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
      "CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime" "${CCACHE}")
endif()

add_library(house_options INTERFACE)
target_compile_features(house_options INTERFACE cxx_std_20)
target_include_directories(house_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_options(house_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
  -Wformat=2 -Werror -fno-strict-aliasing $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
target_compile_definitions(house_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_NO_URL_CAST_FROM_STRING QT_STRICT_ITERATORS
  _FILE_OFFSET_BITS=64 _GNU_SOURCE VELMORA_VERSION="${PROJECT_VERSION}")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlapping copies where texts are put together with "+".
  target_compile_options(house_options INTERFACE -Wno-restrict)
endif()
if(VELMORA_ASSERTIONS)
  target_compile_options(house_options INTERFACE -UNDEBUG)
  target_compile_definitions(house_options INTERFACE _GLIBCXX_ASSERTIONS)
endif()
if(VELMORA_FUZZ)
  target_compile_options(house_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(VELMORA_SANITIZE)
  target_compile_options(house_options INTERFACE -fsanitize=address,undefined
                         -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  target_link_options(house_options INTERFACE -fsanitize=address,undefined)
  target_compile_definitions(house_options INTERFACE VELMORA_SANITIZED)
endif()

# velmora_library(NAME SOURCES ... LINKS ... [QT] [WIDGETS]): one folder, one static library.
# QT turns on moc and a precompiled QtCore; WIDGETS turns on uic and the widgets' headers too.
function(velmora_library name)
  cmake_parse_arguments(arg "QT;WIDGETS" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC house_options ${arg_LINKS})
  _velmora_flavour(${name} "${arg_QT}" "${arg_WIDGETS}")
endfunction()

# velmora_executable(NAME SOURCES ... LINKS ... [QT] [WIDGETS]): a program in build/bin.
function(velmora_executable name)
  cmake_parse_arguments(arg "QT;WIDGETS" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE house_options ${arg_LINKS})
  _velmora_flavour(${name} "${arg_QT}" "${arg_WIDGETS}")
endfunction()

# velmora_test(NAME SOURCES ... LINKS ... [QT] [WIDGETS]): one GoogleTest binary per subsystem.
# Tests run offscreen, in the C.UTF-8 locale and without the user's home.
function(velmora_test name)
  cmake_parse_arguments(arg "QT;WIDGETS" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE house_options ${arg_LINKS} GTest::gmock GTest::gtest)
  target_compile_definitions(${name} PRIVATE
    VELMORA_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data"
    VELMORA_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  _velmora_flavour(${name} "${arg_QT}" "${arg_WIDGETS}")
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES TEST_PREFIX "${name}."
    PROPERTIES TIMEOUT 300 ENVIRONMENT
    "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;XDG_RUNTIME_DIR=/tmp;ASAN_OPTIONS=detect_leaks=1;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/lsan.supp")
endfunction()

# One precompiled header serves all targets of a kind: making one takes as long as four sources.
function(_velmora_precompile kind)
  if(NOT TARGET pch_${kind})
    add_library(pch_${kind} STATIC "${CMAKE_SOURCE_DIR}/cmake/pch.cpp")
    target_link_libraries(pch_${kind} PRIVATE house_options ${ARGN})
    target_precompile_headers(pch_${kind} PRIVATE "${CMAKE_SOURCE_DIR}/cmake/pch_${kind}.h")
  endif()
endfunction()

function(_velmora_flavour name qt widgets)
  if(widgets)
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON)
    target_link_libraries(${name} PRIVATE Qt6::Widgets)
    _velmora_precompile(widgets Qt6::Widgets)
    target_precompile_headers(${name} REUSE_FROM pch_widgets)
  elseif(qt)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    _velmora_precompile(qt Qt6::Core)
    target_precompile_headers(${name} REUSE_FROM pch_qt)
  endif()
endfunction()

# Fails the configuration when one of the named logic libraries can reach Qt Widgets.
function(velmora_check_no_widgets)
  foreach(name IN LISTS ARGN)
    set(seen)
    _velmora_reaches_widgets(${name})
  endforeach()
endfunction()

function(_velmora_reaches_widgets target)
  if(NOT TARGET ${target} OR target IN_LIST seen)
    return()
  endif()
  list(APPEND seen ${target})
  get_target_property(links ${target} INTERFACE_LINK_LIBRARIES)
  foreach(link IN LISTS links)
    if(link STREQUAL "Qt6::Widgets")
      message(FATAL_ERROR "${name} reaches Qt6::Widgets through ${target}")
    endif()
    _velmora_reaches_widgets("${link}")
  endforeach()
  set(seen ${seen} PARENT_SCOPE)
endfunction()
