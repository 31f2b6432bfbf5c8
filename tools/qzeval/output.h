/*
 * Where results go: standard output, or a file that appears whole or not at all.
 */
#ifndef QZEVAL_OUTPUT_H
#define QZEVAL_OUTPUT_H

#include <string>
#include <string_view>

#include "engine/errors.h"

namespace qzeval {

// Every failure is an OutputError.
class Output {
  public:
    // Standard output for an empty path. A regular file is written beside itself and takes its place in finish; what a path
    // names otherwise, such as a device, is written as it is. A signal that ends the program removes the unfinished file.
    explicit Output(std::string path);
    ~Output();  // removes what was not finished
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void write(std::string_view text);
    void finish();

  private:
    [[noreturn]] void fail(const char* what) const;
    void open_beside(const std::string& target);

    std::string path_;
    std::string temporary_;  // empty when written directly
    int descriptor_ = -1;
};

}  // namespace qzeval

#endif
