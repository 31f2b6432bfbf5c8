// Replays a line of a case file in every form of its function.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/case_file.h"

namespace support {

// Finds an exported function by name; null when there is none.
using FindFunction = std::function<void*(const std::string& name)>;

// Answers what went wrong, each entry with the form, the export and the circumstances of the call; empty when all is as the
// line says. `replays`, where present, receives the count of calls.
std::vector<std::string> replay(const CaseFunction& function, const CaseLine& line, const FindFunction& find,
                                size_t* replays = nullptr);

// Registers a GoogleTest for each function of each case file of the directory, named by file, function and line; a file that
// cannot be read as cases is a failing test. Answers the count of files.
size_t register_case_tests(const std::string& directory, const FindFunction& find);

}  // namespace support
