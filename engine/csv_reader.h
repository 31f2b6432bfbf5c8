/*
 * Reads CSV files in batches of whole records.
 *
 * The format is that of RFC 4180: fields separated by commas, records ended by a line feed with or without a carriage return
 * before it, fields with a comma, a quote or a line end in double quotes, a quote inside them doubled. The first record names
 * the columns. A byte order mark in front is skipped; the last record may lack its end. Lines without anything are skipped,
 * unless the file has one column only: there an empty line is a NULL. A carriage return anywhere else is part of its field.
 *
 * A record with too few or too many fields, a quote inside an unquoted field, text behind a closing quote, a quoted field that
 * is not closed, and a record of more than kMaxRecordBytes are an InputError with the line; so is a name that is not of the
 * character set of columns. No byte of a character of these sets is a comma, a quote or a line end but the character itself.
 */
#ifndef QZENGINE_CSV_READER_H
#define QZENGINE_CSV_READER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/errors.h"

namespace qzengine {

inline constexpr size_t kMaxRecordBytes = size_t{64} << 20;
inline constexpr size_t kDefaultBatchBytes = size_t{256} << 10;
inline constexpr uint32_t kDefaultBatchRows = 65536;

// Fills a buffer with up to size bytes of the input; 0 at its end. InputError when it cannot be read.
using ByteSource = std::function<size_t(char* buffer, size_t size)>;

// The whole file, or standard input for "-". InputError when it cannot be opened.
ByteSource open_byte_source(const std::string& path);

// Bytes of a buffer that can be read behind its last one.
class CsvBytes {
  public:
    static constexpr size_t kPadding = 64;

    char* data() const { return bytes_.get(); }
    size_t capacity() const { return capacity_; }

    // Keeps the first size bytes.
    void grow(size_t capacity, size_t size);

  private:
    std::unique_ptr<char[]> bytes_;
    size_t capacity_ = 0;
};

// Whole records, and where their fields stand. Used again for batch after batch.
class CsvBatch {
  public:
    uint32_t rows() const { return rows_; }
    size_t bytes() const { return size_; }

    struct Field {
        char* begin;
        uint32_t size;
        bool quoted;
        std::string_view text() const { return {begin, size}; }
    };

    // A field as it stands in the file, without its quotes. A doubled quote in it is still doubled.
    Field field(uint32_t row, uint32_t column) const {
        const size_t index = size_t{row} * columns_ + column;
        char* begin = bytes_.data() + (column == 0 ? row_begin(row) : behind_[index]);
        char* end = bytes_.data() + behind_[index + 1] - 1;
        if (column + 1 == columns_ && end > begin && end[-1] == '\r') --end;
        const bool quoted = end > begin && *begin == '"';
        if (quoted) {
            ++begin;
            --end;
        }
        return {begin, static_cast<uint32_t>(end - begin), quoted};
    }

    // Doubled quotes made single, in place: the field is then no longer as it stands in the file.
    Field unescape(Field field);

    // The line of the file on which a row begins.
    uint64_t line(uint32_t row) const;

    // Whether any field of the batch is quoted.
    bool has_quotes() const { return has_quotes_; }

  private:
    friend class CsvReader;

    // What is wrong with a record or field that stands in these bytes.
    struct Fault {
        size_t begin;
        size_t end;
        std::string message;
    };

    void find_separators();
    std::optional<Fault> find_records(const std::vector<std::string>& names);
    std::optional<Fault> find_records_between_empty_lines(const std::vector<std::string>& names);
    std::optional<Fault> check_quotes() const;
    std::optional<Fault> check_quoted(size_t begin, size_t end) const;
    [[noreturn]] void fail(const Fault& fault) const;
    size_t row_begin(uint32_t row) const { return row_begin_.empty() ? behind_[size_t{row} * columns_] : row_begin_[row]; }
    uint64_t line_at(size_t position) const;

    CsvBytes bytes_;
    size_t size_ = 0;
    uint32_t columns_ = 0;
    uint32_t rows_ = 0;
    uint64_t first_line_ = 1;
    bool has_quotes_ = false;
    size_t separators_ = 0;
    size_t newlines_ = 0;  // separators that end records
    std::vector<uint32_t>
        behind_;  // field i, counted through all rows, is from behind_[i] to the separator before behind_[i + 1]
    std::vector<uint32_t> row_begin_;  // where rows begin, if empty lines stand between them; otherwise empty
};

// A batch ends with the last record that ends within so many bytes, and has so many rows at most.
struct CsvLimits {
    size_t batch_bytes = kDefaultBatchBytes;
    uint32_t batch_rows = kDefaultBatchRows;
};

class CsvReader {
  public:
    // Reads the first record. InputError when there is none.
    explicit CsvReader(ByteSource source, CsvLimits limits = {});

    const std::vector<std::string>& names() const { return names_; }  // as UTF-8

    // Cuts the next batch out of the input, without a look at its fields: quick, and in the order of the file. False at the
    // end.
    bool next(CsvBatch& batch);

    // Finds the fields of a batch; any thread may do so. InputError for a malformed record.
    void index(CsvBatch& batch) const;

    uint64_t bytes_read() const { return bytes_read_; }

  private:
    void fill(size_t size);
    bool cut(CsvBatch& batch, uint32_t max_rows);
    void read_header();

    ByteSource source_;
    CsvLimits limits_;
    std::vector<std::string> names_;
    CsvBytes pending_;
    size_t pending_size_ = 0;
    bool at_end_ = false;
    uint64_t next_line_ = 1;
    uint64_t bytes_read_ = 0;
};

}  // namespace qzengine

#endif
