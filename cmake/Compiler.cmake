# One set of compiler and linker options for every target of the project.

option(MERVO_COCKPIT "Build the cockpit (needs Qt)" ON)
option(MERVO_BENCH "Build the benchmarks" OFF)
option(MERVO_FUZZ "Build the libFuzzer targets (needs clang)" OFF)
set(MERVO_SANITIZE "" CACHE STRING "Build with these sanitizers: address,undefined or thread")

# The presets make warnings errors; another compiler than theirs warns of what it likes.
add_compile_options(
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wswitch -Wimplicit-fallthrough)
add_compile_definitions(MERVO_VERSION="${PROJECT_VERSION}" FMT_HEADER_ONLY)

# A program maps only the libraries that it really calls: a start-up is paid at every call of an agent.
add_link_options(-Wl,--as-needed)

if(MERVO_SANITIZE)
    add_compile_options(-fsanitize=${MERVO_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${MERVO_SANITIZE})
    if(MERVO_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
endif()
if(MERVO_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

find_program(MERVO_CCACHE ccache)
if(MERVO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${MERVO_CCACHE})
endif()
