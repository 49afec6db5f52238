# The package for Debian, made by CPack. The preset "package" builds it: `scripts/package`.

# One time for everything in it: that of the commit, so that two builds give the same package.
set(package_time "$ENV{SOURCE_DATE_EPOCH}")
if(package_time STREQUAL "")
  find_package(Git QUIET)
  execute_process(COMMAND ${GIT_EXECUTABLE} log -1 --format=%ct
                  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE package_time
                  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT package_time MATCHES "^[0-9]+$") # an archive of the sources
  file(TIMESTAMP ${PROJECT_SOURCE_DIR}/CHANGELOG.md package_time "%s" UTC)
endif()

set(maintainer "VEXACharger maintainers <maintainers@halvorin.com>")
set(debian ${here}/debian)

execute_process(COMMAND ${debian}/changelog ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${maintainer}
                OUTPUT_FILE ${generated}/changelog COMMAND_ERROR_IS_FATAL ANY)
compress(${generated}/changelog)
install(FILES ${generated}/changelog.gz ${debian}/copyright DESTINATION share/doc/vexacharger)
configure_file(${debian}/postinst.in ${generated}/postinst @ONLY
               FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                WORLD_READ WORLD_EXECUTE)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vexacharger)
set(CPACK_PACKAGE_CONTACT ${maintainer})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "load a database into a handheld terminal")
file(READ ${debian}/description description)
string(STRIP "${description}" CPACK_DEBIAN_PACKAGE_DESCRIPTION)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${debian}/description)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
# The libraries are looked up; these are not linked: the driver of the database, the picture format
# of the window's icon, the font that the window is laid out for.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "libqt5sql5-sqlite, qt5-image-formats-plugins, fonts-liberation | fonts-liberation2")
# Readers, and the toolkit's own texts in the user's language.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pcscd, qttranslations5-l10n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${generated}/postinst ${debian}/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Times are those of the commit, and folders open to all, whoever builds the package.
file(WRITE ${generated}/cpack.cmake "set(ENV{SOURCE_DATE_EPOCH} ${package_time})\n")
set(CPACK_PROJECT_CONFIG_FILE ${generated}/cpack.cmake)
file(WRITE ${generated}/settle.cmake "
execute_process(COMMAND find \${CPACK_TEMPORARY_DIRECTORY} -type d -exec chmod 755 {} +
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND find \${CPACK_TEMPORARY_DIRECTORY} -exec touch -h -d @${package_time} {} +
                COMMAND_ERROR_IS_FATAL ANY)
")
set(CPACK_PRE_BUILD_SCRIPTS ${generated}/settle.cmake)
include(CPack)
