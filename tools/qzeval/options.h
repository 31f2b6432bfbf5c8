/*
 * The command line of qzeval.
 */
#ifndef QZEVAL_OPTIONS_H
#define QZEVAL_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/csv_query.h"

namespace qzeval {

enum class Action { kEvaluate, kExplain, kListFunctions };

struct Options {
    Action action = Action::kEvaluate;
    std::string function;  // with kListFunctions: the one to describe, or empty
    std::string expressions;
    std::string input;  // a path, "-", or empty: one row without columns
    std::optional<std::string> where;
    std::vector<qzengine::TypeOverride> types;
    std::string output;  // a path, or empty: standard output
    uint32_t compat_mode = 0;
    uint32_t charset = 1;  // 0 GB18030, 1 UTF-8, 2 EUC-KR
    bool case_insensitive = false;
    qzengine::QueryOptions query;
};

// The exit codes, as the manual page has them.
enum ExitCode {
    kSuccess = 0,
    kEvaluationFailed = 1,
    kUsage = 2,
    kInputFailed = 3,
    kOutputFailed = 4,
};

// Parses the command line. When that ends the program, since it is wrong or asks for help or the version, the text has been
// written and the exit code is answered.
std::optional<int> parse_options(int argc, const char* const* argv, Options& options);

}  // namespace qzeval

#endif
