# The desktop program. The forms stand in a library of their own, so that tests can drive them.
find_package(wxWidgets 3.2 REQUIRED COMPONENTS core base)

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS src/app/slyver.svg)
file(READ src/app/slyver.svg SLYVER_SVG)
configure_file(src/app/AppIcon.cpp.in AppIcon.cpp @ONLY)

add_library(slyver_forms STATIC
  ${CMAKE_CURRENT_BINARY_DIR}/AppIcon.cpp
  src/app/CommandLine_${platform}.cpp
  src/app/CpuStats_${platform}.cpp
  src/app/Desktop.cpp
  src/app/HelpPage_${platform}.cpp
  src/app/Instance_${platform}.cpp
  src/app/Controls.cpp
  src/app/MessageBox_${platform}.cpp
  src/app/ModernForm.cpp
  src/app/ProgressView.cpp
  src/app/StatusLine.cpp
  src/app/WxUi.cpp
  src/app/frmFirst.cpp
  src/app/frmInit.cpp
  src/app/frmMainMenu.cpp
  src/app/frmSplitJoin.cpp
  src/app/FileDrop.cpp
  src/chrome/MenuFrame.cpp
  src/chrome/ResizeEdge.cpp
  src/chrome/TitleBar.cpp
  src/chrome/WinXPApe.cpp
  src/chrome/WindowSystem_${platform}.cpp
  src/chrome/modWinXP.cpp
  src/hidden/ListViewIcon.cpp
  src/hidden/ListViewIcon_${platform}.cpp
  src/hidden/frmHideFile.cpp
  src/hidden/frmHideRec.cpp
  src/hidden/frmShowList.cpp
  src/split/frmJoin.cpp
  src/split/frmSplitter.cpp
  src/system/InputBoxM.cpp)
target_include_directories(slyver_forms SYSTEM PUBLIC ${wxWidgets_INCLUDE_DIRS})
target_compile_definitions(slyver_forms PUBLIC ${wxWidgets_DEFINITIONS})
target_compile_options(slyver_forms PUBLIC ${wxWidgets_CXX_FLAGS})
target_link_libraries(slyver_forms PUBLIC slyver_engine ${wxWidgets_LIBRARIES})
if(WIN32)
  target_link_libraries(slyver_forms PUBLIC comctl32 uxtheme)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(GTK REQUIRED IMPORTED_TARGET gtk+-3.0)
  target_link_libraries(slyver_forms PRIVATE PkgConfig::GTK)
endif()

# add_desktop_program(TARGET DESCRIPTION SOURCE...)
function(add_desktop_program target description)
  add_executable(${target} ${ARGN})
  target_link_libraries(${target} PRIVATE slyver_forms)
  if(WIN32)
    # The toolkit's own resources, but for its manifest.
    add_program_resources(${target} ${description}
                          "#define wxUSE_NO_MANIFEST 1\n#include <wx/msw/wx.rc>")
  endif()
endfunction()

add_desktop_program(slyver "Slyver" src/app/main.cpp)
set_target_properties(slyver PROPERTIES WIN32_EXECUTABLE ON)

# The help lies beside the program.
file(GLOB help CONFIGURE_DEPENDS docs/help/*)
add_custom_target(slyver_help ALL
  COMMAND ${CMAKE_COMMAND} -E rm -rf $<TARGET_FILE_DIR:slyver>/help
  COMMAND ${CMAKE_COMMAND} -E copy_directory ${CMAKE_CURRENT_SOURCE_DIR}/docs/help
          $<TARGET_FILE_DIR:slyver>/help
  DEPENDS ${help})
