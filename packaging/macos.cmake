# macOS: `cmake --install` puts the application bundle together, CPack makes a disk image of it.
#
# The build folder holds the bare program with its icons/ and lang/ beside it, as on other systems.
# In the bundle these folders are links into Resources: a signature takes whatever lies in the
# executable's folder itself for code.

set(VEXA_BUNDLE_ID com.halvorin.VEXACharger CACHE STRING "Identifier of the application bundle")
set(VEXA_SIGNING_IDENTITY "" CACHE STRING
    "Developer ID to sign the bundle with, ready for notarising; empty leaves it unsigned")
get_target_property(qmake Qt5::qmake IMPORTED_LOCATION)
get_filename_component(qt_programs ${qmake} DIRECTORY)
find_program(VEXA_MACDEPLOYQT macdeployqt HINTS ${qt_programs} REQUIRED)

# The languages to list in Info.plist: English, which the code is written in, and the translations.
set(languages "<string>en</string>")
file(GLOB translations CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/resources/lang/vexaload_*.ts)
foreach(translation IN LISTS translations)
  if(translation MATCHES "vexaload_([A-Za-z_]+)\\.ts$" AND NOT CMAKE_MATCH_1 STREQUAL "en")
    string(APPEND languages "\n    <string>${CMAKE_MATCH_1}</string>")
  endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/packaging/Info.plist.in ${PROJECT_BINARY_DIR}/Info.plist @ONLY)

set(bundle VEXACharger.app)
set(contents ${bundle}/Contents)
install(TARGETS VEXACharger RUNTIME DESTINATION ${contents}/MacOS)
install(FILES ${PROJECT_BINARY_DIR}/Info.plist DESTINATION ${contents})
install(FILES ${PROJECT_SOURCE_DIR}/resources/icons/HalvorinApp.icns
        DESTINATION ${contents}/Resources OPTIONAL)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/icons DESTINATION ${contents}/Resources OPTIONAL
        FILES_MATCHING PATTERN "*.icns" PATTERN "*.png")
install(DIRECTORY $<TARGET_FILE_DIR:VEXACharger>/lang DESTINATION ${contents}/Resources OPTIONAL
        FILES_MATCHING PATTERN "*.qm")
# The command line's platform plugin; macdeployqt brings the window's only.
install(FILES $<TARGET_FILE:Qt5::QMinimalIntegrationPlugin>
        DESTINATION ${contents}/PlugIns/platforms)

set(deployment "\"${VEXA_MACDEPLOYQT}\" \"\${bundle}\" -always-overwrite")
if(VEXA_SIGNING_IDENTITY)
  string(APPEND deployment " \"-sign-for-notarization=${VEXA_SIGNING_IDENTITY}\"")
endif()
install(CODE "
  set(bundle \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${bundle}\")
  foreach(folder icons lang)
    file(MAKE_DIRECTORY \"\${bundle}/Contents/Resources/\${folder}\")
    file(CREATE_LINK ../Resources/\${folder} \"\${bundle}/Contents/MacOS/\${folder}\" SYMBOLIC)
  endforeach()
  execute_process(COMMAND ${deployment} COMMAND_ERROR_IS_FATAL ANY)
")

set(CPACK_GENERATOR DragNDrop)
set(CPACK_PACKAGE_VENDOR "VEXACharger maintainers")
set(CPACK_PACKAGE_FILE_NAME VEXACharger-${PROJECT_VERSION}-macos-x86_64)
set(CPACK_DMG_VOLUME_NAME "VEXACharger ${PROJECT_VERSION}")
include(CPack)
