# The compiler options of every target.
add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
    # Calls into the framework go there directly: an EDR takes a hundred of them.
    -fno-plt
    # GCC 12 falsely reports overlaps in string concatenations, and reads and writes outside of
    # objects in them when the library's headers are precompiled, and with the thread sanitizer.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict;-Wno-stringop-overflow;-Wno-array-bounds>)

set(DATADUMP_SANITIZERS "" CACHE STRING "Sanitizers to build with, such as address,undefined")
if(DATADUMP_SANITIZERS)
    # The database library throws objects whose type information it doesn't export, which the
    # virtual-table check reports.
    add_compile_options(-fsanitize=${DATADUMP_SANITIZERS} -fno-sanitize=vptr
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${DATADUMP_SANITIZERS})
endif()

option(DATADUMP_FUZZERS "Make fuzzers of the fuzz targets (clang only)" OFF)
if(DATADUMP_FUZZERS)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# What most sources include, compiled once for each target that asks for it or once for several
# that share it: half of the time that a source takes is its headers. Each source still names what it
# uses: the preset `fuzz` builds without it.
set(COMMON_HEADERS
    <algorithm> <array> <chrono> <filesystem> <functional> <map> <memory> <mutex> <optional>
    <string> <string_view> <unordered_map> <vector> <fmt/format.h>)

# Optimising the templates of the library that parses options takes longer than all parsing ever
# will. A little it must be: the program's copies of inline functions, of strings above all, are also
# those of the libraries that it loads.
function(compile_options_parser_quickly source)
    set_source_files_properties(${source} PROPERTIES
        COMPILE_OPTIONS -Og SKIP_PRECOMPILE_HEADERS ON)
endfunction()

# A module that the host loads by library and entry name.
function(add_plugin name)
    add_library(${name} MODULE ${ARGN})
    set_target_properties(${name} PROPERTIES
        PREFIX ""
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        LIBRARY_OUTPUT_DIRECTORY ${PLUGIN_OUTPUT_DIRECTORY}
        INSTALL_RPATH "$ORIGIN/..")
    target_link_libraries(${name} PRIVATE framework project_options)
    install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/pipeline-host)
endfunction()
