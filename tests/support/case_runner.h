// Replays the lines of a case file in every form of their function.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/case_file.h"

namespace support {

// Finds an exported function by name; null when there is none.
using FindFunction = std::function<void*(const std::string& name)>;

struct CaseFailure {
    int line = 0;  // in the file
    std::string text;
};

// Replays all lines of a function. Answers what went wrong, each entry with the line, the form, the export and the
// circumstances of the call; empty when all is as the lines and rules say. `replays`, where present, receives the count of
// calls.
std::vector<CaseFailure> replay(const CaseFunction& function, const FindFunction& find, size_t* replays = nullptr);

// Registers a GoogleTest for each function of each case file of the directory, named by file, function and line; a file that
// cannot be read as cases is a failing test. Answers the count of files.
size_t register_case_tests(const std::string& directory, const FindFunction& find);

}  // namespace support
