# Warnings, language level and sanitizers for every target, and where the outputs lie: the build
# tree has the shape of an installation, so that a program finds its module in both the same way.
add_library(build_flags INTERFACE)
target_compile_features(build_flags INTERFACE cxx_std_20)
target_compile_options(build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor)

# Every build checks the library's preconditions; what users run is hardened further.
target_compile_definitions(build_flags INTERFACE _GLIBCXX_ASSERTIONS)
if(NOT SANITIZE)
  include(CheckCXXCompilerFlag)
  check_cxx_compiler_flag(-fcf-protection=full HAS_CF_PROTECTION) # only some processors have it
  target_compile_definitions(build_flags INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
  target_compile_options(build_flags INTERFACE
    $<$<CONFIG:Release>:-fstack-protector-strong -fstack-clash-protection>
    $<$<AND:$<CONFIG:Release>,$<BOOL:${HAS_CF_PROTECTION}>>:-fcf-protection=full>)
  target_link_options(build_flags INTERFACE $<$<CONFIG:Release>:LINKER:-z,relro,-z,now>)
endif()

if(SANITIZE)
  target_compile_options(build_flags INTERFACE
    -fsanitize=${SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(build_flags INTERFACE -fsanitize=${SANITIZE})
endif()

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported() # without it programs are compiled so, but not linked so
# A library shows what its public headers declare between "visibility push(default)" and "pop".
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
set(GIF89_MODULE_DIRECTORY ${CMAKE_INSTALL_LIBDIR}/gif89) # the module, its resources, the display

# Programs look for the toolbox relative to their own place, in the build tree too: CMake would pad
# a path of the build tree with an empty element there, which means the current folder.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON) # for image libraries and Qt outside the system's folders
