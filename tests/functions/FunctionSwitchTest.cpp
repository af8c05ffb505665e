#include "functions/FunctionSwitch.h"

#include "functions/ProgramFolder.h"
#include "kits/support/Published.h"

#include <atomic>
#include <optional>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using test::LoadedAddOns;
using vexa::FunctionCompiler;
using vexa::FunctionSwitch;

vexa::FunctionAddon Compile(const FunctionCompiler& compiler, const std::string& expression) {
    vexa::CompileOutcome outcome = compiler.Compile(expression);
    if (!outcome)
        throw std::runtime_error(outcome.details);
    return std::move(*outcome.addon);
}

TEST(FunctionSwitch, HandsTheFunctionToAllInOrderAndKeepsOneAddOn) {
    const test::ProgramFolder folder;
    const FunctionCompiler compiler(folder.Path());
    std::string calls;
    vexa::PlaneFunction installed;
    {
        FunctionSwitch functions;
        for (const char* name : {"view ", "producer ", "consumer "}) {
            functions.AddReceiver([&calls, &installed, name](const vexa::PlaneFunction& function) {
                calls += name;
                installed = function;
                EXPECT_LE(LoadedAddOns(), 2);
            });
        }
        functions.Install(Compile(compiler, "x+1"));
        EXPECT_EQ(calls, "view producer consumer ");
        EXPECT_EQ(installed(1, 0), 2);
        functions.Install(Compile(compiler, "x+2"));
        EXPECT_EQ(installed(1, 0), 3);
        EXPECT_EQ(LoadedAddOns(), 1);

        EXPECT_FALSE(compiler.Compile("x+"));
        EXPECT_EQ(installed(1, 0), 3) << "a failure changes nothing";

        functions.Install({vexa::dummyfunction});
        EXPECT_EQ(installed.point, vexa::dummyfunction);
        EXPECT_EQ(LoadedAddOns(), 1) << "stays until the next compilation";
        functions.Install(Compile(compiler, "x+4"));
        EXPECT_EQ(installed(1, 0), 5);
        EXPECT_EQ(LoadedAddOns(), 1);
    }
    EXPECT_EQ(LoadedAddOns(), 0);
}

TEST(FunctionSwitch, KeepsBothAddOnsWhereAReceiverFails) {
    const test::ProgramFolder folder;
    const FunctionCompiler compiler(folder.Path());
    FunctionSwitch functions;
    bool throws = false;
    functions.AddReceiver([&throws](const vexa::PlaneFunction&) {
        if (throws)
            throw std::bad_alloc();
    });
    functions.Install(Compile(compiler, "x+5"));
    throws = true;
    EXPECT_THROW(functions.Install(Compile(compiler, "x+6")), std::bad_alloc);
    EXPECT_EQ(LoadedAddOns(), 2) << "either may be called";
    throws = false;
    functions.Install(Compile(compiler, "x+7"));
    EXPECT_EQ(LoadedAddOns(), 1);
}

TEST(FunctionSwitch, DoesNotUnloadUnderAReader) {
    const test::ProgramFolder folder;
    const FunctionCompiler compiler(folder.Path());
    FunctionSwitch functions(std::chrono::milliseconds(1));
    vexa::PlaneFunction installed;
    functions.AddReceiver([&installed](const auto& function) { installed = function; });
    functions.Install(Compile(compiler, "x+1"));
    kits::Reader reader;
    {
        const kits::Reader::Section section(reader);
        const vexa::PlaneFunction held = installed;
        functions.Install(Compile(compiler, "x+2"));
        EXPECT_EQ(LoadedAddOns(), 2);
        EXPECT_EQ(held(1, 0), 2);
    }
    kits::CollectRetired();
    EXPECT_EQ(LoadedAddOns(), 1);
}

TEST(FunctionSwitch, MayBeUsedWhileAnotherThreadPlays) {
    const test::ProgramFolder folder;
    const FunctionCompiler compiler(folder.Path());
    kits::Published<vexa::PlaneFunction> current({vexa::nullfunc});
    FunctionSwitch functions;
    functions.AddReceiver([&current](const auto& function) { current.Publish(function); });

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
            const vexa::PlaneFunction function = current.Get();
            const float first = function(0.5F, 1.5F);
            for (int block = 0; block < 20; block++) {
                function.Evaluate(x.data(), y.data(), values.data(), values.size());
                if (values.front() != first || values.back() != first)
                    faults++;
            }
        }
    });
    for (int i = 0; i < 12; i++) {
        functions.Install(Compile(compiler, "x*0+y*0+" + std::to_string(i)));
        EXPECT_EQ(LoadedAddOns(), 1);
        EXPECT_EQ(current.Get()(3, 4), static_cast<float>(i));
    }
    stop = true;
    player.join();
    EXPECT_EQ(faults, 0);
}

} // namespace
