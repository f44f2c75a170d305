# What the binaries have that are handed on: addresses that the system may choose, memory that holds data or code and
# never both, debug symbols in a file of their own, a version, and nothing of the machine and the time they were built.
enable_language(RC)

# Our own targets that end up in such a binary link this.
add_library(quorvex_release INTERFACE)
if(MINGW)
    set(protection -Wl,--dynamicbase,--nxcompat)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        string(APPEND protection ,--high-entropy-va)
    endif()
    target_link_options(quorvex_release INTERFACE ${protection} -Wl,--no-insert-timestamp)
    # What counts branches has to find the sources where they are.
    if(NOT QUORVEX_COVERAGE)
        # Paths are told from the source folder on. Of the two that fit the build folder, the last one counts.
        set(paths -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
        target_compile_options(quorvex_release INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:-g;${paths}>")
    endif()
elseif(MSVC)
    target_compile_options(quorvex_release INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:/Zi;/guard:cf>")
    target_link_options(quorvex_release INTERFACE /DEBUG /OPT:REF /OPT:ICF /guard:cf /Brepro)
endif()

# Moves a binary's debug symbols to symbols/FILE.debug in the build folder, and leaves a note of that name in the binary.
# Dates are preserved for the sake of the one in the header, which is none.
function(quorvex_split_symbols target file)
    set(symbols ${PROJECT_BINARY_DIR}/symbols)
    file(MAKE_DIRECTORY ${symbols})
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_OBJCOPY} --preserve-dates --only-keep-debug $<TARGET_FILE:${target}> ${symbols}/${file}.debug
        COMMAND ${CMAKE_OBJCOPY} --preserve-dates --strip-all
            --add-gnu-debuglink=${symbols}/${file}.debug $<TARGET_FILE:${target}>
        BYPRODUCTS ${symbols}/${file}.debug
        VERBATIM)
endfunction()

# quorvex_release(TARGET FILE DESCRIPTION): FILE is the binary's name, DESCRIPTION what the system shows about it.
function(quorvex_release target file description)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL SHARED_LIBRARY)
        set(file_type VFT_DLL)
    else()
        set(file_type VFT_APP)
    endif()
    set(version_source ${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${version_source} @ONLY)
    target_sources(${target} PRIVATE ${version_source})
    target_link_libraries(${target} PRIVATE quorvex_release)
    if(MINGW AND NOT QUORVEX_COVERAGE)
        quorvex_split_symbols(${target} ${file})
    endif()
endfunction()
