# Defines imagequant::imagequant, because libimagequant has no CMake files.
find_path(imagequant_INCLUDE_DIR libimagequant.h)
find_library(imagequant_LIBRARY imagequant)
mark_as_advanced(imagequant_INCLUDE_DIR imagequant_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(imagequant REQUIRED_VARS imagequant_LIBRARY imagequant_INCLUDE_DIR)

if(imagequant_FOUND AND NOT TARGET imagequant::imagequant)
    add_library(imagequant::imagequant UNKNOWN IMPORTED)
    set_target_properties(imagequant::imagequant PROPERTIES
        IMPORTED_LOCATION ${imagequant_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${imagequant_INCLUDE_DIR})
endif()
