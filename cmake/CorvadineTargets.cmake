# Functions that make the targets of this project, one for each kind of target. All targets get the same flags.

option(CORVADINE_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)
set(CORVADINE_SANITIZE "" CACHE STRING "Sanitizers for every target, as -fsanitize= takes them")

# Code for an operating system is in files such as PlatformWindows.cpp and PlatformPosix.cpp. CORVADINE_SYSTEM is the
# end of their names.
if(WIN32)
    set(CORVADINE_SYSTEM Windows)
else()
    set(CORVADINE_SYSTEM Posix)
endif()

function(corvadine_set_flags target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Wcast-align
        $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local> -Wold-style-cast -Woverloaded-virtual -Wformat=2
        # Fused multiply-add rounds differently. Without it, the same input gives the same bytes on every machine.
        -ffp-contract=off)
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_TO_ASCII QT_NO_FOREACH)
    if(CORVADINE_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(CORVADINE_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${CORVADINE_SANITIZE} -fno-sanitize-recover=all)
        target_link_options(${target} PRIVATE -fsanitize=${CORVADINE_SANITIZE})
    endif()
endfunction()

# corvadine_add_library(NAME SOURCES file... [LINKS library...]): the library of one folder.
function(corvadine_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${arg_LINKS})
    corvadine_set_flags(${name})
endfunction()

# corvadine_add_program(NAME DESCRIPTION file...): an executable; on Windows with icon, version and manifest.
function(corvadine_add_program target description)
    add_executable(${target} ${ARGN})
    corvadine_set_flags(${target})
    if(WIN32)
        set(resources ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
        configure_file(${PROJECT_SOURCE_DIR}/cmake/corvadine.rc.in ${resources} @ONLY)
        target_sources(${target} PRIVATE ${resources})
        set_source_files_properties(${resources} PROPERTIES OBJECT_DEPENDS
            "${PROJECT_SOURCE_DIR}/app/corvadine.ico;${PROJECT_SOURCE_DIR}/cmake/corvadine.manifest")
    endif()
endfunction()

# corvadine_add_test(NAME library...): the test tests/NAME.cpp, linked with the libraries that it tests.
function(corvadine_add_test name)
    corvadine_add_program(${name} "Test" ${name}.cpp)
    target_link_libraries(${name} PRIVATE ${ARGN} corvadine_testing)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()

# corvadine_add_widget_test(NAME library...): the test of widgets tests/NAME.cpp, on the offscreen platform.
function(corvadine_add_widget_test name)
    corvadine_add_test(${name} corvadine_widget_testing ${ARGN})
    if(TARGET Qt6::QOffscreenIntegrationPlugin) # a static Qt links only the system's own platform by itself
        qt_import_plugins(${name} INCLUDE Qt6::QOffscreenIntegrationPlugin)
    endif()
endfunction()
