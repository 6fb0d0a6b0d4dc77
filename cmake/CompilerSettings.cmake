# Warnings are errors on our own code; sanitizers, or else hardening, apply to everything that is built here.
add_library(tarnwell_settings INTERFACE)
target_compile_options(tarnwell_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
target_include_directories(tarnwell_settings INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR}/generated)
if(TARNWELL_SANITIZE)
  add_compile_options(-fsanitize=${TARNWELL_SANITIZE} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TARNWELL_SANITIZE})
elseif(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
  # Some compilers come with another level of _FORTIFY_SOURCE, and warn of the second definition.
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  add_link_options(-Wl,-z,relro,-z,now)
endif()
# Programs are linked as position-independent, not only compiled so.
include(CheckPIESupported)
check_pie_supported()
