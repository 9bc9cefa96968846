# How every target of the project is made: one folder, one target.
include_guard(GLOBAL)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(VOCALITH_CCACHE ccache)
if(VOCALITH_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Build folders differ only in their path, so let them share the cache.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND};-E;env;CCACHE_NOHASHDIR=1;${VOCALITH_CCACHE}")
endif()

add_library(vocalith_options INTERFACE)
target_include_directories(vocalith_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_definitions(vocalith_options INTERFACE QT_NO_KEYWORDS)
target_compile_options(vocalith_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Werror
  # gcc 12 sees overlaps in std::string that are not there.
  -Wno-restrict)
# Without it a long chain of coroutines that are ready at once grows the stack in an unoptimised build.
target_compile_options(vocalith_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-foptimize-sibling-calls>)
if(VOCALITH_SANITIZE)
  target_compile_options(vocalith_options INTERFACE -fsanitize=${VOCALITH_SANITIZE} -fno-omit-frame-pointer
                                                   -fno-sanitize-recover=all
  # gcc's manual: with sanitizers this warning has false positives.
  -Wno-maybe-uninitialized)
  target_link_options(vocalith_options INTERFACE -fsanitize=${VOCALITH_SANITIZE})
endif()

# vocalith_library(TARGET [USES target...] [LINKS library...]): the sources of the current folder (and of the folders in
# it that are no target of their own) as a static library, or a header-only one when there is no source.
function(vocalith_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "USES;LINKS")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
  if(sources)
    add_library(${target} STATIC ${sources})
    target_link_libraries(${target} PUBLIC vocalith_options ${arg_USES} PRIVATE ${arg_LINKS})
  else()
    add_library(${target} INTERFACE)
    target_link_libraries(${target} INTERFACE vocalith_options ${arg_USES} ${arg_LINKS})
  endif()
endfunction()

# vocalith_test(NAME [USES target...] [LABELS label...]): the sources of the current folder as one GoogleTest program.
function(vocalith_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "USES;LABELS")
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
  if(NOT sources)
    message(WARNING "${CMAKE_CURRENT_SOURCE_DIR} holds no tests")
    return()
  endif()
  set(target "test_${name}")
  add_executable(${target} ${sources})
  target_link_libraries(${target} PRIVATE vocalith_test_support ${arg_USES})
  add_test(NAME ${name} COMMAND ${target})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 LABELS "${arg_LABELS}")
endfunction()
