# Sanitizer flags apply to everything the build compiles and links, tests included. GCC's
# maybe-uninitialized analysis gives false alarms in instrumented, optimised code (std::regex,
# for one), so it is off in these builds; the plain build keeps it. clang has no such warning.
set(no_false_alarms $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
if(TETHEROFFLOAD_SANITIZE STREQUAL "address")
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                        -fno-omit-frame-pointer ${no_false_alarms})
    add_link_options(-fsanitize=address,undefined -fno-sanitize-recover=all)
elseif(TETHEROFFLOAD_SANITIZE STREQUAL "thread")
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer ${no_false_alarms})
    add_link_options(-fsanitize=thread)
elseif(NOT TETHEROFFLOAD_SANITIZE STREQUAL "")
    message(FATAL_ERROR "TETHEROFFLOAD_SANITIZE must be empty, 'address' or 'thread'")
endif()
