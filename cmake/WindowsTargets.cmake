# Windows binaries carry their runtime with them: libgcc, libstdc++ and winpthread are linked in.
if(MINGW)
    add_link_options(-static)
elseif(MSVC)
    set(CMAKE_MSVC_RUNTIME_LIBRARY MultiThreaded$<$<CONFIG:Debug>:Debug>)
endif()
# No Windows header may define min and max, and every call is the wide form.
add_compile_definitions(NOMINMAX WIN32_LEAN_AND_MEAN UNICODE _UNICODE _WIN32_WINNT=0x0601)

# A binary named "quorvex" is a DLL and a console program; neither bears GCC's "lib".
set(CMAKE_SHARED_LIBRARY_PREFIX "")

# zlib goes into the module, too.
set(ZLIB_USE_STATIC_LIBS ON)

# The preset "coverage" counts which branches of the module are taken.
if(QUORVEX_COVERAGE)
    add_link_options(--coverage)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/scripts/counted.sh)
endif()
