# The manual page, from the help of the built program.
find_program(HELP2MAN help2man)
if(NOT HELP2MAN)
    message(STATUS "help2man not found, the manual page left out: apt-get install help2man")
    return()
endif()
if(CMAKE_CROSSCOMPILING)
    return()  # the program cannot run here
endif()

# Undated, so that the same sources give the same page in any month.
set(MENSURA_MAN ${CMAKE_CURRENT_BINARY_DIR}/mensura.1)
set(MENSURA_MAN_TEXT ${PROJECT_SOURCE_DIR}/cmake/help_to_man.sh)
set(MENSURA_MAN_INCLUDE ${PROJECT_SOURCE_DIR}/cmake/mensura.h2m)
add_custom_command(OUTPUT ${MENSURA_MAN}.gz
    COMMAND ${CMAKE_COMMAND} -E env MENSURA=$<TARGET_FILE:mensura_cli> ${HELP2MAN} --no-info --help-option=--help-all
            "--name=filter, transform and look at measurement data" --include=${MENSURA_MAN_INCLUDE}
            --output=${MENSURA_MAN} ${MENSURA_MAN_TEXT}
    COMMAND sed -i "s/^\\(.TH MENSURA \"1\"\\) \"[^\"]*\"/\\1 \"\"/" ${MENSURA_MAN}
    COMMAND gzip -9nkf ${MENSURA_MAN}
    DEPENDS mensura_cli ${MENSURA_MAN_TEXT} ${MENSURA_MAN_INCLUDE}
    COMMENT "The manual page"
    VERBATIM)
add_custom_target(mensura_man ALL DEPENDS ${MENSURA_MAN}.gz)
if(MENSURA_INSTALL)
    install(FILES ${MENSURA_MAN}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program OPTIONAL)
endif()
