# Writes the names of all evidence items of the library, found in its sources, for the tool that takes them apart.
#   cmake -DOUTPUT=FILE -DPROJECT=FOLDER -P EvidenceNames.cmake
file(GLOB_RECURSE sources ${PROJECT}/PatchAdapter/*.cpp ${PROJECT}/PatchAdapter/*.h ${PROJECT}/ovCore/*.cpp
    ${PROJECT}/ovCore/*.h ${PROJECT}/Include/*.h)
set(names)
foreach(source ${sources})
    file(READ ${source} text)
    string(REPLACE ";" " " text "${text}")
    string(REPLACE "[" " " text "${text}") # a bracket would join the elements of the list of matches
    string(REPLACE "]" " " text "${text}")
    # Evidence(L"Name", Evidence name(L"Name", and the name that stands for a null one.
    string(REGEX MATCHALL "Evidence( [a-zA-Z]+)?[({][ \n]*(szName != nullptr [?] szName : )?L\"[a-zA-Z_(][^\"\\\n]*\"" found
        "${text}")
    foreach(item ${found})
        string(REGEX REPLACE ".*L(\"[^\"]*\")" "    \\1,\n" item "${item}")
        list(APPEND names "${item}")
    endforeach()
endforeach()
list(REMOVE_DUPLICATES names)
list(SORT names)
list(LENGTH names count)
if(count LESS 80)
    message(FATAL_ERROR "only ${count} evidence names were found: the library writes them in another form now")
endif()
string(CONCAT names ${names})
file(CONFIGURE OUTPUT ${OUTPUT} CONTENT "${names}")
