# Finds the SOCI database access library. Defines the target SOCI::core; the backends are loaded by
# name at run time.
find_path(SOCI_INCLUDE_DIR soci/soci.h)
find_library(SOCI_CORE_LIBRARY soci_core)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(SOCI REQUIRED_VARS SOCI_CORE_LIBRARY SOCI_INCLUDE_DIR)

if(SOCI_FOUND AND NOT TARGET SOCI::core)
    add_library(SOCI::core UNKNOWN IMPORTED)
    set_target_properties(SOCI::core PROPERTIES
        IMPORTED_LOCATION "${SOCI_CORE_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${SOCI_INCLUDE_DIR}")
endif()
mark_as_advanced(SOCI_INCLUDE_DIR SOCI_CORE_LIBRARY)
