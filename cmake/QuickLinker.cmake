# SPDX-License-Identifier: GPL-3.0-or-later
# Links the programs of the including folder and its subfolders with mold, if it is installed: these programs are many and
# are linked often. The programs that users run are linked by the compiler's default linker.
find_program(VEXA_MOLD mold)
if(VEXA_MOLD AND NOT CMAKE_CROSSCOMPILING)
    add_link_options(-fuse-ld=mold)
endif()
