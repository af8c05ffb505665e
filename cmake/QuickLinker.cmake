# SPDX-License-Identifier: GPL-3.0-or-later
# Links the programs of the including folder and its subfolders with mold, if it is installed: these programs are many and
# are linked often. The programs that users run are linked by the compiler's default linker.
# RELRO, a protection against attacks that tests do not face, is off: mold 1.10 lets it begin at the thread-local variables,
# which are not loaded. If these end a page by chance, the page is not mapped, the dynamic loader cannot protect it, and the
# program does not start.
# It works with one thread, because mold 1.10 with several sometimes never ends. The build links several programs at once
# anyway.
find_program(VEXA_MOLD mold)
if(VEXA_MOLD AND NOT CMAKE_CROSSCOMPILING)
    add_link_options(-fuse-ld=mold -Wl,--no-threads -Wl,-z,norelro)
endif()
