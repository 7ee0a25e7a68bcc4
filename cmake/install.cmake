# What is installed, in three components: runtime (the library), development (headers, the files by which CMake and
# pkg-config find it, guides and examples), program (the companion, installed from cli/).
include(CMakePackageConfigHelpers)

install(TARGETS mensura EXPORT mensura-targets
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development)
install(DIRECTORY include/mensura TYPE INCLUDE COMPONENT development FILES_MATCHING PATTERN "*.h")

set(MENSURA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/mensura)
install(EXPORT mensura-targets NAMESPACE mensura:: DESTINATION ${MENSURA_PACKAGE_DIR}
    COMPONENT development)
configure_package_config_file(cmake/mensura-config.cmake.in mensura-config.cmake
    INSTALL_DESTINATION ${MENSURA_PACKAGE_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(mensura-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mensura-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/mensura-config-version.cmake
    DESTINATION ${MENSURA_PACKAGE_DIR} COMPONENT development)

# The prefix as seen from the file itself, so that an installed tree can be moved.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(MENSURA_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" MENSURA_PC_PREFIX "\${pcfiledir}/${up}")
endif()
configure_file(cmake/mensura.pc.in mensura.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mensura.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Guides and examples in folders as here, so that what the headers call docs/iir.md is found there.
set(MENSURA_DOC_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc)
file(GLOB guides docs/*.md)
list(REMOVE_ITEM guides ${CMAKE_CURRENT_SOURCE_DIR}/docs/cli.md)  # comes with the companion
install(FILES ${guides} DESTINATION ${MENSURA_DOC_DIR}/libmensura-dev/docs COMPONENT development)
install(DIRECTORY docs/pictures docs/snippets DESTINATION ${MENSURA_DOC_DIR}/libmensura-dev/docs COMPONENT development)
install(DIRECTORY examples DESTINATION ${MENSURA_DOC_DIR}/libmensura-dev COMPONENT development
    PATTERN CMakeLists.txt EXCLUDE)
if(MENSURA_BUILD_CLI)
    install(FILES docs/cli.md DESTINATION ${MENSURA_DOC_DIR}/mensura COMPONENT program OPTIONAL)
    install(FILES cli/plot/uplot/LICENSE DESTINATION ${MENSURA_DOC_DIR}/mensura COMPONENT program
        RENAME uPlot-LICENSE)  # which is part of the program
endif()
