# libFuzzer build (clang only): every library of the tree is compiled with coverage feedback and
# AddressSanitizer + UndefinedBehaviorSanitizer, and the targets under fuzz/ link libFuzzer's main.
# Its own build tree, e.g. `CC=clang CXX=clang++ cmake -B build-fuzz -DTETHEROFFLOAD_FUZZ=ON`.
option(TETHEROFFLOAD_FUZZ "Build the libFuzzer targets under fuzz/ (clang only)" OFF)

if(TETHEROFFLOAD_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "TETHEROFFLOAD_FUZZ needs clang (CXX=clang++)")
    endif()
    if(NOT TETHEROFFLOAD_SANITIZE STREQUAL "")
        message(FATAL_ERROR "TETHEROFFLOAD_FUZZ brings its own sanitizers: leave TETHEROFFLOAD_SANITIZE empty")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined -fno-sanitize-recover=all)
endif()
