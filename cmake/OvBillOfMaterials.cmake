# The bill of materials (SPDX 2.3), and the notices that come with what is inside the binaries.
#   OV_BILL_OF_MATERIALS  the file
#   OV_NOTICES            NAME=FILE for each notice that this machine has
set(OV_BILL_OF_MATERIALS ${PROJECT_BINARY_DIR}/install/patchadapter.spdx.json)
set(OV_NOTICES "")
set(packages "")
set(relationships "")

# ov_header_version(OUT FILE MACRO...): the version that the macros in a header tell, joined by dots.
function(ov_header_version out file)
    set(parts "")
    foreach(macro ${ARGN})
        file(STRINGS ${file} line REGEX "#define ${macro} ")
        if(line MATCHES "#define ${macro} +\"?([0-9.]+)")
            list(APPEND parts ${CMAKE_MATCH_1})
        endif()
    endforeach()
    list(JOIN parts "." version)
    set(${out} "${version}" PARENT_SCOPE)
endfunction()

# ov_material(NAME VERSION LICENCE DOWNLOAD LINKED): a part of somebody else. LINKED: STATIC_LINK or DYNAMIC_LINK.
function(ov_material name version licence download linked)
    if(NOT version)
        set(version NOASSERTION)
    endif()
    string(APPEND packages ",
    {
      \"SPDXID\": \"SPDXRef-${name}\",
      \"name\": \"${name}\",
      \"versionInfo\": \"${version}\",
      \"downloadLocation\": \"${download}\",
      \"filesAnalyzed\": false,
      \"licenseConcluded\": \"${licence}\",
      \"licenseDeclared\": \"${licence}\",
      \"copyrightText\": \"NOASSERTION\"
    }")
    string(APPEND relationships ",
    {
      \"spdxElementId\": \"SPDXRef-PatchAdapter\",
      \"relationshipType\": \"${linked}\",
      \"relatedSpdxElement\": \"SPDXRef-${name}\"
    }")
    set(packages "${packages}" PARENT_SCOPE)
    set(relationships "${relationships}" PARENT_SCOPE)
endfunction()

# ov_notice(NAME PACKAGE): the notice that Debian's package brings.
function(ov_notice name package)
    if(EXISTS /usr/share/doc/${package}/copyright)
        list(APPEND OV_NOTICES ${name}=/usr/share/doc/${package}/copyright)
        set(OV_NOTICES "${OV_NOTICES}" PARENT_SCOPE)
    endif()
endfunction()

ov_header_version(version ${OV_CLI11}/CLI/Version.hpp CLI11_VERSION)
ov_material(CLI11 "${version}" BSD-3-Clause https://github.com/CLIUtils/CLI11 STATIC_LINK)
ov_notice(CLI11 libcli11-dev)
ov_header_version(version ${OV_JSON}/nlohmann/detail/abi_macros.hpp
    NLOHMANN_JSON_VERSION_MAJOR NLOHMANN_JSON_VERSION_MINOR NLOHMANN_JSON_VERSION_PATCH)
ov_material(nlohmann-json "${version}" MIT https://github.com/nlohmann/json STATIC_LINK)
ov_notice(nlohmann-json nlohmann-json3-dev)
if(WIN32)
    set(runtime "GPL-3.0-or-later WITH GCC-exception-3.1")
    ov_material(gcc-runtime "${CMAKE_CXX_COMPILER_VERSION}" "${runtime}" https://gcc.gnu.org STATIC_LINK)
    find_file(OV_MINGW_VERSION _mingw_mac.h PATHS /include)
    if(OV_MINGW_VERSION)
        ov_header_version(version ${OV_MINGW_VERSION}
            __MINGW64_VERSION_MAJOR __MINGW64_VERSION_MINOR __MINGW64_VERSION_BUGFIX)
    endif()
    ov_material(mingw-w64-runtime "${version}" NOASSERTION https://www.mingw-w64.org STATIC_LINK)
    ov_notice(mingw-w64-runtime mingw-w64-i686-dev)
else()
    find_package(LibXml2 REQUIRED)
    find_package(SQLite3 REQUIRED)
    ov_material(libxml2 "${LIBXML2_VERSION_STRING}" MIT https://gitlab.gnome.org/GNOME/libxml2 DYNAMIC_LINK)
    ov_material(sqlite3 "${SQLite3_VERSION}" blessing https://www.sqlite.org DYNAMIC_LINK)
endif()

string(TIMESTAMP created UTC) # obeys SOURCE_DATE_EPOCH
string(UUID identity NAMESPACE 6ba7b811-9dad-11d1-80b4-00c04fd430c8 TYPE SHA1
    NAME "${PROJECT_VERSION} ${CMAKE_SYSTEM_NAME} ${packages}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/patchadapter.spdx.json.in ${OV_BILL_OF_MATERIALS} @ONLY)
