# The pages of docs/ are rendered from docs/pages with what docs/measure finds by running the library (python3-jinja2):
#     cmake --build --preset release --target pages        writes all of them; page-iir writes docs/iir.md
#     cmake --build --preset release --target docs-check   fails where a page is not what is measured
# Pages that need python3-scipy or python3-mpmath are left out of the check, which says so, where those are missing.
find_program(MENSURA_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(MENSURA_PYTHON AND BUILD_SHARED_LIBS)
    add_library(mensura_pages MODULE EXCLUDE_FROM_ALL measure/families.cpp measure/ode_problems.cpp
        measure/root_errors.cpp)
    target_link_libraries(mensura_pages PRIVATE mensura)
    target_compile_options(mensura_pages PRIVATE -ffp-contract=off ${MENSURA_WARNINGS})
    set_target_properties(mensura_pages PROPERTIES LIBRARY_OUTPUT_DIRECTORY $<TARGET_FILE_DIR:mensura>)

    function(mensura_add_pages target comment)
        add_custom_target(${target} COMMAND ${MENSURA_PYTHON} ${CMAKE_CURRENT_SOURCE_DIR}/measure ${ARGN}
            DEPENDS mensura mensura_pages $<TARGET_NAME_IF_EXISTS:mensura_cli> USES_TERMINAL COMMENT ${comment} VERBATIM)
    endfunction()
    mensura_add_pages(pages "Making the pages of docs" $<TARGET_FILE:mensura>)
    mensura_add_pages(docs-check "Comparing the pages of docs with what is measured" --check $<TARGET_FILE:mensura>)
    file(GLOB templates CONFIGURE_DEPENDS pages/*.md.in)
    foreach(template IN LISTS templates)
        string(REGEX REPLACE ".*/|[.]md[.]in$" "" name ${template})
        mensura_add_pages(page-${name} "Making the page ${name}" $<TARGET_FILE:mensura> ${name})
    endforeach()
endif()

# The C that the pages show: each file of docs/snippets is a program that checks what its page says.
if(MENSURA_BUILD_TESTS)
    enable_testing()
    file(GLOB snippets CONFIGURE_DEPENDS snippets/*.c)
    foreach(snippet IN LISTS snippets)
        get_filename_component(name ${snippet} NAME_WE)
        add_executable(snippet_${name} ${snippet})
        target_link_libraries(snippet_${name} PRIVATE mensura::mensura m)
        target_compile_options(snippet_${name} PRIVATE ${MENSURA_WARNINGS})
        add_test(NAME docs.snippet.${name} COMMAND snippet_${name})
    endforeach()
endif()
