# tavira_export_only(LIBRARY DEF_FILE): a shared library for Linux exports the names of a Windows .def file, and no other.
function(tavira_export_only library def_file)
  file(STRINGS ${def_file} names REGEX "^ +[A-Za-z_]+$")
  list(TRANSFORM names STRIP)
  list(JOIN names ";\n    " names)
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${library}.map)
  file(CONFIGURE OUTPUT ${script} CONTENT "{\n  global:\n    @names@;\n  local:\n    *;\n};\n" @ONLY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${def_file})
  set_target_properties(${library} PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
    LINK_DEPENDS ${script})
  target_link_options(${library} PRIVATE LINKER:--version-script=${script})
endfunction()
