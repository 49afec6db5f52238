# Lets CMake believe that it builds for macOS. What comes out runs nowhere; how it is built and laid
# out is what the test looks at.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER ${CMAKE_CURRENT_LIST_DIR}/c++)
set(CMAKE_INSTALL_NAME_TOOL ${CMAKE_CURRENT_LIST_DIR}/install_name_tool)
set(VEXA_MACDEPLOYQT ${CMAKE_CURRENT_LIST_DIR}/macdeployqt)
