# What a program for Windows carries besides its code: version, icon and manifest.
enable_language(RC)

# add_program_resources(TARGET DESCRIPTION [LINE]): LINE goes into the resources as it is.
function(add_program_resources target description)
  set(extra "${ARGN}")
  configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/program.rc.in ${target}.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
endfunction()
