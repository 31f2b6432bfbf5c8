// Replays every case file of this folder over the exported functions of the library.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/support/case_runner.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    void* library = dlopen(QZBIFUN_LIBRARY, RTLD_NOW);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const auto find = [library](const std::string& name) { return dlsym(library, name.c_str()); };
    if (support::register_case_tests(QZBIFUN_SOURCE_DIR "/tests/cases", find) == 0) {
        std::fprintf(stderr, "no case files\n");
        return 1;
    }
    return RUN_ALL_TESTS();
}
