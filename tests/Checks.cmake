# SPDX-License-Identifier: GPL-3.0-or-later
# Checks of the tree itself, which run with the tests.

find_package(Python3 REQUIRED COMPONENTS Interpreter)

# Who includes whom, and that the check would notice.
set(check_includes ${CMAKE_SOURCE_DIR}/scripts/check-includes.py)
add_test(NAME includes COMMAND ${Python3_EXECUTABLE} ${check_includes} ${CMAKE_SOURCE_DIR}/src)
add_test(NAME includes_self_test COMMAND ${Python3_EXECUTABLE} ${check_includes} --self-test)

# Nothing in the kits that nobody calls.
set(check_unused ${CMAKE_SOURCE_DIR}/scripts/check-unused.py)
add_test(NAME unused COMMAND ${Python3_EXECUTABLE} ${check_unused} ${CMAKE_SOURCE_DIR}/src)
add_test(NAME unused_self_test COMMAND ${Python3_EXECUTABLE} ${check_unused} --self-test)

# What real-time threads call. The interpreter is the system's, whose packages have libclang. COST, in seconds, has what
# takes long begin before the rest.
set(check_realtime ${CMAKE_SOURCE_DIR}/scripts/check-realtime.py)
add_test(NAME realtime COMMAND ${check_realtime} ${CMAKE_SOURCE_DIR}/src)
set_tests_properties(realtime PROPERTIES COST 30)
add_test(NAME realtime_self_test COMMAND ${check_realtime} --self-test)

# The picture of the folders is the one of the sources.
add_test(NAME house_picture
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/scripts/make-house-picture.py --check)

# The layout of the code is clang-format's.
find_program(CLANG_FORMAT clang-format REQUIRED)
file(GLOB_RECURSE formatted CONFIGURE_DEPENDS
    ${CMAKE_SOURCE_DIR}/src/*.h ${CMAKE_SOURCE_DIR}/src/*.cpp
    ${CMAKE_SOURCE_DIR}/tests/*.h ${CMAKE_SOURCE_DIR}/tests/*.cpp
    ${CMAKE_SOURCE_DIR}/benchmarks/*.h ${CMAKE_SOURCE_DIR}/benchmarks/*.cpp
    ${CMAKE_SOURCE_DIR}/packaging/*.cpp ${CMAKE_SOURCE_DIR}/docs/manual/tools/*.cpp)
add_test(NAME format COMMAND ${CLANG_FORMAT} --dry-run -Werror ${formatted})

# What documents point to is there: files, headings, tests.
add_test(NAME links COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/scripts/check-documents.py)

# Every source says its licence.
add_test(NAME licence COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/scripts/licence-lines.py)

# Every script says what it does where it is asked, and does nothing else then.
add_test(NAME help COMMAND bash -c
    "for script in \"$0\"/scripts/* \"$0\"/packaging/*-debian \"$0/test\"; do
        [[ ! -f $script || ! -x $script ]] || { said=$(timeout 20 \"$script\" --help) && [[ -n $said ]]; } ||
            { echo \"$script --help says nothing\"; exit 1; }
    done" ${CMAKE_SOURCE_DIR})

# The demo tune in the tree is the one that its script writes.
add_test(NAME demo_tune COMMAND sh -c
    "\"$0\" \"$1/scripts/make-demo-tune.py\" demo.mid && cmp demo.mid \"$1/data/demo.mid\""
    ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR})

# The list of shipped content has every version of it, and the build copies content by it.
add_test(NAME shipped_content_list
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/scripts/shipped-content.py list --check ${VEXA_MADE_CONTENT})
add_test(NAME shipped_content
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/shipped_content_test.py)

# What desktops and shells are told of the programs.
if(TARGET pages)
    add_test(NAME desktop COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/desktop_test.py ${CMAKE_BINARY_DIR})
endif()

# Every control has a name for those who cannot see it, and the Tab key reaches it.
if(TARGET vexa)
    add_test(NAME accessible COMMAND ${CMAKE_SOURCE_DIR}/scripts/check-accessible.py ${CMAKE_BINARY_DIR})
    set_tests_properties(accessible PROPERTIES COST 40)
endif()

# A render is the same bytes with every instruction set, and calls nothing of which machines have their own idea.
# scripts/check-arm64 compares with another machine.
add_test(NAME renders COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/scripts/compare-renders.py
    $<TARGET_FILE:vexa-render>)
add_test(NAME maths COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/scripts/check-maths.py $<TARGET_FILE:vexa-render>)

# What the manual prints of formulas compiles, plays and looks as it shows.
add_test(NAME manual COMMAND ${CMAKE_SOURCE_DIR}/scripts/make-manual-pictures --check ${CMAKE_BINARY_DIR})
