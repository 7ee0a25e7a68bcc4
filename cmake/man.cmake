# The manual page, from the help of the built program and from the page docs/cli.md.
find_program(HELP2MAN help2man)
find_program(MENSURA_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
set(missing TRUE)
if(HELP2MAN AND MENSURA_PYTHON)
    execute_process(COMMAND ${MENSURA_PYTHON} -c "import markdown_it" RESULT_VARIABLE missing ERROR_QUIET)
endif()
if(missing)
    message(STATUS "The manual page is left out: apt-get install help2man python3-markdown-it")
    return()
endif()
if(CMAKE_CROSSCOMPILING)
    return()  # the program cannot run here
endif()

# Undated, so that the same sources give the same page in any month.
set(MENSURA_MAN ${CMAKE_CURRENT_BINARY_DIR}/mensura.1)
set(MENSURA_MAN_TEXT ${PROJECT_SOURCE_DIR}/cmake/help_to_man.sh)
set(MENSURA_MAN_COMMON ${PROJECT_SOURCE_DIR}/cmake/manual_page.py ${PROJECT_SOURCE_DIR}/docs/cli.md)
set(MENSURA_MAN_INCLUDE ${CMAKE_CURRENT_BINARY_DIR}/mensura.h2m)
add_custom_command(OUTPUT ${MENSURA_MAN}.gz
    COMMAND ${MENSURA_PYTHON} ${MENSURA_MAN_COMMON} > ${MENSURA_MAN_INCLUDE}
    COMMAND ${CMAKE_COMMAND} -E env MENSURA=$<TARGET_FILE:mensura_cli> ${HELP2MAN} --no-info --help-option=--help-all
            "--name=filter, transform and look at measurement data" --include=${MENSURA_MAN_INCLUDE}
            --output=${MENSURA_MAN} ${MENSURA_MAN_TEXT}
    COMMAND sed -i "s/^\\(.TH MENSURA \"1\"\\) \"[^\"]*\"/\\1 \"\"/" ${MENSURA_MAN}
    COMMAND gzip -9nkf ${MENSURA_MAN}
    DEPENDS mensura_cli ${MENSURA_MAN_TEXT} ${MENSURA_MAN_COMMON}
    COMMENT "The manual page"
    VERBATIM)
add_custom_target(mensura_man ALL DEPENDS ${MENSURA_MAN}.gz)
if(MENSURA_INSTALL)
    install(FILES ${MENSURA_MAN}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program OPTIONAL)
endif()
