# Every library that the project links, found once.
include_guard(GLOBAL)

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Qt6 REQUIRED COMPONENTS Core)
find_package(nlohmann_json REQUIRED)
find_package(tl-expected REQUIRED)
find_package(fmt REQUIRED)
find_package(spdlog REQUIRED)
find_package(CLI11 REQUIRED)
find_package(SQLite3 REQUIRED)
pkg_check_modules(PulseAudio REQUIRED IMPORTED_TARGET libpulse)
pkg_check_modules(FFmpeg REQUIRED IMPORTED_TARGET libavformat libavcodec libswresample libavutil)
pkg_check_modules(PocketSphinx REQUIRED IMPORTED_TARGET pocketsphinx)
# Debian's file names an include folder that no package has, which CMake refuses.
get_target_property(folders PkgConfig::PocketSphinx INTERFACE_INCLUDE_DIRECTORIES)
list(REMOVE_ITEM folders /usr/include/sphinxbase)
set_target_properties(PkgConfig::PocketSphinx PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${folders}")

# whisper.cpp: the system's package when there is one, else what dev/setup has built under .deps.
list(APPEND CMAKE_PREFIX_PATH "${CMAKE_SOURCE_DIR}/.deps/whisper")
find_package(whisper CONFIG QUIET)
if(NOT whisper_FOUND)
  message(FATAL_ERROR "whisper.cpp is missing. Run ./dev/setup, which builds it under .deps, and configure again.")
endif()

if(VOCALITH_TESTS)
  find_package(GTest REQUIRED)
endif()
if(VOCALITH_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()
