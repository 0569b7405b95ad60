# What `cmake --install` puts in place: the product, stripped, its debug symbols beside it, the public headers, and what a
# build system asks for. Nothing of it holds the place where it lies, so the folder may be moved.
include(CMakePackageConfigHelpers)

install(TARGETS toolbelt EXPORT toolbelt-targets RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(TARGETS toolbelt_exe RUNTIME DESTINATION bin)
install(CODE "set(root [[${PROJECT_SOURCE_DIR}]])\nset(objcopy [[${CMAKE_OBJCOPY}]])\nset(strip [[${CMAKE_STRIP}]])")
install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/package/strip.cmake")
install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/package/headers.cmake")
install(FILES "${CMAKE_BINARY_DIR}/bin/toolbelt.def" DESTINATION lib)

set(config_folder lib/cmake/toolbelt)
configure_package_config_file(cmake/package/toolbelt-config.cmake.in "${CMAKE_BINARY_DIR}/package/toolbelt-config.cmake"
                              INSTALL_DESTINATION ${config_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/package/toolbelt-config-version.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/package/toolbelt-config.cmake" "${CMAKE_BINARY_DIR}/package/toolbelt-config-version.cmake"
        DESTINATION ${config_folder})
install(EXPORT toolbelt-targets NAMESPACE toolbelt:: DESTINATION ${config_folder})
configure_file(cmake/package/toolbelt.pc.in "${CMAKE_BINARY_DIR}/package/toolbelt.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/package/toolbelt.pc" DESTINATION lib/pkgconfig)

install(DIRECTORY LICENSES/ DESTINATION share/doc/toolbelt/licenses)
install(FILES README.md CHANGELOG.md DESTINATION share/doc/toolbelt)
install(DIRECTORY examples docs DESTINATION share/doc/toolbelt PATTERN Doxyfile EXCLUDE)
