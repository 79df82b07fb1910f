# ca_windows_program(target version description): what a program needs in order to be shipped for Windows. It gets its
# resources and its way to the system's libraries, and its symbols go into a file beside it, <name>.debug, that a
# debugger finds through the program's own link. Does nothing on other systems.
function(ca_windows_program target version description)
    if(NOT WIN32)
        return()
    endif()
    ca_add_resources(${target} ${version} ${description})
    ca_use_system_dlls(${target})
    if(NOT MINGW)
        return()
    endif()
    get_target_property(folder ${target} RUNTIME_OUTPUT_DIRECTORY)
    get_target_property(name ${target} OUTPUT_NAME)
    set(symbols ${folder}/${name}.debug)
    set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY}) # it would note the time
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${objcopy} --only-keep-debug $<TARGET_FILE:${target}> ${symbols}
        COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${symbols} $<TARGET_FILE:${target}>
        BYPRODUCTS ${symbols} VERBATIM)
    set_target_properties(${target} PROPERTIES SYMBOLS ${symbols})
endfunction()
