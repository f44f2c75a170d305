# Our own targets link this; third-party code does not.
add_library(quorvex_warnings INTERFACE)
if(MSVC)
    # C4251: a client's members are of types that are not exported, and no host touches them.
    set(warnings /W4 /wd4251 /permissive- /utf-8 /Zc:__cplusplus /Zc:preprocessor)
else()
    set(warnings -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
endif()
target_compile_options(quorvex_warnings INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:${warnings}>")
