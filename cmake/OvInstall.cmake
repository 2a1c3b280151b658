# What is installed, and where:
#   lib/patchadapter/      the library, and natively the stand-in and the host tool, which loads what lies beside it;
#                          on Windows library and host tool are in bin/, where a program finds its libraries
#   bin/patchhost          natively a link
#   include/patchadapter/  what a host includes
#   lib/cmake/PatchAdapter/, lib/pkgconfig/  for the host's build
#   share/doc/patchadapter/, share/man/
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(name patchadapter)
set(privateFolder ${CMAKE_INSTALL_LIBDIR}/${name})
set(headerFolder ${CMAKE_INSTALL_INCLUDEDIR}/${name})
set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/PatchAdapter)
set(documentFolder ${CMAKE_INSTALL_DATADIR}/doc/${name})
set(made ${PROJECT_BINARY_DIR}/install)

# The targets of a host: the public header; the platform's calls. Within this build they also bring its options.
add_library(PatchAdapterApi INTERFACE)
target_link_libraries(PatchAdapterApi INTERFACE $<BUILD_INTERFACE:ovOptions>)
target_include_directories(PatchAdapterApi INTERFACE $<INSTALL_INTERFACE:${headerFolder}>)
target_include_directories(systemLibs INTERFACE $<INSTALL_INTERFACE:${headerFolder}>)
target_compile_features(PatchAdapterApi INTERFACE cxx_std_11)
target_compile_features(systemLibs INTERFACE cxx_std_17)
set_target_properties(PatchAdapterApi PROPERTIES EXPORT_NAME Api)
set_target_properties(systemLibs PROPERTIES EXPORT_NAME System)
add_library(PatchAdapter::Api ALIAS PatchAdapterApi)
add_library(PatchAdapter::System ALIAS systemLibs)
add_library(PatchAdapter::PatchAdapter ALIAS PatchAdapter)

# The public headers; the stand-in's are those that its front header includes.
install(FILES ${PROJECT_SOURCE_DIR}/Include/PatchAdapterApi.h ${PROJECT_SOURCE_DIR}/Include/OvPlatform.h
    DESTINATION ${headerFolder})
if(WIN32)
    set(libraryFolder ${CMAKE_INSTALL_BINDIR})
    install(FILES ${PROJECT_SOURCE_DIR}/Include/OvSeTranslator.h DESTINATION ${headerFolder})
    install(TARGETS PatchAdapter patchhost RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
else()
    set(libraryFolder ${privateFolder})
    file(STRINGS ${PROJECT_SOURCE_DIR}/Platform/Platform.h lines REGEX "^#include \"")
    list(TRANSFORM lines REPLACE "#include \"(.*)\"" "${PROJECT_SOURCE_DIR}/\\1")
    install(FILES ${PROJECT_SOURCE_DIR}/Platform/Platform.h ${lines} DESTINATION ${headerFolder}/Platform)
    set_target_properties(PatchAdapter Platform patchhost PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(TARGETS PatchAdapter patchhost LIBRARY DESTINATION ${privateFolder} RUNTIME DESTINATION ${privateFolder})
    install(TARGETS Platform EXPORT PatchAdapterTargets LIBRARY DESTINATION ${privateFolder})
    file(RELATIVE_PATH target /${CMAKE_INSTALL_BINDIR} /${privateFolder}/patchhost)
    file(MAKE_DIRECTORY ${made})
    file(CREATE_LINK ${target} ${made}/patchhost SYMBOLIC)
    install(FILES ${made}/patchhost DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# For find_package() and pkg-config.
install(TARGETS PatchAdapterApi systemLibs EXPORT PatchAdapterTargets)
install(EXPORT PatchAdapterTargets NAMESPACE PatchAdapter:: DESTINATION ${packageFolder})
set(library ${libraryFolder}/${CMAKE_SHARED_LIBRARY_PREFIX}PatchAdapter${CMAKE_SHARED_LIBRARY_SUFFIX})
if(WIN32)
    set(library ${libraryFolder}/PatchAdapter.dll)
    get_target_property(systemLibraries systemLibs INTERFACE_LINK_LIBRARIES)
    list(TRANSFORM systemLibraries PREPEND "-l")
    list(JOIN systemLibraries " " systemLibraries)
else()
    set(systemLibraries "-L\${prefix}/${privateFolder} -lPlatform -Wl,-rpath,\${prefix}/${privateFolder}")
endif()
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/PatchAdapterConfig.cmake.in ${made}/PatchAdapterConfig.cmake
    INSTALL_DESTINATION ${packageFolder} PATH_VARS library NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${made}/PatchAdapterConfigVersion.cmake COMPATIBILITY SameMajorVersion)
file(RELATIVE_PATH prefixFromFile /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" prefixFromFile ${prefixFromFile})
configure_file(${PROJECT_SOURCE_DIR}/cmake/patchadapter.pc.in ${made}/patchadapter.pc @ONLY)
install(FILES ${made}/PatchAdapterConfig.cmake ${made}/PatchAdapterConfigVersion.cmake DESTINATION ${packageFolder})
install(FILES ${made}/patchadapter.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Documents and examples.
file(GLOB documents CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
install(FILES ${documents} DESTINATION ${documentFolder}/docs)
install(FILES ${PROJECT_SOURCE_DIR}/docs/schema/README.md DESTINATION ${documentFolder}/docs/schema)
install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/schema/ DESTINATION ${documentFolder}/docs/schema
    FILES_MATCHING PATTERN *.xsd PATTERN CMakeFiles EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${documentFolder})
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/LICENSE ${OV_BILL_OF_MATERIALS}
    DESTINATION ${documentFolder})
install(FILES ${PROJECT_SOURCE_DIR}/docs/man/patchhost.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
foreach(notice ${OV_NOTICES})
    string(REGEX REPLACE "=.*" "" of "${notice}")
    string(REGEX REPLACE ".*=" "" file "${notice}")
    install(FILES ${file} DESTINATION ${documentFolder}/third-party RENAME ${of}.txt)
endforeach()
