# SPDX-License-Identifier: GPL-3.0-or-later
# Functions that define the project's targets, one library per folder, and the options with which all of them are compiled.

# All presets but dev join the .cpp files of a target for the compiler (CMAKE_UNITY_BUILD), because two thirds of its work
# are headers. Therefore no two files of a folder may give the same name to something private. A missing include shows only
# in builds that join nothing: dev, and the Debian packages, which ./test --all builds.
# At most 18 files are joined, so that no joined file takes long to compile.
set(CMAKE_UNITY_BUILD_BATCH_SIZE 18)

# vexa_join(TARGET SOURCE...): makes the joined files of a target about equally large.
function(vexa_join target)
    list(LENGTH ARGN count)
    if(count LESS_EQUAL CMAKE_UNITY_BUILD_BATCH_SIZE)
        return()
    endif()
    math(EXPR parts "(${count} - 1) / ${CMAKE_UNITY_BUILD_BATCH_SIZE} + 1")
    math(EXPR size "(${count} - 1) / ${parts} + 1")
    set_target_properties(${target} PROPERTIES UNITY_BUILD_BATCH_SIZE ${size})
endfunction()

# vexa_read_once(TARGET FIRST [HEADER...]): uses precompiled headers. The target FIRST precompiles the given headers, and
# all other targets that name FIRST reuse them, which saves half of the work for a short file. All of these targets must
# have the same options that affect headers: optimization, -fPIC, sanitizer.
#
# Precompiled headers hide missing includes, so they are used only where joined files hide them anyway; and not under a
# launcher such as ccache, which by default does not cache files that are compiled with them.
function(vexa_read_once target first)
    if(NOT CMAKE_UNITY_BUILD OR CMAKE_CXX_COMPILER_LAUNCHER)
        return()
    endif()
    if(target STREQUAL first)
        target_precompile_headers(${target} PRIVATE ${ARGN})
    else()
        target_precompile_headers(${target} REUSE_FROM ${first})
    endif()
endfunction()

add_library(vexa_options INTERFACE)
target_compile_options(vexa_options INTERFACE
    -Wall -Wextra -Wpedantic $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local> -Wfloat-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    # Some libraries require it. All targets get it, because it affects precompiled headers (vexa_read_once).
    -pthread
    # A render is the same on every machine, so the compiler must not fuse multiplications and additions by itself.
    -ffp-contract=off
    # Joined files make the compiler's heap so large that collecting its garbage would take a tenth of the time. Below this
    # size, in kB, nothing is collected; the largest compiler process then takes 1.1 GB instead of 0.9.
    $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=1000000>
    # The linker leaves out functions of joined files that a program does not call, and libraries that only these need.
    -ffunction-sections -fdata-sections)
target_link_options(vexa_options INTERFACE -Wl,--gc-sections,--as-needed)
if(VEXA_WERROR)
    target_compile_options(vexa_options INTERFACE -Werror)
endif()
if(VEXA_SANITIZE)
    target_compile_options(vexa_options INTERFACE
        -fsanitize=${VEXA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vexa_options INTERFACE -fsanitize=${VEXA_SANITIZE})
endif()
if(VEXA_FUZZ)
    target_compile_options(vexa_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
target_include_directories(vexa_options INTERFACE ${CMAKE_SOURCE_DIR}/src)

# vexa_fast(TARGET): compiles the target with -O3 in a release build.
function(vexa_fast target)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O3>)
endfunction()

# The instruction sets of vexa_loops, with the compiler options of each. With VEXA_ONE_SET there is only Baseline, which is
# then compiled for this machine.
set(loops_of_Baseline)
set(loops_of_Avx2 -mavx2 -mfma)
set(loops_of_Avx512 ${loops_of_Avx2} -mavx512f -mavx512dq -mavx512vl -mavx512bw -mprefer-vector-width=512)
set(loops_sets Baseline)
if(VEXA_ONE_SET)
    set(loops_of_Baseline -march=native)
elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    list(APPEND loops_sets Avx2 Avx512)
    target_compile_definitions(vexa_options INTERFACE VEXA_SEVERAL_SETS)
endif()

# vexa_library(NAME [FAST] [ONLY FILE...] [FOLDERS FOLDER...] [DEPENDS LIBRARY...] [BACKENDS PKG...] [APART FILE...])
#
# Defines a static library from the .cpp files of the current folder, except main.cpp, and of its subfolders backends and
# FOLDERS. With ONLY it consists of these files alone, and a later library of the same folder omits them.
# FAST applies vexa_fast. DEPENDS are libraries of this project; BACKENDS are pkg-config modules whose headers only this
# library's .cpp files may include. Files in APART are never joined with others.
function(vexa_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "FAST" "" "ONLY;FOLDERS;DEPENDS;BACKENDS;APART")
    if(arg_ONLY)
        list(TRANSFORM arg_ONLY PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ OUTPUT_VARIABLE sources)
        set(others_of_folder ${others_of_folder} ${sources} PARENT_SCOPE)
    else()
        list(TRANSFORM arg_FOLDERS APPEND "/*.cpp")
        file(GLOB sources CONFIGURE_DEPENDS *.cpp backends/*.cpp ${arg_FOLDERS})
        list(REMOVE_ITEM sources ${CMAKE_CURRENT_SOURCE_DIR}/main.cpp ${others_of_folder})
    endif()
    add_library(${name} STATIC ${sources})
    vexa_join(${name} ${sources})
    set_source_files_properties(${arg_APART} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    # Functions in a precompiled header keep the optimization with which it was compiled, so fast targets need their own.
    set(first kits_support)
    if(arg_FAST)
        vexa_fast(${name})
        if(CMAKE_BUILD_TYPE STREQUAL Release)
            set(first synth)
        endif()
    endif()
    vexa_read_once(${name} ${first} <algorithm> <array> <atomic> <chrono> <cmath> <cstdio> <cstdlib> <cstring>
        <filesystem> <functional> <map> <memory> <mutex> <optional> <span> <string> <string_view> <thread> <utility> <vector>)
    target_link_libraries(${name} PUBLIC vexa_options ${arg_DEPENDS})
    foreach(module IN LISTS arg_BACKENDS)
        pkg_check_modules(${module} REQUIRED IMPORTED_TARGET ${module})
        target_link_libraries(${name} PRIVATE PkgConfig::${module})
    endforeach()
endfunction()

# vexa_loops(LIBRARY NAME): compiles loops/NAME.cpp of the current folder into the library, once per instruction set of
# synth/InstructionSet.h. The file must define the object VEXA_LOOPS_TABLE, a macro for k<set><NAME>, and may use the
# macros VEXA_LOOPS_SET, the name of the set, and VEXA_LOOPS_NAME, the same as a string.
function(vexa_loops library name)
    foreach(set IN LISTS loops_sets)
        set(target ${library}_${name}_${set})
        add_library(${target} OBJECT loops/${name}.cpp)
        target_link_libraries(${target} PRIVATE vexa_options)
        vexa_fast(${target})
        target_compile_definitions(${target} PRIVATE VEXA_LOOPS_TABLE=k${set}${name} VEXA_LOOPS_NAME="${set}"
            VEXA_LOOPS_SET=${set})
        # The first two options give up errno and the floating-point exception flags, which nobody reads. -Wno-psabi
        # silences a note about a change in how vectors are passed, because all callers come from the same compiler.
        target_compile_options(${target} PRIVATE -fno-math-errno -fno-trapping-math -Wno-psabi ${loops_of_${set}})
        target_sources(${library} PRIVATE $<TARGET_OBJECTS:${target}>)
    endforeach()
endfunction()

# vexa_program(NAME DEPENDS LIBRARY...): builds main.cpp of the current folder as a program in the program folder.
function(vexa_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "DEPENDS")
    add_executable(${name} main.cpp)
    target_link_libraries(${name} PRIVATE ${arg_DEPENDS})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${VEXA_PROGRAM_FOLDER})
endfunction()
