# SPDX-License-Identifier: GPL-3.0-or-later
# Links the programs of the folder that includes this, and of those below it, with mold where it is installed: they are
# many, and nobody keeps them. What users run is linked by the compiler's own linker.
find_program(VEXA_MOLD mold)
if(VEXA_MOLD AND NOT CMAKE_CROSSCOMPILING)
    add_link_options(-fuse-ld=mold)
endif()
