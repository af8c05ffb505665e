# SPDX-License-Identifier: GPL-3.0-or-later
# The environment of all tests, whatever the user's is.

set(ENV{LC_ALL} C.UTF-8)
# Programs join the user's session otherwise.
unset(ENV{NSM_URL})
# The faults of libraries that the sanitizers do not report. The quotes are for paths with blanks.
set(ENV{LSAN_OPTIONS} "suppressions='${CMAKE_CURRENT_LIST_DIR}/lsan.supp':print_suppressions=0")
set(ENV{TSAN_OPTIONS} "suppressions='${CMAKE_CURRENT_LIST_DIR}/tsan.supp'")
