# Where installed files go, and the files that are made for that alone.
include(GNUInstallDirs)

# install_man_page(NAME) makes the page NAME.1 of docs/man, where its compiler is installed.
find_program(SCDOC scdoc)
function(install_man_page name)
  if(NOT SCDOC)
    message(STATUS "No man page ${name}: scdoc is not installed")
    return()
  endif()
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${name}.1.scd)
  set(page ${CMAKE_CURRENT_BINARY_DIR}/${name}.1)
  configure_file(${PROJECT_SOURCE_DIR}/docs/man/${name}.1.scd.in ${source} @ONLY)
  add_custom_command(OUTPUT ${page} COMMAND ${SCDOC} < ${source} > ${page} DEPENDS ${source} VERBATIM)
  add_custom_target(${name}_man ALL DEPENDS ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endfunction()

# install_icon(DRAWING NAME) installs an icon of the theme, NAME with its group: the drawing itself
# and, where there is a program that renders it, pictures for those who read no drawings.
find_program(RSVG_CONVERT rsvg-convert)
function(install_icon drawing name)
  get_filename_component(group ${name} DIRECTORY)
  get_filename_component(file ${name} NAME)
  set(theme ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
  install(FILES ${drawing} RENAME ${file}.svg DESTINATION ${theme}/scalable/${group})
  if(NOT RSVG_CONVERT)
    message(STATUS "No pictures of the icon ${file}: rsvg-convert is not installed")
    return()
  endif()
  set(pictures)
  foreach(size 16 22 24 32 48 64 128 256)
    set(picture ${CMAKE_CURRENT_BINARY_DIR}/icons/${file}-${size}.png)
    add_custom_command(OUTPUT ${picture}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/icons
      COMMAND ${RSVG_CONVERT} --width ${size} --height ${size} --output ${picture} ${drawing}
      DEPENDS ${drawing} VERBATIM)
    install(FILES ${picture} RENAME ${file}.png DESTINATION ${theme}/${size}x${size}/${group})
    list(APPEND pictures ${picture})
  endforeach()
  add_custom_target(${file}_icon ALL DEPENDS ${pictures})
endfunction()
