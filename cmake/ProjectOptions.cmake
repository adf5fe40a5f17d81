# What every target of the project is compiled with, in one place.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
# What is generated for a library does not wait for the libraries below it.
set(CMAKE_AUTOGEN_ORIGIN_DEPENDS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(LUMEN_CCACHE ccache)
if(LUMEN_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${LUMEN_CCACHE}")
endif()

add_library(lumen_options INTERFACE)

target_compile_definitions(lumen_options INTERFACE
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_URL_CAST_FROM_STRING
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
  QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(MSVC)
  target_compile_options(lumen_options INTERFACE /W4 /utf-8)
  if(LUMEN_WARNINGS_AS_ERRORS)
    target_compile_options(lumen_options INTERFACE /WX)
  endif()
else()
  target_compile_options(lumen_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Wcast-align -Wnon-virtual-dtor
    -Wsuggest-override -Wimplicit-fallthrough -Wextra-semi)
  if(LUMEN_WARNINGS_AS_ERRORS)
    target_compile_options(lumen_options INTERFACE -Werror)
  endif()
endif()

if(LUMEN_SANITIZE)
  # Not the "vptr" check: it needs type information that the library, compiled apart from its host, does not share.
  target_compile_options(lumen_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(lumen_options INTERFACE -fsanitize=address,undefined)
endif()

if(LUMEN_BUILD_FUZZERS)
  # What libFuzzer steers by: which branches an input takes.
  target_compile_options(lumen_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# lumen_add_library(NAME SOURCES ... LINK ...): one static library of the package.
function(lumen_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES UNITY_BUILD "${LUMEN_UNITY}")
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${ARG_LINK} PRIVATE lumen_options)
endfunction()
