# Debian packages: the library, the files for building programs with it, the companion program; a changelog in each.

# Calls of the C library that check the sizes they can know, as all of Debian's packages have them.
foreach(target mensura mensura_avx2)
    if(TARGET ${target})
        target_compile_definitions(${target} PRIVATE _FORTIFY_SOURCE=2)
    endif()
endforeach()

find_program(GZIP gzip REQUIRED)
execute_process(COMMAND ${GZIP} -9nc ${PROJECT_SOURCE_DIR}/CHANGELOG.md
    OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
foreach(package_and_component libmensura1=runtime libmensura-dev=development mensura=program)
    string(REPLACE "=" ";" package_and_component ${package_and_component})
    list(GET package_and_component 0 package)
    list(GET package_and_component 1 component)
    install(FILES ${PROJECT_BINARY_DIR}/changelog.gz DESTINATION ${MENSURA_DOC_DIR}/${package} COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL runtime development)
if(MENSURA_BUILD_CLI)
    list(APPEND CPACK_COMPONENTS_ALL program)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_PACKAGE_CONTACT "Mensura developers <mensura@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE mensura)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})  # the program's own library
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)  # the same version

set(MENSURA_WHAT
"IIR filters, spectra, polynomial roots, small matrices, a Kalman filter,
streaming filters, smoothers and ODE integrators for sampled measurement data,
behind a plain C interface.
.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libmensura1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"signal-processing routines for measurement data - library
${MENSURA_WHAT}
This package holds the shared library.")
file(WRITE ${PROJECT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/triggers)

set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libmensura-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"signal-processing routines for measurement data - development
${MENSURA_WHAT}
This package holds the headers, the files by which CMake and pkg-config find
the library, guides and examples.")

set(CPACK_COMPONENT_PROGRAM_DEPENDS runtime)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME mensura)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS gnuplot-nox)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION
"filter, transform and look at measurement data
Filters, spectra, smoothers, a tracker and polynomial roots for tables (CSV)
and sound files (WAV, FLAC and others) from the command line: data in, data
out, or a picture of them, drawn by gnuplot or as a page for a browser.")

include(CPack)
