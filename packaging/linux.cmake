# Linux: what `cmake --install` lays out, below any prefix.
#
# The program lies in a folder of its own, with icons/ and lang/ beside it; bin/ holds a link to it.
# Each file that says something about the program gets its version here.

set(app_id com.halvorin.VEXACharger)
set(program_folder lib/vexacharger)
set(generated ${PROJECT_BINARY_DIR}/packaging)
set(here ${CMAKE_CURRENT_LIST_DIR})
find_program(VEXA_GZIP gzip REQUIRED)

# The day of the release stands in the change log only, which must not be forgotten.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md heading REGEX "^## ${PROJECT_VERSION} - ")
if(NOT heading MATCHES " - ([0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9])$")
  message(FATAL_ERROR "CHANGELOG.md has no heading \"## ${PROJECT_VERSION} - YEAR-MONTH-DAY\"")
endif()
set(release_date ${CMAKE_MATCH_1})
string(TOUPPER ${VEXA_VENDOR_ID} VEXA_VENDOR_ID_UPPERCASE)

# Compresses a file as Debian wants it: as small as can be, and without a time in it.
function(compress file)
  execute_process(COMMAND ${VEXA_GZIP} -9nc ${file} OUTPUT_FILE ${file}.gz
                  COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(file 70-vexacharger.rules VEXACharger.1 ${app_id}.metainfo.xml)
  configure_file(${here}/${file}.in ${generated}/${file} @ONLY)
endforeach()
compress(${generated}/VEXACharger.1)

install(TARGETS VEXACharger RUNTIME DESTINATION ${program_folder})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/icons DESTINATION ${program_folder} OPTIONAL
        FILES_MATCHING PATTERN "*.icns" PATTERN "*.png")
install(DIRECTORY $<TARGET_FILE_DIR:VEXACharger>/lang DESTINATION ${program_folder} OPTIONAL
        FILES_MATCHING PATTERN "*.qm")
file(CREATE_LINK ../${program_folder}/VEXACharger ${generated}/VEXACharger SYMBOLIC)
install(FILES ${generated}/VEXACharger DESTINATION bin)

install(FILES ${here}/${app_id}.desktop DESTINATION share/applications)
install(FILES ${generated}/${app_id}.metainfo.xml DESTINATION share/metainfo)
foreach(size 16 22 24 32 48 64 128 256 512)
  install(FILES ${here}/icons/${size}.png DESTINATION share/icons/hicolor/${size}x${size}/apps
          RENAME ${app_id}.png)
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/resources/pictures/application.svg OPTIONAL
        DESTINATION share/icons/hicolor/scalable/apps RENAME ${app_id}.svg)
install(FILES ${generated}/VEXACharger.1.gz DESTINATION share/man/man1)
install(FILES ${here}/completion/bash DESTINATION share/bash-completion/completions
        RENAME VEXACharger)
# Debian keeps the place that zsh is built for to itself.
set(zsh_folder site-functions)
if(EXISTS /etc/debian_version AND CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(zsh_folder vendor-completions)
endif()
install(FILES ${here}/completion/zsh DESTINATION share/zsh/${zsh_folder} RENAME _VEXACharger)
install(FILES ${generated}/70-vexacharger.rules DESTINATION lib/udev/rules.d)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION share/doc/vexacharger)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION share/doc/vexacharger)

include(${here}/debian.cmake)
