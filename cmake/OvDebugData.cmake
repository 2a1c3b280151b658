# ov_split_debug_data(TARGET): moves a Windows binary's debug data into a file beside it, which debuggers find by its
# name, so that what is shipped holds none. Elsewhere the data stays in the binary.
function(ov_split_debug_data target)
    if(NOT WIN32)
        return()
    endif()
    set(binary $<TARGET_FILE:${target}>)
    set(objcopy ${CMAKE_OBJCOPY} --preserve-dates) # the date in the headers too, which is none
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${objcopy} --only-keep-debug ${binary} ${binary}.debug
        COMMAND ${objcopy} --strip-all ${binary}
        COMMAND ${objcopy} --add-gnu-debuglink=$<TARGET_FILE_NAME:${target}>.debug ${binary}
        WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
        VERBATIM)
endfunction()
