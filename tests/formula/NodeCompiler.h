// SPDX-License-Identifier: GPL-3.0-or-later
// Compiles single operations with gcc, as the reference for formulas.
#pragma once

#include "formula/RandomTrees.h"
#include "formula/Types.h"
#include "functions/FunctionCompiler.h"
#include "support/TemporaryFolder.h"

#include <fstream>
#include <map>
#include <memory>
#include <span>
#include <sstream>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace test {

/// A node with the types of its operands and its own type after C's promotions.
struct NodeKind {
    std::string pattern, demand;
    std::vector<vexa::formula::Type> operands;
    vexa::formula::Type result;

    auto operator<=>(const NodeKind&) const = default;
};

/// Compiles kinds of nodes with the compiler and the options of add-ons, but without vectorization.
class NodeCompiler {
  public:
    /// A loop over arrays of the types. It computes to[i] where the node's demand holds, and stores
    /// in `holds` whether it does.
    using Loop = void (*)(const void* const* operands, void* to, unsigned char* holds, long count);

    void Want(const NodeKind& kind) {
        if (loops.try_emplace(kind, nullptr).second)
            wanted.push_back(kind);
    }
    /// Fails if the compiler disagrees with a type.
    testing::AssertionResult Compile() {
        if (wanted.empty())
            return testing::AssertionSuccess();
        const std::string source = "nodes.c", addon = "nodes" + std::to_string(images.size());
        std::ofstream(folder.Path() / source) << Source();
        const kits::ChildResult result = kits::RunProgram(
            {vexa::FunctionCompiler::Command(source.c_str(), addon.c_str()), folder.Path(), {}});
        if (!result.Succeeded())
            return testing::AssertionFailure() << result.standardError;
        images.emplace_back(::dlopen((folder.Path() / addon).c_str(), RTLD_NOW | RTLD_LOCAL),
                            ::dlclose);
        for (std::size_t i = 0; i < wanted.size(); i++)
            loops[wanted[i]] = reinterpret_cast<Loop>(
                ::dlsym(images.back().get(), ("node" + std::to_string(i)).c_str()));
        wanted.clear();
        return testing::AssertionSuccess();
    }
    Loop Of(const NodeKind& kind) const { return loops.at(kind); }
    std::size_t Count() const { return loops.size(); }

  private:
    static constexpr const char* kTypes[] = {"int",           "unsigned", "long",
                                             "unsigned long", "float",    "double"};
    static const char* NameOf(vexa::formula::Type type) {
        return kTypes[static_cast<std::size_t>(type)];
    }
    static std::string WithOperands(std::string text) {
        std::replace(text.begin(), text.end(), '$', 'p');
        return text;
    }

    std::string Source() const {
        std::ostringstream source;
        source << "#pragma GCC optimize(\"O1\")\n"
                  "#include <math.h>\n"
                  // Whole numbers always fit, as they are cut to their lowest bits.
                  "#define FITS(p, low, high) \\\n"
                  "    (WHOLE(__typeof__(p)) || ((p) > (low) && (p) < (high)))\n"
                  "#define SHIFTS(p, q) ((q) >= 0 && (q) < 8 * sizeof(+(p)))\n"
                  "#define DIVIDES(p, q, t) \\\n"
                  "    ((t)(q) != 0 && ((t)-1 > 0 || (t)(q) != (t)-1 || \\\n"
                  "                     (t)(p) != (t)1 << (8 * sizeof(t) - 1)))\n";
        // A long long counts as a long.
        source << "#define WHOLE(t) ((t)0.5 == 0)\n"
                  "#define IS_OF(t, value) \\\n"
                  "    _Static_assert(sizeof(+(value)) == sizeof(t) && \\\n"
                  "                   WHOLE(__typeof__(+(value))) == WHOLE(t) && \\\n"
                  "                   (__typeof__(+(value)))-1 < 0 == (t)-1 < 0, \"the type\")\n";
        for (std::size_t i = 0; i < wanted.size(); i++) {
            const NodeKind& kind = wanted[i];
            const std::string value = WithOperands(kind.pattern), type = NameOf(kind.result);
            const bool divides = !IsFloating(kind.result) &&
                                 (value.starts_with("p0 / ") || value.starts_with("p0 % "));
            source << "void node" << i
                   << "(const void* const* v, void* to, unsigned char* holds, long count) {\n"
                      "    for (long i = 0; i < count; i++) {\n";
            for (std::size_t k = 0; k < kind.operands.size(); k++) {
                const std::string operand = NameOf(kind.operands[k]);
                source << operand << " p" << k << " = ((const " << operand << "*)v[" << k
                       << "])[i];\n";
            }
            source << "holds[i] = "
                   << (divides               ? "DIVIDES(p0, p1, " + type + ")"
                       : kind.demand.empty() ? "1"
                                             : WithOperands(kind.demand))
                   << ";\nif (holds[i]) ((" << type << "*)to)[i] = " << value << ";\nIS_OF(" << type
                   << ", " << value << ");\n}\n}\n";
        }
        return source.str();
    }

    const TemporaryFolder folder;
    std::map<NodeKind, Loop> loops;
    std::vector<NodeKind> wanted;
    std::vector<std::unique_ptr<void, int (*)(void*)>> images;
};

} // namespace test
