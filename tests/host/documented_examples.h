// The examples of a page of docs/, for tests that hold the page to its word.
#ifndef QZBIFUN_TESTS_HOST_DOCUMENTED_EXAMPLES_H
#define QZBIFUN_TESTS_HOST_DOCUMENTED_EXAMPLES_H

#include <fstream>
#include <string>
#include <vector>

#include "tests/host/oracle_script.h"

namespace qzbifun_test {

inline std::string without_marks(const std::string& text, char mark) {
    const bool marked = text.size() >= 2 && text.front() == mark && text.back() == mark;
    return marked ? text.substr(1, text.size() - 2) : text;
}

// The rows of all tables of docs/<page_name> that have the given header line; a cell loses its code marks.
inline std::vector<std::vector<std::string>> documented_examples(const std::string& page_name, const std::string& header) {
    std::ifstream page(QZBIFUN_SOURCE_DIR "/docs/" + page_name);
    std::vector<std::vector<std::string>> rows;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line == header) {
            inside = true;
        } else if (line.empty() || line[0] != '|') {
            inside = false;
        } else if (inside && line.find("---") == std::string::npos) {
            std::vector<std::string> row = split(line, '|');
            row.erase(row.begin());
            row.pop_back();
            for (std::string& cell : row) {
                cell = without_marks(cell.substr(1, cell.size() - 2), '`');
            }
            rows.push_back(row);
        }
    }
    return rows;
}

}  // namespace qzbifun_test

#endif
