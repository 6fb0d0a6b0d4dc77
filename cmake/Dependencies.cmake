find_package(Qt5 5.15 REQUIRED COMPONENTS Core)
find_package(Qt5 5.15 REQUIRED COMPONENTS Network) # for the console host alone
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
