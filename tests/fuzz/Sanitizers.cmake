# What QUORVEX_SANITIZERS adds to every file, so that the module's own pieces are watched as well.
# clang's -Wconversion asks about signs too, which GCC's does not.
target_compile_options(quorvex_warnings INTERFACE -Wno-sign-conversion)

if(QUORVEX_SANITIZERS STREQUAL "memory")
    set(wrapping ${CMAKE_CURRENT_LIST_DIR}/wrapping.txt)
    add_compile_options(
        -fsanitize=address,undefined,fuzzer-no-link
        -fsanitize=float-divide-by-zero,float-cast-overflow,local-bounds,nullability,implicit-conversion
        -fsanitize=unsigned-integer-overflow
        -fsanitize-ignorelist=${wrapping}
        -fno-sanitize-recover=all
    )
    add_link_options(-fsanitize=address,undefined)
    # A read behind a vector's last element is an error, also where its room goes on.
    add_compile_definitions(_GLIBCXX_SANITIZE_VECTOR _GLIBCXX_ASSERTIONS)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${wrapping})
elseif(QUORVEX_SANITIZERS STREQUAL "threads")
    add_compile_options(-fsanitize=thread)
    add_link_options(-fsanitize=thread)
else()
    message(FATAL_ERROR "QUORVEX_SANITIZERS is memory or threads, not ${QUORVEX_SANITIZERS}")
endif()
add_compile_options(-O1 -g -fno-omit-frame-pointer)
