// Tables of cases: one expectation a line, to be replayed over every exported form of a function.
//
// tests/cases/README.md tells the format. The reader takes nothing that it does not know: every unknown word is an error with
// its place.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/batch.h"

namespace support {

// What surrounds the calls of a line.
struct Settings {
    uint32_t compat_mode = 0;
    uint32_t charset = 1;
    uint32_t case_sensitive = 1;
    std::vector<std::pair<uint32_t, uint32_t>> parameters;
    bool oracle_date_format = false;
    bool session = false;
    int16_t time_zone = 0;
    uint32_t language = 0;
    uint32_t date_language = 0;

    bool operator==(const Settings&) const = default;
};

struct CaseLine {
    int line = 0;
    std::string text;  // as it stands in the file
    std::vector<Cell> arguments;
    Outcome outcome;
    std::vector<std::string> only_forms;  // empty: all
    Settings settings;
};

struct CaseForm {
    std::string form;              // a, v or i for each argument
    std::optional<int32_t> extra;  // an argument behind nrows
    std::string exported;
    Rules rules;
};

struct CaseFunction {
    int line = 0;
    std::string name;
    std::vector<const ValueType*> arguments;
    const ValueType* result = nullptr;
    std::vector<CaseForm> forms;
    std::vector<CaseLine> lines;
};

struct CaseFile {
    struct Error {
        int line;
        std::string text;
    };
    std::string path;
    std::vector<CaseFunction> functions;
    std::vector<Error> errors;
};

CaseFile read_cases(const std::string& path);
CaseFile parse_cases(std::string_view text, const std::string& path);

}  // namespace support
