# Compile and link options that every target of ours shares.

option(OV_COVERAGE "Leave the branches of machine faults out of the product's code, so that its own are counted" OFF)

add_library(ovOptions INTERFACE)
target_compile_features(ovOptions INTERFACE cxx_std_17)
target_compile_options(ovOptions INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Wcast-qual -Wnon-virtual-dtor -Woverloaded-virtual
    -Wdouble-promotion -Werror
    # A machine fault is turned into an exception that unwinds from the faulting instruction. Where branches are
    # counted it would give every memory access one more.
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:OV_COUNT_BRANCHES>>>:-fnon-call-exceptions> -fasynchronous-unwind-tables
    # No path of the building machine may end up in a binary.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
target_include_directories(ovOptions INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/Include)

if(WIN32)
    # Every COM interface in the system's headers has a public destructor; the native target finds those of ours.
    target_compile_options(ovOptions INTERFACE -Wno-non-virtual-dtor)
    target_compile_definitions(ovOptions INTERFACE
        UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN WINVER=0x0601 _WIN32_WINNT=0x0601 __USE_MINGW_ANSI_STDIO=1)
    target_link_options(ovOptions INTERFACE
        -static -static-libgcc -static-libstdc++
        -Wl,--dynamicbase -Wl,--nxcompat -Wl,--no-insert-timestamp -Wl,--disable-auto-image-base)
else()
    # A unique symbol would keep a plug-in in the process for ever.
    target_compile_options(ovOptions INTERFACE -fvisibility=hidden -fvisibility-inlines-hidden
        $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>
        $<$<CXX_COMPILER_ID:Clang>:-Wno-unused-private-field>) # of a class that another target needs it for
    target_link_options(ovOptions INTERFACE -Wl,-z,relro,-z,now
        $<$<CXX_COMPILER_ID:GNU>:-Wl,--no-undefined>) # Clang's sanitizers leave their symbols to the program
endif()

# The platform's libraries: Windows' own, or the stand-in. The choice is made here and only here.
add_library(systemLibs INTERFACE)
if(WIN32)
    target_link_libraries(systemLibs INTERFACE ole32 oleaut32 advapi32 version uuid user32)
else()
    target_link_libraries(systemLibs INTERFACE Platform)
endif()

set(OV_SANITIZE "" CACHE STRING "Sanitizers for every target, as -fsanitize= takes them (address,undefined)")
if(OV_SANITIZE)
    # The host's objects may come from another compiler: no type information of ours can be asked of them (vptr).
    # The instrumented code makes GCC take initialised objects for uninitialised ones, the library's own among them.
    target_compile_options(ovOptions INTERFACE
        -fsanitize=${OV_SANITIZE} -fno-sanitize=vptr -fno-omit-frame-pointer
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(ovOptions INTERFACE -fsanitize=${OV_SANITIZE})
    if(OV_FUZZ) # the dictionary and the corpora hold the words; watching every comparison is a fifth of the time
        target_compile_options(ovOptions INTERFACE -fno-sanitize-coverage=trace-cmp)
    endif()
endif()
