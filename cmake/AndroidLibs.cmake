# The real AOSP liblog, libutils and libcutils as Debian builds them for Linux, with the host
# stand-in's headers (the HIDL runtime) in front of them at the platform's paths. The interface
# headers that hidl-gen writes join them from host/interfaces/hal.
set(ANDROID_LIB_DIR /usr/lib/x86_64-linux-gnu/android)
set(ANDROID_INCLUDE_DIR /usr/include/android)

foreach(lib log utils cutils)
    find_library(ANDROID_${lib}_LIBRARY NAMES ${lib} PATHS ${ANDROID_LIB_DIR} NO_DEFAULT_PATH)
    if(NOT ANDROID_${lib}_LIBRARY)
        message(FATAL_ERROR "lib${lib} not found in ${ANDROID_LIB_DIR}: "
                            "install android-lib${lib}-dev")
    endif()
endforeach()

add_library(android_platform INTERFACE)
target_include_directories(android_platform INTERFACE ${CMAKE_SOURCE_DIR}/host/include)
target_include_directories(android_platform SYSTEM INTERFACE ${ANDROID_INCLUDE_DIR})
target_link_libraries(android_platform INTERFACE
    ${ANDROID_log_LIBRARY} ${ANDROID_utils_LIBRARY} ${ANDROID_cutils_LIBRARY})
target_link_options(android_platform INTERFACE "-Wl,-rpath,${ANDROID_LIB_DIR}")
