# SPDX-License-Identifier: GPL-3.0-or-later
# How every target of the project is compiled, and the one-library-per-folder rule.

# All presets but dev join the .cpp files of a target for the compiler (CMAKE_UNITY_BUILD): two thirds of the work are
# headers. So no two files of a folder may name something in private alike. What each of them includes is looked over
# where nothing is joined: in dev, and in the Debian packages, which ./test --all builds.
# One and a half dozen at a time, so that none of the joined files takes long by itself.
set(CMAKE_UNITY_BUILD_BATCH_SIZE 18)

# vexa_join(TARGET SOURCE...): joins the sources of a target in parts of the same size.
function(vexa_join target)
    list(LENGTH ARGN count)
    if(count LESS_EQUAL CMAKE_UNITY_BUILD_BATCH_SIZE)
        return()
    endif()
    math(EXPR parts "(${count} - 1) / ${CMAKE_UNITY_BUILD_BATCH_SIZE} + 1")
    math(EXPR size "(${count} - 1) / ${parts} + 1")
    set_target_properties(${target} PROPERTIES UNITY_BUILD_BATCH_SIZE ${size})
endfunction()

# vexa_read_once(TARGET FIRST [HEADER...]): the target FIRST compiles these headers by themselves, and all others that name
# it are spared their parsing, a half of the work for a short file. All of them need the same options as far as a header
# sees them: the optimisation, -fPIC, the sanitizer.
#
# Only where files are joined, as then too it is not seen what each of them includes; and not under a launcher like ccache,
# which as a rule remembers nothing of what is compiled so.
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
    # Some libraries ask for it, so all has it, as the headers (vexa_read_once) see it.
    -pthread
    # A render is the same on every machine: no fused multiply-add behind the formulas' back.
    -ffp-contract=off
    # What a program does not call of joined files is left out of it, and the libraries for it too.
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

# vexa_fast(TARGET): of a release, the target is compiled for speed, however long that takes.
function(vexa_fast target)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O3>)
endfunction()

# The instruction sets of vexa_loops, and what the compiler is told for each. With VEXA_ONE_SET there is one, that of this
# machine, as baseline.
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
# The static library of the current folder, made of its .cpp files but main.cpp, and of those in FOLDERS below it.
# With ONLY it is made of these files, which that of the folder is then without. FAST is vexa_fast.
# DEPENDS are libraries of ours, BACKENDS pkg-config modules that only these .cpp files may include.
# Files in APART are compiled by themselves also where others are joined.
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
    # What stands in a header keeps the optimisation that the header was compiled with, whatever its user asks for.
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

# vexa_loops(LIBRARY NAME): loops/NAME.cpp of the current folder, compiled into the library once per instruction set of
# synth/InstructionSet.h. It defines VEXA_LOOPS_TABLE, which is k<set><NAME>, and may ask for the set: VEXA_LOOPS_SET, or
# VEXA_LOOPS_NAME as a text.
function(vexa_loops library name)
    foreach(set IN LISTS loops_sets)
        set(target ${library}_${name}_${set})
        add_library(${target} OBJECT loops/${name}.cpp)
        target_link_libraries(${target} PRIVATE vexa_options)
        vexa_fast(${target})
        target_compile_definitions(${target} PRIVATE VEXA_LOOPS_TABLE=k${set}${name} VEXA_LOOPS_NAME="${set}"
            VEXA_LOOPS_SET=${set})
        # What is given up is errno and the floating-point exception flags, which nobody reads. How vectors are passed
        # has changed long ago, and no two compilers meet here.
        target_compile_options(${target} PRIVATE -fno-math-errno -fno-trapping-math -Wno-psabi ${loops_of_${set}})
        target_sources(${library} PRIVATE $<TARGET_OBJECTS:${target}>)
    endforeach()
endfunction()

# vexa_program(NAME DEPENDS LIBRARY...): the current folder's main.cpp as a program in the program
# folder.
function(vexa_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "DEPENDS")
    add_executable(${name} main.cpp)
    target_link_libraries(${name} PRIVATE ${arg_DEPENDS})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${VEXA_PROGRAM_FOLDER})
endfunction()
