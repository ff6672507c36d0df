# What of the library the tests reach: its objects once more, instrumented, and the objects of the tests as they are.
#
# tavell_add_coverage(test...) makes NAME_coverage of each test program NAME, tavell_add_api_coverage of one that loads the
# shared library. scripts/coverage runs them; ctest does not know them. The instrumented objects define all that the
# static library does, so that nothing is taken from that.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    message(FATAL_ERROR "TAVELL_COVERAGE needs GCC.")
endif()

add_library(tavell_coverage_objects OBJECT $<TARGET_PROPERTY:tavell_objects,SOURCES>)
tavell_target_defaults(tavell_coverage_objects)
target_include_directories(tavell_coverage_objects PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(tavell_coverage_objects PRIVATE TAVELL_STATIC)
target_compile_options(tavell_coverage_objects PRIVATE -O0 --coverage)
set_target_properties(tavell_coverage_objects PROPERTIES POSITION_INDEPENDENT_CODE ON EXCLUDE_FROM_ALL ON)

# The kit in the same way.
if(TARGET tavellkit_objects)
    add_library(tavellkit_coverage_objects OBJECT $<TARGET_PROPERTY:tavellkit_objects,SOURCES>)
    tavell_target_defaults(tavellkit_coverage_objects)
    target_include_directories(tavellkit_coverage_objects
                               PRIVATE $<TARGET_PROPERTY:tavellkit_objects,INCLUDE_DIRECTORIES>)
    target_compile_definitions(tavellkit_coverage_objects PRIVATE TAVELLKIT_STATIC TAVELL_STATIC
                               $<TARGET_PROPERTY:tavellkit_objects,COMPILE_DEFINITIONS>)
    target_link_libraries(tavellkit_coverage_objects PRIVATE tavellkit_json)
    # warnings are those of the objects that they repeat
    target_compile_options(tavellkit_coverage_objects PRIVATE -O0 --coverage -w)
    set_target_properties(tavellkit_coverage_objects PROPERTIES POSITION_INDEPENDENT_CODE ON EXCLUDE_FROM_ALL ON)
    add_dependencies(tavellkit_coverage_objects tavellkit_objects)
endif()

add_custom_target(coverage)

# The tests of the exported functions load a shared library; the one source that does so is compiled for this one.
add_library(tavell_coverage_shared SHARED EXCLUDE_FROM_ALL $<TARGET_OBJECTS:tavell_coverage_objects>)
set_target_properties(tavell_coverage_shared PROPERTIES LINKER_LANGUAGE CXX)
target_link_options(tavell_coverage_shared PRIVATE --coverage)

function(tavell_add_api_coverage test loader)
    get_filename_component(loaderName ${loader} NAME)
    set(others "$<FILTER:$<TARGET_OBJECTS:${test}>,EXCLUDE,/${loaderName}>")
    add_executable(${test}_coverage EXCLUDE_FROM_ALL ${loader} ${others})
    tavell_target_defaults(${test}_coverage)
    target_include_directories(${test}_coverage PRIVATE $<TARGET_PROPERTY:${test},INCLUDE_DIRECTORIES>)
    target_compile_definitions(${test}_coverage PRIVATE TAVELL_LIBRARY="$<TARGET_FILE:tavell_coverage_shared>")
    target_link_libraries(${test}_coverage PRIVATE $<TARGET_PROPERTY:${test},LINK_LIBRARIES>)
    set_target_properties(${test}_coverage PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/coverage)
    add_dependencies(${test}_coverage tavell_coverage_shared)
    add_dependencies(coverage ${test}_coverage)
endfunction()

function(tavell_add_coverage)
    foreach(test IN LISTS ARGN)
        if(NOT TARGET ${test})
            continue()
        endif()
        set(kitObjects "")
        if(test STREQUAL unit_kit)
            set(kitObjects $<TARGET_OBJECTS:tavellkit_coverage_objects>)
        endif()
        add_executable(${test}_coverage EXCLUDE_FROM_ALL $<TARGET_OBJECTS:${test}> ${kitObjects}
                                                         $<TARGET_OBJECTS:tavell_coverage_objects>)
        target_link_options(${test}_coverage PRIVATE --coverage)
        target_link_libraries(${test}_coverage PRIVATE $<TARGET_PROPERTY:${test},LINK_LIBRARIES>)
        set_target_properties(${test}_coverage PROPERTIES LINKER_LANGUAGE CXX
                              RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/coverage)
        add_dependencies(coverage ${test}_coverage)
    endforeach()
endfunction()
