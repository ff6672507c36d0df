# Every test program is run once more, as a whole, in a host whose locale writes "1.234,5" (environment.cpp).
add_library(tavell_decimal_comma OBJECT ${CMAKE_CURRENT_LIST_DIR}/environment.cpp)
tavell_target_defaults(tavell_decimal_comma)
target_link_libraries(tavell_decimal_comma PRIVATE GTest::gtest)

# The locale is made in the build folder; what it is made of has to be there (Debian: package locales). Sanitizers
# would find nothing in these runs that they do not find without the locale.
set(commaLocale de_DE.UTF-8)
set(commaFolder ${CMAKE_CURRENT_BINARY_DIR}/locales)
set(commaIsTested OFF)
find_program(TAVELL_LOCALEDEF localedef)
if(TAVELL_LOCALEDEF AND EXISTS /usr/share/i18n/locales/de_DE AND NOT TAVELL_SANITIZE)
    set(commaIsTested ON)
    file(MAKE_DIRECTORY ${commaFolder})
    add_test(NAME decimal_comma.locale
             COMMAND ${TAVELL_LOCALEDEF} --no-archive -f UTF-8 -i de_DE ${commaFolder}/${commaLocale})
    set_tests_properties(decimal_comma.locale PROPERTIES LABELS locale FIXTURES_SETUP decimal_comma)
endif()

# Runs a test program so.
function(tavell_add_comma_test program)
    if(NOT commaIsTested)
        return()
    endif()
    set(variables LOCPATH=${commaFolder} LC_ALL=${commaLocale} TAVELL_TEST_LOCALE=${commaLocale})
    add_test(NAME decimal_comma.${program} COMMAND ${program} --gtest_brief=1)
    set_tests_properties(decimal_comma.${program} PROPERTIES LABELS locale FIXTURES_REQUIRED decimal_comma
                         TIMEOUT 1200 ENVIRONMENT "${variables}")
endfunction()
