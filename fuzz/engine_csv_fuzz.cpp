// CSV files of any bytes: the same fields, or the same error, whole and cut into small batches.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "engine/csv_columns.h"
#include "engine/csv_reader.h"
#include "fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using namespace qzengine;

struct Result {
    std::vector<std::string> fields;
    std::string error;
    bool operator==(const Result&) const = default;
};

Result read_all(std::string_view text, CsvLimits limits) {
    Result result;
    const ByteSource source = [text](char* buffer, size_t size) mutable {
        const size_t n = std::min(size, text.size());
        std::memcpy(buffer, text.data(), n);
        text.remove_prefix(n);
        return n;
    };
    try {
        CsvReader reader(source, limits);
        CsvBatch batch;
        const auto columns = static_cast<uint32_t>(reader.names().size());
        while (reader.next(batch)) {
            reader.index(batch);
            require(infer_types(batch, columns).size() == columns);
            for (uint32_t row = 0; row < batch.rows(); ++row) {
                for (uint32_t column = 0; column < columns; ++column) {
                    const CsvBatch::Field field = batch.unescape(batch.field(row, column));
                    result.fields.push_back((field.quoted ? "quoted " : "plain ") + std::string(field.text()));
                }
            }
        }
    } catch (const InputError& error) {
        result.error = error.what();
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const Result whole = read_all(text, {});
    for (const CsvLimits& limits : {CsvLimits{1, 1}, CsvLimits{64, 65536}, CsvLimits{1000, 3}}) {
        const Result cut = read_all(text, limits);
        require(cut.error == whole.error);
        // Of a file with an error the fields of whole batches before it have been read.
        require(whole.error.empty() ? cut == whole : cut.fields.size() >= whole.fields.size());
    }
    return 0;
}
