# Windows binaries carry their runtime with them: libgcc, libstdc++ and winpthread are linked in.
add_link_options(-static)
# No Windows header may define min and max, and every call is the wide form.
add_compile_definitions(NOMINMAX WIN32_LEAN_AND_MEAN UNICODE _UNICODE _WIN32_WINNT=0x0601)

# A binary named "quorvex" is a DLL and a console program; neither bears GCC's "lib".
set(CMAKE_SHARED_LIBRARY_PREFIX "")

# zlib goes into the module, too.
set(ZLIB_USE_STATIC_LIBS ON)
