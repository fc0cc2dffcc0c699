# The same target as mingw-w64.cmake with clang and lld: GCC's headers, run-time library and mingw-w64 are shared.
set(TAVIRA_GCC x86_64-w64-mingw32-g++-posix)
execute_process(COMMAND ${TAVIRA_GCC} -print-libgcc-file-name OUTPUT_VARIABLE tavira_gcc_folder
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET tavira_gcc_folder PARENT_PATH tavira_gcc_folder)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
# LLVM's own does not keep debug information of Windows programs apart.
find_program(CMAKE_OBJCOPY x86_64-w64-mingw32-objcopy REQUIRED)
set(headers ${tavira_gcc_folder}/include/c++)
# The C++ run-time library keeps its thread-local variables in GCC's emulation.
set(CMAKE_CXX_FLAGS_INIT
  "-femulated-tls -nostdinc++ -isystem ${headers} -isystem ${headers}/x86_64-w64-mingw32 -isystem ${headers}/backward")
# The thread library has symbols that the C++ run-time library has, too.
set(linking "-Wno-unused-command-line-argument -fuse-ld=lld -B${tavira_gcc_folder} -L${tavira_gcc_folder} -pthread -Wl,--allow-multiple-definition")
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " ${linking}")
string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " ${linking}")
