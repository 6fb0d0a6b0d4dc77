# Warnings are errors in our presets, not for somebody who packages a release with another compiler. Sanitizers or,
# without them, hardening apply to everything that is built here.
add_library(tarnwell_settings INTERFACE)
target_compile_options(tarnwell_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(tarnwell_settings INTERFACE -Wno-restrict) # false in C++20: GCC bug 105651
endif()
target_include_directories(tarnwell_settings INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR}/generated)
if(TARNWELL_SANITIZE)
  add_compile_options(-fsanitize=${TARNWELL_SANITIZE} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TARNWELL_SANITIZE})
elseif(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
  add_compile_options(-fstack-protector-strong)
  if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE=")
    # -U first, because some compilers define another level and warn of a second definition.
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  endif()
  add_link_options(-Wl,-z,relro,-z,now)
endif()
# Programs are also linked as position-independent. With -fPIE, -flto would make them copy Qt's constants, such as the
# bytes of an empty array, which Qt compares by address.
include(CheckPIESupported)
check_pie_supported()
set(CMAKE_CXX_LINK_OPTIONS_PIE -fPIC -pie)
