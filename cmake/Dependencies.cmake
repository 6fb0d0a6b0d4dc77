# The oldest release of each series that the tests have run with.
set(TARNWELL_QT5_LEAST 5.15)
set(TARNWELL_QT6_LEAST 6.4)
if(NOT TARNWELL_QT MATCHES "^[56]$")
  message(FATAL_ERROR "TARNWELL_QT is 5 or 6")
endif()
find_package(Qt${TARNWELL_QT} ${TARNWELL_QT${TARNWELL_QT}_LEAST} REQUIRED COMPONENTS Core)
find_package(Qt${TARNWELL_QT} REQUIRED COMPONENTS Network) # for the console host alone
find_library(UNISTRING_LIBRARY unistring REQUIRED)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
# The runtime's headers depend on macros: use exactly the flags of its package.
pkg_check_modules(GSOAP REQUIRED gsoap++)

# The static runtime: with the shared one, all plug-ins in a process would use the namespace table and the fault functions
# of the first.
find_library(GSOAP_STATIC_LIBRARY libgsoap++.a HINTS ${GSOAP_LIBDIR} REQUIRED)
add_library(gsoap_static INTERFACE)
target_compile_options(gsoap_static INTERFACE ${GSOAP_CFLAGS})
target_include_directories(gsoap_static INTERFACE ${GSOAP_INCLUDE_DIRS})
target_link_libraries(gsoap_static INTERFACE ${GSOAP_STATIC_LIBRARY})
