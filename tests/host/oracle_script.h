// The lines that a script of tests/oracles prints: expected values out of another implementation.
#ifndef QZBIFUN_TESTS_HOST_ORACLE_SCRIPT_H
#define QZBIFUN_TESTS_HOST_ORACLE_SCRIPT_H

#include <cstdio>
#include <string>
#include <vector>

namespace qzbifun_test {

// Runs tests/oracles/<script> with Python. No lines: it failed.
inline std::vector<std::string> oracle_lines(const std::string& script, const std::string& arguments) {
    const std::string command = "python3 " QZBIFUN_SOURCE_DIR "/tests/oracles/" + script + " " + arguments;
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return {};
    }
    std::vector<std::string> lines;
    std::string line;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
        if (c == '\n') {
            lines.push_back(std::move(line));
            line.clear();
        } else {
            line.push_back(static_cast<char>(c));
        }
    }
    return pclose(pipe) == 0 ? lines : std::vector<std::string>{};
}

inline std::vector<std::string> split(const std::string& line, char separator) {
    std::vector<std::string> fields(1);
    for (const char c : line) {
        if (c == separator) {
            fields.emplace_back();
        } else {
            fields.back().push_back(c);
        }
    }
    return fields;
}

}  // namespace qzbifun_test

#endif
