# The warnings that every target of this project is built with; each of them is an error.
option(VELDT20_WARNINGS_ARE_ERRORS "Stop at a warning" ON)
add_library(veldt20_warnings INTERFACE)
target_compile_options(veldt20_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${VELDT20_WARNINGS_ARE_ERRORS}>:-Werror>)
