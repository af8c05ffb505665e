// SPDX-License-Identifier: GPL-3.0-or-later
// Compiles the expressions that pass the check. Fails if the object defines more than the three
// functions of an add-on, or needs anything but the maths library. The compiler thus verifies the
// check.

#include "functions/ExpressionCheck.h"
#include "fuzz/Fuzzing.h"
#include "kits/kernel/ChildProcess.h"
#include "kits/storage/ReadFile.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

namespace {

namespace fs = std::filesystem;

/// Returns true if the maths library itself, not one that it needs, has a function of that name.
bool IsOfTheMathsLibrary(const char* name) {
    static void* const library = ::dlopen("libm.so.6", RTLD_NOW | RTLD_LOCAL);
    void* const address = library ? ::dlsym(library, name) : nullptr;
    Dl_info info{};
    return address && ::dladdr(address, &info) != 0 &&
           std::strstr(info.dli_fname, "libm.so") != nullptr;
}

/// The compiler made the object's tables, so they are not validated.
template<class Row>
std::span<const Row> Rows(const std::string& object, const ElfW(Shdr) & section) {
    return {reinterpret_cast<const Row*>(object.data() + section.sh_offset),
            section.sh_size / sizeof(Row)};
}

void CheckSymbols(const std::string& object) {
    const auto* header = reinterpret_cast<const ElfW(Ehdr)*>(object.data());
    const std::span<const ElfW(Shdr)> sections(
        reinterpret_cast<const ElfW(Shdr)*>(object.data() + header->e_shoff), header->e_shnum);
    for (const ElfW(Shdr) & section : sections) {
        fuzz::Require(section.sh_type != SHT_INIT_ARRAY && section.sh_type != SHT_FINI_ARRAY,
                      "nothing runs by itself");
        if (section.sh_type != SHT_SYMTAB)
            continue;
        const char* const names = object.data() + sections[section.sh_link].sh_offset;
        for (const ElfW(Sym) & symbol : Rows<ElfW(Sym)>(object, section)) {
            if (ELF64_ST_BIND(symbol.st_info) == STB_LOCAL)
                continue;
            const std::string_view name = names + symbol.st_name;
            const bool ours = name == "r2rfun" || name == "r2rfunstr" || name == "r2rfunblock";
            const bool table = name == "_GLOBAL_OFFSET_TABLE_";
            fuzz::Require(symbol.st_shndx == SHN_UNDEF
                              ? table || IsOfTheMathsLibrary(names + symbol.st_name)
                              : ours,
                          "the object needs the maths library only: " + std::string(name));
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    const std::string_view expression = fuzz::Text(data, size);
    if (vexa::CheckExpression(expression))
        return 0;
    static const fuzz::WorkFolder work;
    const fs::path& folder = work.path;
    static const auto body = kits::ReadFile(VEXA_SOURCE_FOLDER "/data/functions/addon.c");
    fuzz::Require(bool(body), "the template can be read");
    std::ofstream(folder / "a.c") << "#define EXPRESSION\t  " << expression
                                  << "\n#define EXPRESSION_STR \"" << expression << "\"\n\n"
                                  << *body;
    const kits::ChildResult result = kits::RunProgram(
        {{"gcc", "-c", "-w", "-fPIC", "-O1", "-fno-math-errno", "-o", "a.o", "a.c"}, folder, {}});
    fuzz::Require(result.end == kits::ChildResult::End::exited,
                  "the compiler stays within its limits");
    if (result.number != 0)
        return 0; // the types were wrong, which only the compiler can detect
    const auto object = kits::ReadFile(folder / "a.o");
    fuzz::Require(bool(object), "the object can be read");
    CheckSymbols(*object);
    return 0;
}
