# hidl_gen_package(PACKAGE [TYPES] INTERFACES NAME... [IMPORTS PACKAGE...])
# Runs Debian's hidl-gen on the .hal files of one package, as the platform's build does, and
# writes its C++ headers into HIDL_GEN_INCLUDE_DIR: I<NAME>.h for each interface, and types.h
# when the package has a types.hal. A package is regenerated when its own .hal files or those of
# the packages it imports (declared before it) change. The package roots are the folders of
# HIDL_GEN_PACKAGE_ROOTS below the calling directory (android.hidl in android/hidl, ...).
#
# hidl-gen also writes the binder side (Bn, Bp, Bs, IHw, hwtypes). The host has no binder and
# service code never includes those, so they stay in a scratch folder off the include path; the
# headers that are used go on it through HidlGenInstall.cmake.
find_program(HIDL_GEN_EXECUTABLE hidl-gen)
if(NOT HIDL_GEN_EXECUTABLE)
    message(FATAL_ERROR "hidl-gen not found: install hidl-gen")
endif()

set(HIDL_GEN_INCLUDE_DIR ${CMAKE_BINARY_DIR}/hidl-gen/include)
set(HIDL_GEN_SCRATCH_DIR ${CMAKE_BINARY_DIR}/hidl-gen/all)
set(HIDL_GEN_INSTALL_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/HidlGenInstall.cmake)

function(hidl_gen_package package)
    cmake_parse_arguments(P "TYPES" "" "INTERFACES;IMPORTS" ${ARGN})
    string(REPLACE "@" ";" parts ${package})
    list(GET parts 0 name)
    list(GET parts 1 version)
    string(REPLACE "." "/" dir ${name})
    set(dir ${dir}/${version})

    set(files ${P_INTERFACES})
    if(P_TYPES)
        list(APPEND files types)
    endif()
    set(hals)
    set(generated)
    set(headers)
    foreach(file ${files})
        list(APPEND hals ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/${file}.hal)
        list(APPEND generated ${HIDL_GEN_SCRATCH_DIR}/${dir}/${file}.h)
        list(APPEND headers ${HIDL_GEN_INCLUDE_DIR}/${dir}/${file}.h)
    endforeach()

    set(inputs ${hals})
    foreach(import ${P_IMPORTS})
        get_property(imported GLOBAL PROPERTY HIDL_GEN_INPUTS_${import})
        if(NOT imported)
            message(FATAL_ERROR "${package} imports ${import}, which is not declared before it")
        endif()
        list(APPEND inputs ${imported})
    endforeach()
    list(REMOVE_DUPLICATES inputs)
    set_property(GLOBAL PROPERTY HIDL_GEN_INPUTS_${package} ${inputs})

    set(roots)
    foreach(root ${HIDL_GEN_PACKAGE_ROOTS})
        string(REPLACE "." "/" root_dir ${root})
        list(APPEND roots -r ${root}:${CMAKE_CURRENT_SOURCE_DIR}/${root_dir})
    endforeach()

    add_custom_command(
        OUTPUT ${headers}
        # hidl-gen's own mkdir fails when another package's run makes the same parent at once.
        COMMAND ${CMAKE_COMMAND} -E make_directory ${HIDL_GEN_SCRATCH_DIR}/${dir}
        COMMAND ${HIDL_GEN_EXECUTABLE} -R -p ${CMAKE_CURRENT_SOURCE_DIR} -o ${HIDL_GEN_SCRATCH_DIR}
                -L c++-headers ${roots} ${package}
        COMMAND ${CMAKE_COMMAND} "-DHEADERS=${generated}"
                -DDESTINATION=${HIDL_GEN_INCLUDE_DIR}/${dir} -P ${HIDL_GEN_INSTALL_SCRIPT}
        DEPENDS ${inputs} ${HIDL_GEN_INSTALL_SCRIPT}
        COMMENT "Generating the C++ headers of ${package}"
        VERBATIM)
    set_property(GLOBAL APPEND PROPERTY HIDL_GEN_HEADERS ${headers})
endfunction()
