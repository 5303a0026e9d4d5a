# One test for each method of Python modules.

find_program(WICKFIELD_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)

# wickfield_python_tests(PREFIX MODULES file... [LABELS label...] [TIMEOUT seconds] [ENVIRONMENT NAME=value...]): named
# after the class and the method, "PREFIX: Class: words of the method". The label is the prefix if none is given.
function(wickfield_python_tests prefix)
    cmake_parse_arguments(ARG "" "TIMEOUT" "MODULES;LABELS;ENVIRONMENT" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    if(NOT ARG_LABELS)
        set(ARG_LABELS ${prefix})
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ARG_MODULES})
    foreach(module_file IN LISTS ARG_MODULES)
        get_filename_component(module ${module_file} NAME_WE)
        get_filename_component(folder ${module_file} DIRECTORY)
        file(STRINGS ${module_file} lines REGEX "^class |^    def test_")
        foreach(line IN LISTS lines)
            if(line MATCHES "^class ([A-Za-z0-9_]+)")
                set(class ${CMAKE_MATCH_1})
            elseif(line MATCHES "def (test_([a-z0-9_]+))")
                set(method ${CMAKE_MATCH_1})
                string(REPLACE "_" " " words "${CMAKE_MATCH_2}")
                set(name "${prefix}: ${class}: ${words}")
                add_test(NAME "${name}" COMMAND ${WICKFIELD_PYTHON} ${PROJECT_SOURCE_DIR}/tests/run_method.py
                                                ${folder} ${module}.${class}.${method})
                set_tests_properties("${name}" PROPERTIES LABELS "${ARG_LABELS}" SKIP_RETURN_CODE 77
                                     TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "${ARG_ENVIRONMENT}")
            endif()
        endforeach()
    endforeach()
endfunction()
