# Our own targets link this; third-party code does not.
add_library(quorvex_warnings INTERFACE)
target_compile_options(quorvex_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
