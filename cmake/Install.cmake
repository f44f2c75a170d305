# What a host's developer is given: "cmake --install" lays it out, ./package makes archives of it, one with the component
# "sdk" and one with the large "symbols".
include(CMakePackageConfigHelpers)

set(config_folder lib/cmake/quorvex)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME sdk)

install(TARGETS quorvex ferrolink EXPORT quorvex-targets
    RUNTIME DESTINATION bin
    ARCHIVE DESTINATION lib)
install(TARGETS quorvex-console RUNTIME DESTINATION bin)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/quorvex ${PROJECT_SOURCE_DIR}/host/ferrolink/include/ferrolink
    DESTINATION include)
if(MINGW)
    install(FILES ${PROJECT_BINARY_DIR}/quorvex.def ${PROJECT_BINARY_DIR}/ferrolink.def DESTINATION lib)
    if(NOT QUORVEX_COVERAGE)
        install(DIRECTORY ${PROJECT_BINARY_DIR}/symbols/ DESTINATION symbols COMPONENT symbols)
    endif()
elseif(MSVC)
    install(FILES $<TARGET_PDB_FILE:quorvex> $<TARGET_PDB_FILE:ferrolink> $<TARGET_PDB_FILE:quorvex-console>
        DESTINATION symbols COMPONENT symbols)
endif()

install(EXPORT quorvex-targets NAMESPACE quorvex:: DESTINATION ${config_folder})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/quorvex-config.cmake.in
    ${PROJECT_BINARY_DIR}/quorvex-config.cmake INSTALL_DESTINATION ${config_folder})
# Of another pointer size is as good as of another version.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/quorvex-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/quorvex-config.cmake ${PROJECT_BINARY_DIR}/quorvex-config-version.cmake
    DESTINATION ${config_folder})

if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(bits 64)
    set(compiler x86_64-w64-mingw32-g++)
else()
    set(bits 32)
    set(compiler i686-w64-mingw32-g++)
endif()
if(MINGW)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/sdk-readme.md.in ${PROJECT_BINARY_DIR}/sdk/README.md @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/sdk/README.md DESTINATION .)
    # The binaries hold these libraries, whose licences ask for their notices.
    foreach(package libjsoncpp-dev libcli11-dev libz-mingw-w64 mingw-w64-common gcc-mingw-w64-base)
        if(EXISTS /usr/share/doc/${package}/copyright)
            file(REAL_PATH /usr/share/doc/${package}/copyright notice)
            install(FILES ${notice} DESTINATION share/doc/quorvex/notices RENAME ${package}.txt)
        endif()
    endforeach()
endif()
install(FILES ${PROJECT_SOURCE_DIR}/docs/example/host_example.cpp DESTINATION share/doc/quorvex/example)
