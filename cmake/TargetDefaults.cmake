# The compile and link settings of every target of this project, private to it.

# GCC and clang both know these. A warning is an error in the project's own builds only (TAVELL_WERROR).
set(TAVELL_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wdouble-promotion)

# The vptr check compares the type information of the two sides of a call. The library exports none, so a call from a
# host into it would always be reported; "function" has the same difficulty with the functions of the table tests.
set(TAVELL_SANITIZE_FLAGS "")
if(TAVELL_SANITIZE)
    set(TAVELL_SANITIZE_FLAGS -fsanitize=${TAVELL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    if(TAVELL_SANITIZE MATCHES "undefined")
        list(APPEND TAVELL_SANITIZE_FLAGS -fno-sanitize=vptr)
        if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
            list(APPEND TAVELL_SANITIZE_FLAGS -fno-sanitize=function)
        endif()
    endif()
endif()

# Applies to C and C++ targets alike.
# No fused multiply-add: an addition and a multiplication round each for itself, on every processor.
function(tavell_target_defaults target)
    set_target_properties(${target} PROPERTIES CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF)
    if(NOT MSVC)
        target_compile_options(${target} PRIVATE ${TAVELL_WARNINGS} -ffp-contract=off ${TAVELL_SANITIZE_FLAGS})
        target_link_options(${target} PRIVATE ${TAVELL_SANITIZE_FLAGS})
    endif()
    if(TAVELL_WERROR)
        set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
    endif()
endfunction()
