// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/ProgramFolder.h"
#include "kits/support/Published.h"

#include <array>
#include <atomic>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

namespace {

using test::LoadedAddOns;
using vexa::FunctionCompiler;
using vexa::PlaneFunction;

PlaneFunction Compile(const FunctionCompiler& compiler, const std::string& expression) {
    const vexa::CompileOutcome outcome = compiler.Compile(expression);
    if (!outcome)
        throw std::runtime_error(outcome.text);
    return outcome.addon;
}

TEST(FunctionAddon, IsUnloadedWithItsLastOwnerAndNotUnderAReader) {
    const test::ProgramFolder folder;
    const FunctionCompiler compiler(folder.Path());
    {
        kits::Published<PlaneFunction> current(Compile(compiler, "x+1"));
        kits::Reader reader;
        {
            const kits::Reader::Section section(reader);
            const PlaneFunction& held = current.Get();
            current.Publish(Compile(compiler, "x+2"));
            EXPECT_EQ(LoadedAddOns(), 2);
            EXPECT_EQ(held(1, 0), 2);
        }
        kits::CollectRetired();
        EXPECT_EQ(LoadedAddOns(), 1);
        EXPECT_FALSE(compiler.Compile("x+"));
        EXPECT_EQ(current.Get()(1, 0), 3) << "a failure changes nothing";
        current.Publish(vexa::nullfunc);
        EXPECT_EQ(LoadedAddOns(), 0);
    }
}

TEST(FunctionAddon, MayBeReplacedWhileAnotherThreadPlays) {
    const test::ProgramFolder folder;
    const FunctionCompiler compiler(folder.Path());
    kits::Published<PlaneFunction> current(vexa::nullfunc);
    std::atomic<bool> stop = false;
    std::atomic<int> faults = 0;
    std::thread player([&] {
        kits::Reader reader;
        std::array<float, 64> x;
        std::array<float, 64> y;
        std::array<float, 64> values{};
        x.fill(0.5F);
        y.fill(1.5F);
        while (!stop) {
            const kits::Reader::Section section(reader);
            const PlaneFunction& function = current.Get();
            const float first = function(0.5F, 1.5F);
            for (int block = 0; block < 20; block++) {
                function.Evaluate(x.data(), y.data(), values.data(), values.size());
                if (values.front() != first || values.back() != first)
                    faults++;
            }
        }
    });
    for (int i = 0; i < 12; i++) {
        current.Publish(Compile(compiler, "x*0+y*0+" + std::to_string(i)));
        EXPECT_EQ(current.Get()(3, 4), static_cast<float>(i));
    }
    stop = true;
    player.join();
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(kits::CollectRetired(), 0U);
    EXPECT_EQ(LoadedAddOns(), 1);
}

} // namespace
