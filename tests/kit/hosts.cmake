# Hosts of the kit's shared library: in C99, in C++ through tavell.hpp, and the example of docs/kit.md as it stands there.
add_executable(kit_c_host ${CMAKE_CURRENT_LIST_DIR}/c_host.c)
tavell_target_defaults(kit_c_host)
set_target_properties(kit_c_host PROPERTIES C_STANDARD 99 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF)
target_link_libraries(kit_c_host PRIVATE tavell::tavellkit)
if(UNIX)
    target_link_libraries(kit_c_host PRIVATE m)
endif()
add_test(NAME kit.c_host COMMAND kit_c_host)

tavell_add_tests(kit_hpp SOURCES ${CMAKE_CURRENT_LIST_DIR}/hpp_test.cpp LIBRARIES tavell::tavellkit LABEL kit
                 DEFINITIONS TAVELL_EXAMPLES="${PROJECT_SOURCE_DIR}/examples")

set(kitDocument ${PROJECT_SOURCE_DIR}/docs/kit.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${kitDocument})
file(READ ${kitDocument} documentText)
string(FIND "${documentText}" "```cpp\n" exampleStart)
string(SUBSTRING "${documentText}" ${exampleStart} -1 exampleText)
string(REPLACE "```cpp\n" "" exampleText "${exampleText}")
string(FIND "${exampleText}" "```" exampleEnd)
string(SUBSTRING "${exampleText}" 0 ${exampleEnd} exampleText)
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/kit_example.cpp CONTENT "${exampleText}" @ONLY)
add_executable(kit_example ${CMAKE_CURRENT_BINARY_DIR}/kit_example.cpp)
tavell_target_defaults(kit_example)
target_link_libraries(kit_example PRIVATE tavell::tavellkit)
add_test(NAME kit.example COMMAND kit_example WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})

set_tests_properties(kit.c_host PROPERTIES LABELS kit)
set_tests_properties(kit.example PROPERTIES LABELS kit PASS_REGULAR_EXPRESSION "^445[0-9][0-9]")

# The kit exports the functions of its C header and nothing else.
if(UNIX AND NOT APPLE AND NOT TAVELL_SANITIZE)
    add_test(NAME kit.exports
             COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/exports.sh ${CMAKE_NM} $<TARGET_FILE:tavellkit>
                     ${PROJECT_SOURCE_DIR}/kit/include/tavellkit.h)
    set_tests_properties(kit.exports PROPERTIES LABELS kit)
endif()
