# ovGuarded: guards against overruns, for all that is handed out. Not in instrumented builds: the sanitizers see more, and
# where lines are counted nothing is optimised.
add_library(ovGuarded INTERFACE)
if(OV_SANITIZE OR OV_COVERAGE OR CMAKE_BUILD_TYPE STREQUAL "Debug")
    return()
endif()
set(OV_GUARDED ON)
target_compile_options(ovGuarded INTERFACE -fstack-protector-strong)
# The headers refuse it in a target that sets OV_NOT_OPTIMISED.
target_compile_definitions(ovGuarded INTERFACE
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:OV_NOT_OPTIMISED>>>:_FORTIFY_SOURCE=2>)
if(WIN32)
    add_library(ovStackGuard STATIC ovCore/Windows/StackGuard.cpp)
    # ssp holds the checking forms of the functions, whose failures end in the guard's file.
    target_link_libraries(ovStackGuard PRIVATE ovOptions INTERFACE ssp)
    target_link_libraries(ovGuarded INTERFACE ovStackGuard)
endif()
