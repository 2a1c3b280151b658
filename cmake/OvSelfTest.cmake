# The self-test's archive: library, host tool, tests and what they read, for a Windows machine without a compiler. The
# target selfTestPackage makes it; make package hands it out.
set(name PatchAdapter-${PROJECT_VERSION}-selftest-windows)
set(made ${PROJECT_BINARY_DIR}/selftest)

add_executable(selftest
    tests/selftest/ChildProcess.cpp
    tests/selftest/Report.cpp
    tests/selftest/SelfTest.cpp
    tests/selftest/SystemFacts.cpp
    tests/selftest/TestOutput.cpp
)
target_compile_definitions(selftest PRIVATE OV_PROJECT_VERSION="${PROJECT_VERSION}")
target_include_directories(selftest PRIVATE tests/support)
target_include_directories(selftest SYSTEM PRIVATE ${PROJECT_BINARY_DIR}/PatchHost/include)
target_compile_options(selftest PRIVATE -O0)
target_link_libraries(selftest PRIVATE ovOptions systemLibs)
target_link_options(selftest PRIVATE -s)

# The list that selftest.exe reads: each program, "service" when it simulates one, "long" when it takes minutes.
get_property(programs GLOBAL PROPERTY OV_TEST_PROGRAMS)
get_property(serviceTests GLOBAL PROPERTY OV_SERVICE_TEST_PROGRAMS)
set(long EveryAllocationFailsTest EveryPlatformCallFailsTest KilledAtEveryCallTest OperationsRaceTest OvFaultTest
    ThreatTableTest)
set(list "")
foreach(program ${programs})
    string(APPEND list ${program})
    if(program IN_LIST serviceTests)
        string(APPEND list " service")
    endif()
    if(program IN_LIST long)
        string(APPEND list " long")
    endif()
    string(APPEND list "\n")
    list(APPEND programFiles $<TARGET_FILE:${program}>)
endforeach()
file(GENERATE OUTPUT ${made}/programs.txt CONTENT "${list}")

set(folder ${made}/${name})
set(copy ${CMAKE_COMMAND} -E copy)
add_custom_target(selfTestPackage
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${folder} ${made}/${name}.zip
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}/bin ${folder}/data ${folder}/examples ${folder}/symbols
    COMMAND ${copy} ${programFiles} $<TARGET_FILE:foreignCode> $<TARGET_FILE:PatchAdapter> $<TARGET_FILE:patchhost>
        ${folder}/bin
    COMMAND ${copy} $<TARGET_FILE:PatchAdapter>.debug $<TARGET_FILE:patchhost>.debug ${folder}/symbols
    COMMAND ${copy} ${made}/programs.txt tests/boundary/scenario.transcript tests/boundary/scenario.wine
        docs/security.md ${folder}/data
    COMMAND ${CMAKE_COMMAND} -E copy_directory examples/policies ${folder}/examples/policies
    COMMAND ${CMAKE_COMMAND} -E copy_directory examples/services ${folder}/examples/services
    COMMAND ${copy} $<TARGET_FILE:selftest> tests/selftest/selftest.cmd tests/selftest/README.txt LICENSE ${folder}
    COMMAND ${CMAKE_COMMAND} -E chdir ${made} ${CMAKE_COMMAND} -E tar cf ${name}.zip --format=zip -- ${name}
    DEPENDS ${programs}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    VERBATIM)
