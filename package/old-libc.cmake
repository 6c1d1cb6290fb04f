# The host's compiler on the tree of an older Debian for 32-bit x86, which
# script/release lays out. The tree's own C++ runtime goes with its C library:
# the host's one asks for functions that the older C library doesn't have.
get_filename_component(tree ${CMAKE_CURRENT_LIST_DIR}/../build/trees/sysroot ABSOLUTE)
set(runtime ${tree}/usr/lib/gcc/i686-linux-gnu/10)
set(headers ${tree}/usr/include/c++/10)
set(target_headers ${tree}/usr/include/i386-linux-gnu/c++/10)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_SYSROOT ${tree})

# -march holds back what a compiler for 64-bit x86 takes for granted. The last
# options: the older headers look wrong to a newer compiler.
set(CMAKE_C_FLAGS_INIT "-m32 -march=i686 -mtune=generic")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT} -nostdinc++")
string(APPEND CMAKE_CXX_FLAGS_INIT " -isystem \"${headers}\" -isystem \"${target_headers}\"")
string(APPEND CMAKE_CXX_FLAGS_INIT " -Wno-maybe-uninitialized -Wno-uninitialized")
# A compiler for two widths looks into the host's 32-bit directories before the
# system root's: -B puts the tree's start files first, -L its libraries.
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "-s \"-B${tree}/usr/lib/\" \"-L${runtime}\" \"-L${tree}/usr/lib/i386-linux-gnu\"")
set(CMAKE_SHARED_LINKER_FLAGS_INIT ${CMAKE_EXE_LINKER_FLAGS_INIT})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
