# The compiler options of every target.
add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
    # Calls into the framework go there directly: an EDR takes a hundred of them.
    -fno-plt
    # GCC 12 falsely reports overlaps in string concatenations.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

set(DATADUMP_SANITIZERS "" CACHE STRING "Sanitizers to build with, such as address,undefined")
if(DATADUMP_SANITIZERS)
    # The database library throws objects whose type information it doesn't export, which the
    # virtual-table check reports.
    add_compile_options(-fsanitize=${DATADUMP_SANITIZERS} -fno-sanitize=vptr
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${DATADUMP_SANITIZERS})
    # With the thread sanitizer, GCC 12 falsely reports reads outside of objects.
    target_compile_options(project_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds>)
endif()

option(DATADUMP_FUZZERS "Make fuzzers of the fuzz targets (clang only)" OFF)
if(DATADUMP_FUZZERS)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

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
