# Warnings are errors on our own code; sanitizers apply to everything that is built here.
add_library(tarnwell_settings INTERFACE)
target_compile_options(tarnwell_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
target_include_directories(tarnwell_settings INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR}/generated)
if(TARNWELL_SANITIZE)
  add_compile_options(-fsanitize=${TARNWELL_SANITIZE} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TARNWELL_SANITIZE})
endif()
