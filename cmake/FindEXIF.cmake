# Finds libexif, which brings no CMake package of its own: target EXIF::EXIF.
find_path(EXIF_INCLUDE_DIR libexif/exif-data.h)
find_library(EXIF_LIBRARY exif)
mark_as_advanced(EXIF_INCLUDE_DIR EXIF_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(EXIF REQUIRED_VARS EXIF_LIBRARY EXIF_INCLUDE_DIR)

if(EXIF_FOUND AND NOT TARGET EXIF::EXIF)
  add_library(EXIF::EXIF UNKNOWN IMPORTED)
  set_target_properties(EXIF::EXIF PROPERTIES
    IMPORTED_LOCATION ${EXIF_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${EXIF_INCLUDE_DIR})
endif()
