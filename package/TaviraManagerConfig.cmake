# find_package(TaviraManager) defines the target Tavira::Manager: the header's folder, the import library, and where the DLL
# is ($<TARGET_FILE:Tavira::Manager>, to copy it beside the program). For 64-bit Windows, any compiler.
if(NOT WIN32)
  set(TaviraManager_FOUND FALSE)
  set(TaviraManager_NOT_FOUND_MESSAGE "TaviraManager is a library for Windows; this build is for ${CMAKE_SYSTEM_NAME}.")
  return()
endif()
if(NOT TARGET Tavira::Manager)
  get_filename_component(_tavira_folder "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
  # GNU's linker takes its own kind of import library; link.exe and lld take Microsoft's.
  set(_tavira_import TaviraManager.lib)
  if(CMAKE_C_COMPILER_ID STREQUAL "GNU" OR CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set(_tavira_import libTaviraManager.dll.a)
  endif()
  add_library(Tavira::Manager SHARED IMPORTED)
  set_target_properties(Tavira::Manager PROPERTIES
    IMPORTED_LOCATION "${_tavira_folder}/bin/TaviraManager.dll"
    IMPORTED_IMPLIB "${_tavira_folder}/lib/${_tavira_import}"
    INTERFACE_INCLUDE_DIRECTORIES "${_tavira_folder}/include")
  unset(_tavira_folder)
  unset(_tavira_import)
endif()
