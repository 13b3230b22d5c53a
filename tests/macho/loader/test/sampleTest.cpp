// Loads a small dylib with initialisers, pointers, zeros, exceptions and at-exit entries.
#include "tests/macho/loader/image.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <typeinfo>

namespace macho {

namespace {

std::vector<int> noted;

void note(int number) {
    noted.push_back(number);
}

Imports sampleImports() {
    Imports imports;
    addSystem(imports);
    addCxxRuntime(imports);
    imports.add(libCxx, "__ZTIi", &typeid(int));
    return imports;
}

class Sample : public testing::Test {
protected:
    Sample() : image(std::make_unique<Image>(SAMPLE, sampleImports())) {
        noted.clear();
        image->function<void(void (*)(int))>("setNote")(note);
    }

    std::unique_ptr<Image> image;
};

TEST_F(Sample, RunsItsInitialisersInOrder) {
    auto *at = image->function<int(int)>("noted");
    EXPECT_EQ(at(0), 1);
    EXPECT_EQ(at(1), 2);
    EXPECT_EQ(at(2), 0);
}

TEST_F(Sample, JumpsBack) {
    auto *jumps = image->function<int(void (*)(int), int, const int *)>("jumps");
    auto *jumpBack = image->function<void(int)>("jumpBack");
    const int values[] = {2, 3, 4};
    EXPECT_EQ(jumps(jumpBack, 9, values), 4329);
    EXPECT_EQ(jumps(jumpBack, 0, values), 4321);
}

TEST_F(Sample, RunsItsAtExitEntriesBackwardsAtUnload) {
    image.reset();
    EXPECT_EQ(noted, (std::vector<int>{-2, -1}));
}

TEST_F(Sample, RunsItsAtExitEntriesAtTheProcesssEnd) {
    EXPECT_EXIT(
        {
            image->function<void(void (*)(int))>("setNote")(
                [](int number) { std::fprintf(stderr, "%d", number); });
            image.release();
            std::exit(5);
        },
        testing::ExitedWithCode(5), "^-2-1$");
}

TEST_F(Sample, PointersIntoItselfMoveWithIt) {
    auto *word = image->function<const char *(int)>("word");
    EXPECT_STREQ(word(0), "rebased");
    EXPECT_STREQ(word(1), "pointers");
    EXPECT_TRUE(image->contains(word(0)));
    EXPECT_EQ(image->symbol("setnote"), nullptr);
    const auto *zeros = static_cast<const int *>(image->symbol("zeroFilled"));
    EXPECT_EQ(zeros[0] + zeros[999], 0);
}

TEST_F(Sample, ExceptionsPassThroughItsFrames) {
    using Callback = void(int);
    using Frame = void(Callback *, long *);
    using Catches = long(Frame *, Callback *, long *);
    auto *catches = image->function<Catches>("catches");
    Callback *fromHere = [](int number) { throw number; };
    auto *fromThere = image->function<Callback>("throwNumber");
    for (const char *name : {"plainFrame", "catchingFrame"})
        for (Callback *callback : {fromHere, fromThere}) {
            long values[] = {1, 2, 3, 4, 5, 6, 0};
            EXPECT_EQ(catches(image->function<Frame>(name), callback, values), 543217) << name;
            EXPECT_EQ(values[6], name == std::string("catchingFrame"));
            EXPECT_EQ(values[0], 1); // the code after the call was not reached
        }
    EXPECT_THROW(fromThere(3), int);
}

TEST_F(Sample, IsFoundByItsAddresses) {
    EXPECT_EQ(Image::around(image->symbol("noted")), image.get());
    EXPECT_EQ(Image::around(image->symbol("zeroFilled")), image.get());
    EXPECT_EQ(Image::around(&noted), nullptr);
    EXPECT_EQ(Image::withHeader(image->symbol("noted")), nullptr);
}

// Code is not writable, and neither are constants after their pointers are bound.
TEST_F(Sample, IsProtected) {
    const auto write = [this](const char *name) {
        *static_cast<volatile char *>(image->symbol(name)) = 1;
    };
    EXPECT_EXIT(write("noted"), testing::KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT(write("constant"), testing::KilledBySignal(SIGSEGV), "");
    write("zeroFilled");
}

TEST_F(Sample, CannotBeLoadedTwice) {
    EXPECT_THROW(Image(SAMPLE, sampleImports()), LoadError);
}

TEST(SampleImports, AMissingOneIsNamed) {
    try {
        Image image(MISSING, sampleImports());
        FAIL() << "loaded";
    } catch (const LoadError &error) {
        EXPECT_EQ(std::string(error.what()), std::string(MISSING) +
                                                 ": nothing here stands for these imports:\n"
                                                 "  _nobodyHasThis from libSystem");
    }
}

TEST(SampleImports, TheSameSymbolOfAnotherLibraryIsNoHelp) {
    Imports imports = sampleImports();
    imports.add(libCxx, "_nobodyHasThis", &noted);
    EXPECT_THROW(Image(MISSING, imports), LoadError);
    imports.add(
        libSystem, "_nobodyHasThis", +[] { return 42; });
    EXPECT_EQ(Image(MISSING, imports).function<int()>("callNobody")(), 42);
}

TEST(SampleImports, AWeakOneMayBeMissing) {
    Imports imports = sampleImports();
    const auto one = +[] { return 1; };
    imports.add(libSystem, "_nobodyHasThis", one);
    EXPECT_EQ(Image(MISSING, imports).function<int()>("callIfThere")(), 0);
    imports.add(libSystem, "_nobodyNeedsThis", one);
    EXPECT_EQ(Image(MISSING, imports).function<int()>("callIfThere")(), 1);
}

} // namespace

} // namespace macho
