# What ships is compiled with debug information, and without any path of the machine that built it: for the folders whose code
# goes into it.
set(TAVIRA_SHIP_OPTIONS "")
if(WIN32)
  set(TAVIRA_SHIP_OPTIONS -g -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
endif()

# tavira_ship(TARGET): links a Windows program or DLL as it ships: nothing but the system's libraries imported, hardened, the
# same bytes from the same sources. Its debug information goes to a file beside it, NAME.debug, where debuggers look. So
# what lies in bin/, and is tested there, is what ships.
function(tavira_ship target)
  target_link_options(${target} PRIVATE -static -Wl,--no-insert-timestamp
    -Wl,--dynamicbase,--nxcompat,--high-entropy-va)
  set(file $<TARGET_FILE:${target}>)
  # Without this objcopy writes the time of the day into the file.
  set(objcopy ${CMAKE_OBJCOPY} --preserve-dates)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${objcopy} --only-keep-debug ${file} ${file}.debug
    COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${file}.debug ${file}
    VERBATIM)
endfunction()
