# Finds libwebp and its demultiplexer, whose Debian packages bring no CMake package: targets
# WebP::webp and WebP::webpdemux, as the library's own CMake package calls them.
find_path(WEBP_INCLUDE_DIR webp/decode.h)
find_library(WEBP_LIBRARY webp)
find_library(WEBP_DEMUX_LIBRARY webpdemux)
mark_as_advanced(WEBP_INCLUDE_DIR WEBP_LIBRARY WEBP_DEMUX_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(WebP
  REQUIRED_VARS WEBP_LIBRARY WEBP_DEMUX_LIBRARY WEBP_INCLUDE_DIR)

if(WebP_FOUND AND NOT TARGET WebP::webp)
  add_library(WebP::webp UNKNOWN IMPORTED)
  set_target_properties(WebP::webp PROPERTIES
    IMPORTED_LOCATION ${WEBP_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${WEBP_INCLUDE_DIR})
  add_library(WebP::webpdemux UNKNOWN IMPORTED)
  set_target_properties(WebP::webpdemux PROPERTIES
    IMPORTED_LOCATION ${WEBP_DEMUX_LIBRARY}
    INTERFACE_LINK_LIBRARIES WebP::webp)
endif()
