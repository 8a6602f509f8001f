# Warnings, language level and sanitizers for every target, and where the outputs lie: the build
# tree has the shape of an installation, so that a program finds its module in both the same way.
add_library(build_flags INTERFACE)
target_compile_features(build_flags INTERFACE cxx_std_20)
target_compile_options(build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor)

# What developers run checks the library's preconditions; what users run is hardened.
target_compile_definitions(build_flags INTERFACE $<$<CONFIG:Debug,RelWithDebInfo>:_GLIBCXX_ASSERTIONS>)
if(NOT SANITIZE)
  target_compile_definitions(build_flags INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
  target_compile_options(build_flags INTERFACE
    $<$<CONFIG:Release>:-fstack-protector-strong -fstack-clash-protection>)
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
set(CMAKE_CXX_VISIBILITY_PRESET default)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
set(GIF89_MODULE_DIRECTORY ${CMAKE_INSTALL_LIBDIR}/gif89) # the module, its resources, the display
