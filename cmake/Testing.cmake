# tetheroffload_add_test(NAME name SOURCES ... [LIBS ...] [THREADED])
# A host-only test: it links the service code, the fakes and the host stand-in. THREADED tests
# also make up the ThreadSanitizer build, which builds nothing else of the host's.
find_package(GTest REQUIRED)
include(GoogleTest)

function(tetheroffload_add_test)
    cmake_parse_arguments(T "THREADED" "NAME" "SOURCES;LIBS" ${ARGN})
    if(TETHEROFFLOAD_SANITIZE STREQUAL "thread" AND NOT T_THREADED)
        return()
    endif()
    add_executable(${T_NAME} ${T_SOURCES})
    target_link_libraries(${T_NAME} PRIVATE
        ${T_LIBS} tetheroffload_service_code tetheroffload_fakes host_platform
        tetheroffload_warnings GTest::gmock GTest::gtest_main)
    set(labels unit)
    if(T_THREADED)
        list(APPEND labels threaded)
    endif()
    add_test(NAME ${T_NAME} COMMAND ${T_NAME})
    set_tests_properties(${T_NAME} PROPERTIES LABELS "${labels}" TIMEOUT 300)
endfunction()
