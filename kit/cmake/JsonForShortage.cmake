# A copy of the JSON library's header for the kit's own sources. The library's own one asks for memory when it takes an
# array or an object apart, in a destructor, which ends the program when there is none; follows a null pointer in the
# destructor of a value whose memory could not be had; and loses the object that it makes from an initialiser list when
# there is no memory for a member. The copy takes values apart member by member, which is as deep as they are nested:
# documents are at most 100 deep.
#
# The target tavellkit_json stands for the copy; it is the library as it is where the header is another one than the texts
# below are known from. The copy has a namespace of its own, so that it never meets the library's own one in a program
# that links the static kit and uses JSON itself.
add_library(tavellkit_json INTERFACE)
target_link_libraries(tavellkit_json INTERFACE nlohmann_json::nlohmann_json)
find_path(TAVELL_JSON_FOLDER nlohmann/json.hpp)
if(NOT TAVELL_JSON_FOLDER)
    return()
endif()
file(READ ${TAVELL_JSON_FOLDER}/nlohmann/json.hpp jsonText)

set(jsonIsKnown TRUE)
# Replaces a text that is there exactly once.
macro(tavell_replace_in_json before after)
    string(FIND "${jsonText}" "${before}" jsonFirst)
    string(FIND "${jsonText}" "${before}" jsonLast REVERSE)
    if(jsonFirst EQUAL -1 OR NOT jsonFirst EQUAL jsonLast)
        set(jsonIsKnown FALSE)
    endif()
    string(REPLACE "${before}" "${after}" jsonText "${jsonText}")
endmacro()
tavell_replace_in_json([[if (t == value_t::array || t == value_t::object)
            {
                // flatten the current json_value to a heap-allocated stack]] [[if ((t == value_t::array && array == nullptr) || (t == value_t::object && object == nullptr) ||
                (t == value_t::string && string == nullptr) || (t == value_t::binary && binary == nullptr))
            {
                return;
            }
            if (false)
            {
                // flatten the current json_value to a heap-allocated stack]])
tavell_replace_in_json([[        assert_invariant(false);
        m_value.destroy(m_type);]] [[        m_value.destroy(m_type);]])
tavell_replace_in_json([[               value_t manual_type = value_t::array)
    {
        // check if each element is an array]] [[               value_t manual_type = value_t::array)
        : basic_json(nullptr)
    {
        // check if each element is an array]])

if(jsonIsKnown)
    set(jsonFolder ${CMAKE_CURRENT_BINARY_DIR}/json)
    file(CONFIGURE OUTPUT ${jsonFolder}/nlohmann/json.hpp CONTENT "${jsonText}" @ONLY)
    target_include_directories(tavellkit_json SYSTEM BEFORE INTERFACE ${jsonFolder})
    target_compile_definitions(tavellkit_json INTERFACE NLOHMANN_JSON_NAMESPACE_NO_VERSION=1)
else()
    message(STATUS "The kit uses the JSON library as it is: a shortage of memory may end a program that uses the kit")
endif()
