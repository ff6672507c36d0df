# EmbedReport.cmake: the pieces of the report's page as a C++ source, made when the kit is built.
#
# tavell_embed_report(target) adds the source to a target: with TAVELL_REPORT the page, made with npm and esbuild from
# kit/report; without it an empty one. Run as a script it writes the source from the built pieces:
#   cmake -DPAGE=page.html -DSTYLE=report.css -DSCRIPT=report.js -DOUTPUT=report_assets.cpp -P EmbedReport.cmake

if(CMAKE_SCRIPT_MODE_FILE)
    # The bytes of a file as the initialiser of an array, in lines of 40.
    function(bytes_of path result)
        file(READ "${path}" hex HEX)
        string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
        string(REPEAT "0x..," 40 line)
        string(REGEX REPLACE "(${line})" "\\1\n" bytes "${bytes}")
        set(${result} "${bytes}" PARENT_SCOPE)
    endfunction()

    set(source "// Made by EmbedReport.cmake from kit/report.\n#include \"report_page.h\"\n\nnamespace kit\n{\n\nnamespace\n{\n")
    foreach(piece PAGE STYLE SCRIPT)
        bytes_of("${${piece}}" bytes)
        string(APPEND source "\nconstexpr unsigned char k${piece}[] = {\n${bytes}\n};\n")
    endforeach()
    string(APPEND source "
template <std::size_t count> std::string_view textOf(const unsigned char (&bytes)[count])
{
    return {reinterpret_cast<const char*>(bytes), count};
}

}  // namespace

ReportPieces reportPieces()
{
    return {textOf(kPAGE), textOf(kSTYLE), textOf(kSCRIPT)};
}

}  // namespace kit
")
    file(WRITE "${OUTPUT}.new" "${source}")
    file(RENAME "${OUTPUT}.new" "${OUTPUT}")
    return()
endif()

find_program(TAVELL_NPM npm)
find_program(TAVELL_NODE NAMES node nodejs)
set(default ON)
if(NOT TAVELL_NPM OR NOT TAVELL_NODE)
    set(default OFF)
endif()
option(TAVELL_REPORT "Build the HTML report into the kit; needs npm" ${default})

set(TAVELL_EMBED_SCRIPT "${CMAKE_CURRENT_LIST_FILE}")
get_filename_component(TAVELL_REPORT_SOURCE "${CMAKE_CURRENT_LIST_DIR}/../report" ABSOLUTE)

# Adds reportPieces() to each of the targets; the page is built once.
function(tavell_embed_report)
    set(none "${TAVELL_REPORT_SOURCE}/../src/report_assets_none.cpp")
    if(NOT TAVELL_REPORT)
        foreach(target IN LISTS ARGN)
            target_sources(${target} PRIVATE "${none}")
        endforeach()
        return()
    endif()
    if(NOT TAVELL_NPM OR NOT TAVELL_NODE)
        message(FATAL_ERROR "TAVELL_REPORT needs npm and node; install them or set TAVELL_REPORT=OFF")
    endif()

    set(work "${CMAKE_CURRENT_BINARY_DIR}/report")
    set(output "${CMAKE_CURRENT_BINARY_DIR}/report_assets.cpp")
    file(GLOB scripts CONFIGURE_DEPENDS "${TAVELL_REPORT_SOURCE}/src/*.js")
    set(packages "${TAVELL_REPORT_SOURCE}/package.json" "${TAVELL_REPORT_SOURCE}/package-lock.json")
    set(sources ${scripts} "${TAVELL_REPORT_SOURCE}/style.css" "${TAVELL_REPORT_SOURCE}/build.mjs")

    # Packages go into the build folder; the source tree stays as it is.
    add_custom_command(
        OUTPUT "${work}/packages.stamp"
        COMMAND ${CMAKE_COMMAND} -E make_directory "${work}"
        COMMAND ${CMAKE_COMMAND} -E copy ${packages} "${work}"
        COMMAND ${CMAKE_COMMAND} -E chdir "${work}" "${TAVELL_NPM}" ci --ignore-scripts --no-audit --no-fund
                --loglevel=error
        COMMAND ${CMAKE_COMMAND} -E touch "${work}/packages.stamp"
        DEPENDS ${packages}
        COMMENT "Fetching the packages of the report"
        VERBATIM)
    add_custom_command(
        OUTPUT "${work}/dist/report.js" "${work}/dist/report.css"
        COMMAND ${CMAKE_COMMAND} -E rm -rf "${work}/src"
        COMMAND ${CMAKE_COMMAND} -E copy_directory "${TAVELL_REPORT_SOURCE}/src" "${work}/src"
        COMMAND ${CMAKE_COMMAND} -E copy "${TAVELL_REPORT_SOURCE}/style.css" "${TAVELL_REPORT_SOURCE}/build.mjs" "${work}"
        COMMAND "${TAVELL_NODE}" "${work}/build.mjs" "${work}/dist"
        DEPENDS ${sources} "${work}/packages.stamp"
        COMMENT "Bundling the report"
        VERBATIM)
    add_custom_command(
        OUTPUT "${output}"
        COMMAND ${CMAKE_COMMAND} "-DPAGE=${TAVELL_REPORT_SOURCE}/page.html" "-DSTYLE=${work}/dist/report.css"
                "-DSCRIPT=${work}/dist/report.js" "-DOUTPUT=${output}" -P "${TAVELL_EMBED_SCRIPT}"
        DEPENDS "${TAVELL_REPORT_SOURCE}/page.html" "${work}/dist/report.css" "${work}/dist/report.js"
                "${TAVELL_EMBED_SCRIPT}"
        COMMENT "Putting the report into a source"
        VERBATIM)
    # One target makes the source, so that several libraries can share it in a parallel build.
    add_custom_target(tavell_report_page DEPENDS "${output}")
    foreach(target IN LISTS ARGN)
        target_sources(${target} PRIVATE "${output}")
        add_dependencies(${target} tavell_report_page)
    endforeach()
endfunction()
