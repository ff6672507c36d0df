# cmake --install: libraries, headers, the schema, documents, the CMake package and the pkg-config files.
include(CMakePackageConfigHelpers)

install(TARGETS tavell tavell_static EXPORT tavellTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tavell DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
        FILES_MATCHING PATTERN "*.json" PATTERN "*.inp" PATTERN "*.c" PATTERN "*.cpp")

set(pcNames tavell tavell-static)
if(TARGET tavellkit)
    install(TARGETS tavellkit tavellkit_static EXPORT tavellTargets
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
            INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(FILES ${PROJECT_SOURCE_DIR}/kit/include/tavellkit.h ${PROJECT_SOURCE_DIR}/kit/include/tavell.hpp
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/kit/schema/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tavell/schema)
    list(APPEND pcNames tavellkit tavellkit-static)
endif()

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/tavell)
install(EXPORT tavellTargets NAMESPACE tavell:: DESTINATION ${packageFolder})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/tavellConfig.cmake.in tavellConfig.cmake
                              INSTALL_DESTINATION ${packageFolder})
write_basic_package_version_file(tavellConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tavellConfig.cmake ${PROJECT_BINARY_DIR}/tavellConfigVersion.cmake
        DESTINATION ${packageFolder})

# The pkg-config files find the prefix from where they are, so that an install tree can be moved.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(pcPrefix ${CMAKE_INSTALL_PREFIX})
    set(pcLibdir ${CMAKE_INSTALL_FULL_LIBDIR})
    set(pcIncludedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
else()
    file(RELATIVE_PATH upToPrefix "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
    string(REGEX REPLACE "/$" "" upToPrefix "${upToPrefix}")
    set(pcPrefix "\${pcfiledir}/${upToPrefix}")
    set(pcLibdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
    set(pcIncludedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
get_target_property(pcStaticName tavell_static OUTPUT_NAME)
if(TARGET tavellkit)
    get_target_property(pcKitStaticName tavellkit_static OUTPUT_NAME)
endif()
set(pcKitRequires "tavell-static")
if(TAVELL_RSVG_FOUND)
    string(APPEND pcKitRequires " librsvg-2.0 cairo")
endif()
foreach(name IN LISTS pcNames)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
