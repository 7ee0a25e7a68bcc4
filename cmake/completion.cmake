# What shells complete, from the options that the built program declares.
if(CMAKE_CROSSCOMPILING)
    return()  # the program cannot run here
endif()

set(scripts)
foreach(shell_and_place bash=bash-completion/completions/mensura zsh=zsh/vendor-completions/_mensura
                        fish=fish/vendor_completions.d/mensura.fish)
    string(REPLACE "=" ";" shell_and_place ${shell_and_place})
    list(GET shell_and_place 0 shell)
    list(GET shell_and_place 1 place)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/completion/${place})
    cmake_path(GET script PARENT_PATH folder)
    add_custom_command(OUTPUT ${script}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND mensura_cli completion ${shell} > ${script}
        DEPENDS mensura_cli
        COMMENT "What ${shell} completes"
        VERBATIM)
    list(APPEND scripts ${script})
endforeach()
add_custom_target(mensura_completion ALL DEPENDS ${scripts})
if(MENSURA_INSTALL)
    install(DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/completion/ DESTINATION ${CMAKE_INSTALL_DATADIR} COMPONENT program)
endif()
