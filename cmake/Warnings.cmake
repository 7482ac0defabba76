# The warnings that every target of this project is built with; each of them is an error.
add_library(veldt20_warnings INTERFACE)
target_compile_options(veldt20_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
