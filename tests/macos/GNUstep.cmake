# Programs of the macOS adapter's sources that run on Linux: built by clang against GNUstep, with AddressSanitizer,
# whatever the rest is built by.
find_program(WICKFIELD_CLANG NAMES clang++)
find_path(WICKFIELD_GNUSTEP NAMES AppKit/AppKit.h PATHS /usr/include/GNUstep NO_DEFAULT_PATH)
find_path(WICKFIELD_BLOCKS NAMES Block.h)
file(GLOB runtimes /usr/lib/gcc/*/*/include/objc/objc.h)
if(WICKFIELD_CLANG)
    execute_process(COMMAND sh -c "echo 'int main() {}' | '${WICKFIELD_CLANG}' -fsanitize=address -x c++ - -o /dev/null"
                    RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
    if(status EQUAL 0)
        set(sanitizer TRUE)
    endif()
endif()

set(gnustep_missing "")
foreach(part WICKFIELD_CLANG WICKFIELD_GNUSTEP WICKFIELD_BLOCKS runtimes sanitizer)
    if(NOT ${part})
        list(APPEND gnustep_missing ${part})
    endif()
endforeach()

# The headers of the runtime without those that stand beside them, which are another compiler's.
set(gnustep_runtime ${CMAKE_CURRENT_BINARY_DIR}/runtime)
if(runtimes)
    list(GET runtimes -1 runtime)
    get_filename_component(runtime ${runtime} DIRECTORY)
    file(MAKE_DIRECTORY ${gnustep_runtime})
    file(CREATE_LINK ${runtime} ${gnustep_runtime}/objc SYMBOLIC)
endif()

set(gnustep_headers ${CMAKE_CURRENT_SOURCE_DIR}/headers)
set(gnustep_flags -std=c++20 -g -O1 -I${PROJECT_SOURCE_DIR} -Wall -Wextra -Wshadow -Werror -fsanitize=address
    -fno-omit-frame-pointer)
set(gnustep_objc_flags -fobjc-runtime=gcc -fblocks -fexceptions -fobjc-exceptions
    -fconstant-string-class=NSConstantString -D_NATIVE_OBJC_EXCEPTIONS -DGNUSTEP -DGNUSTEP_BASE_LIBRARY=1
    -DGNU_GUI_LIBRARY=1 -isystem ${WICKFIELD_GNUSTEP} -isystem ${gnustep_headers}/gnustep -isystem ${gnustep_runtime}
    -Wselector -Wundeclared-selector -Wno-deprecated-declarations)

# gnustep_skipped(NAME missing...): the test NAME, which is skipped and says for want of what.
function(gnustep_skipped name)
    add_test(NAME "macos: ${name}" COMMAND sh -c "echo 'Skipped: not on this machine: ${ARGN}'; exit 77")
    set_tests_properties("macos: ${name}" PROPERTIES LABELS macos SKIP_RETURN_CODE 77)
endfunction()

# gnustep_program(TARGET PROGRAM path SOURCES paths... [FLAGS flags...] [OBJC_FLAGS flags...] LINK flags...
#                 [DEPENDS targets...]): the flags for Objective-C++ go to its sources only.
function(gnustep_program target)
    cmake_parse_arguments(ARG "" "PROGRAM" "SOURCES;FLAGS;OBJC_FLAGS;LINK;DEPENDS" ${ARGN})
    set(objects "")
    foreach(source IN LISTS ARG_SOURCES)
        file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR} ${source})
        set(object ${CMAKE_CURRENT_BINARY_DIR}/${name}.o)
        get_filename_component(folder ${object} DIRECTORY)
        file(MAKE_DIRECTORY ${folder})
        set(flags ${gnustep_flags} ${ARG_FLAGS})
        if(source MATCHES "\\.mm$")
            list(APPEND flags ${gnustep_objc_flags} ${ARG_OBJC_FLAGS})
        endif()
        add_custom_command(
            OUTPUT ${object}
            COMMAND ${CMAKE_CXX_COMPILER_LAUNCHER} ${WICKFIELD_CLANG} ${flags} -MD -MF ${object}.d -c ${source} -o
                    ${object}
            DEPENDS ${source}
            DEPFILE ${object}.d
            COMMENT "Compiling ${name} against GNUstep"
            VERBATIM)
        list(APPEND objects ${object})
    endforeach()
    add_custom_command(
        OUTPUT ${ARG_PROGRAM}
        COMMAND ${WICKFIELD_CLANG} -fsanitize=address -o ${ARG_PROGRAM} ${objects} ${ARG_LINK} -lBlocksRuntime
                -lgnustep-base -l:libobjc.so.4 -pthread
        DEPENDS ${objects} ${ARG_DEPENDS}
        COMMENT "Linking ${target}"
        COMMAND_EXPAND_LISTS
        VERBATIM)
    add_custom_target(${target} ALL DEPENDS ${ARG_PROGRAM})
endfunction()
