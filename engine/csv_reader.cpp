#include "engine/csv_reader.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "engine/charset.h"
#include "engine/csv_scan.h"

namespace qzengine {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class FileDescriptor {
  public:
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor() {
        if (descriptor_ > STDERR_FILENO) close(descriptor_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return descriptor_; }

  private:
    int descriptor_;
};

// A name as UTF-8, as expressions write it. One of UTF-8 stays as it is, well-formed or not.
std::string read_name(std::string_view text, uint32_t column) {
    if (columns_are_utf8()) return std::string(text);
    std::string name = to_utf8(text);
    if (from_utf8(name) == text) return name;
    throw InputError(fmt::format("line 1: the name of column {} is no text in {}", column + 1, charset_name()));
}

std::string error_text(int error) { return std::generic_category().message(error); }

// Behind the n-th set bit; the mask has at least n, n at least 1.
unsigned behind_bit(uint64_t mask, uint64_t n) {
    for (; n > 1; --n) mask &= mask - 1;
    return static_cast<unsigned>(std::countr_zero(mask)) + 1;
}

// Bits of the block's bytes in front of its end.
uint64_t front_mask(size_t bytes) { return bytes >= kScanBlock ? ~uint64_t{0} : (uint64_t{1} << bytes) - 1; }

struct WholeRecords {
    size_t size = 0;        // bytes
    uint64_t newlines = 0;  // all in them, those inside quotes too
};

// The records at the front of the bytes that are whole, max_rows at most. 64 bytes behind the size are readable.
WholeRecords whole_records(const char* bytes, size_t size, uint32_t max_rows) {
    WholeRecords found;
    uint64_t newlines = 0;
    uint64_t rows = 0;
    QuoteState quotes;
    for (size_t at = 0; at < size; at += kScanBlock) {
        const CsvMasks masks = scan_csv_block(bytes + at);
        const uint64_t front = front_mask(size - at);
        const uint64_t ends = masks.newlines & ~quotes.inside(masks.quotes & front) & front;
        const auto count = static_cast<uint64_t>(std::popcount(ends));
        if (count > 0) {
            const bool last = rows + count >= max_rows;
            const unsigned behind =
                last ? behind_bit(ends, max_rows - rows) : 64 - static_cast<unsigned>(std::countl_zero(ends));
            found.size = at + behind;
            found.newlines = newlines + static_cast<uint64_t>(std::popcount(masks.newlines & front_mask(behind)));
            if (last) return found;
            rows += count;
        }
        newlines += static_cast<uint64_t>(std::popcount(masks.newlines & front));
    }
    return found;
}

std::string_view without_carriage_return(const char* begin, const char* end) {
    if (end > begin && end[-1] == '\r') --end;
    return {begin, static_cast<size_t>(end - begin)};
}

std::string count_message(size_t fields, const std::vector<std::string>& names) {
    if (fields > names.size()) {
        return fmt::format("field {} has no column: there are {} fields and the first line names {} column{}", names.size() + 1,
                           fields, names.size(), names.size() == 1 ? "" : "s");
    }
    return fmt::format("column {} is missing: there {} {} field{} and the first line names {} columns", names[fields],
                       fields == 1 ? "is" : "are", fields, fields == 1 ? "" : "s", names.size());
}

}  // namespace

ByteSource open_byte_source(const std::string& path) {
    const int descriptor = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) throw InputError(fmt::format("cannot open {}: {}", path, error_text(errno)));
    auto file = std::make_shared<FileDescriptor>(descriptor);
    return [file, path](char* buffer, size_t size) {
        for (;;) {
            const ssize_t got = read(file->get(), buffer, size);
            if (got >= 0) return static_cast<size_t>(got);
            if (errno != EINTR) throw InputError(fmt::format("cannot read {}: {}", path, error_text(errno)));
        }
    };
}

void CsvBytes::grow(size_t capacity, size_t size) {
    if (capacity <= capacity_) return;
    auto bytes = std::make_unique_for_overwrite<char[]>(capacity + kPadding);
    if (size > 0) std::memcpy(bytes.get(), bytes_.get(), size);
    std::memset(bytes.get() + capacity, 0, kPadding);
    bytes_ = std::move(bytes);
    capacity_ = capacity;
}

// ---- The batch: its fields --------------------------------------------------------------------------------------------------

void CsvBatch::find_separators() {
    has_quotes_ = false;
    separators_ = 0;
    newlines_ = 0;
    if (behind_.size() < kScanBlock + 1) behind_.resize(kScanBlock + 1);
    behind_[0] = 0;
    QuoteState quotes;
    for (size_t at = 0; at < size_; at += kScanBlock) {
        const CsvMasks masks = scan_csv_block(bytes_.data() + at);
        const uint64_t front = front_mask(size_ - at);
        const uint64_t outside = ~quotes.inside(masks.quotes & front) & front;
        has_quotes_ = has_quotes_ || (masks.quotes & front) != 0;
        newlines_ += static_cast<size_t>(std::popcount(masks.newlines & outside));
        if (behind_.size() < separators_ + kScanBlock + 1) behind_.resize(behind_.size() * 2);
        uint32_t* next = behind_.data() + separators_ + 1;
        const uint32_t base = static_cast<uint32_t>(at) + 1;
        for (uint64_t rest = (masks.commas | masks.newlines) & outside; rest != 0; rest &= rest - 1) {
            *next++ = base + static_cast<uint32_t>(std::countr_zero(rest));
        }
        separators_ = static_cast<size_t>(next - behind_.data()) - 1;
    }
}

// With as many newlines as there are rows, and one at the end of each, every other separator is a comma.
std::optional<CsvBatch::Fault> CsvBatch::find_records(const std::vector<std::string>& names) {
    columns_ = static_cast<uint32_t>(names.size());
    row_begin_.clear();
    rows_ = static_cast<uint32_t>(newlines_);
    bool regular = separators_ == newlines_ * columns_;
    for (size_t i = columns_; regular && i <= separators_; i += columns_) regular = bytes_.data()[behind_[i] - 1] == '\n';
    return regular ? std::nullopt : find_records_between_empty_lines(names);
}

std::optional<CsvBatch::Fault> CsvBatch::find_records_between_empty_lines(const std::vector<std::string>& names) {
    rows_ = 0;
    size_t kept = 0;    // separators that stay; they move to the front
    size_t fields = 0;  // of the present line
    size_t begin = 0;   // of the present line
    for (size_t i = 1; i <= separators_; ++i) {
        const uint32_t behind = behind_[i];
        behind_[++kept] = behind;
        ++fields;
        if (bytes_.data()[behind - 1] != '\n') continue;
        if (fields == 1 && columns_ > 1 && without_carriage_return(bytes_.data() + begin, bytes_.data() + behind - 1).empty()) {
            --kept;
        } else if (fields != columns_) {
            return Fault{begin, behind, count_message(fields, names)};
        } else {
            row_begin_.push_back(static_cast<uint32_t>(begin));
            ++rows_;
        }
        fields = 0;
        begin = behind;
    }
    return std::nullopt;
}

CsvBatch::Field CsvBatch::unescape(Field field) {
    if (!field.quoted || field.size == 0) return field;
    char* to = static_cast<char*>(std::memchr(field.begin, '"', field.size));
    if (to == nullptr) return field;
    const char* end = field.begin + field.size;
    for (const char* from = to; from < end; ++from) {
        *to++ = *from;
        if (*from == '"') ++from;  // the other one of the pair
    }
    field.size = static_cast<uint32_t>(to - field.begin);
    return field;
}

// Every quote must open or close a field, or be one of two inside a quoted one: then the parity by which separators were found
// is right.
std::optional<CsvBatch::Fault> CsvBatch::check_quotes() const {
    size_t begin = 0;
    for (size_t i = 1; i <= separators_; ++i) {
        if (std::optional<Fault> fault = check_quoted(begin, behind_[i] - 1)) return fault;
        begin = behind_[i];
    }
    // A field that is still open when the bytes end has no separator behind it.
    return begin < size_ ? check_quoted(begin, size_) : std::nullopt;
}

std::optional<CsvBatch::Fault> CsvBatch::check_quoted(size_t from, size_t to) const {
    if (from == to) return std::nullopt;
    const char* begin = bytes_.data() + from;
    const char* end = bytes_.data() + to;
    if (*begin != '"') {
        if (std::memchr(begin, '"', to - from) == nullptr) return std::nullopt;
        return Fault{from, to, "a quote stands inside a field that does not begin with one"};
    }
    const char* closing = begin + 1;
    for (;; closing += 2) {
        closing = static_cast<const char*>(std::memchr(closing, '"', static_cast<size_t>(end - closing)));
        if (closing == nullptr) return Fault{from, to, "the quoted field is not closed"};
        if (closing + 1 == end || closing[1] != '"') break;
    }
    const bool carriage_return = closing + 2 == end && closing[1] == '\r' && *end == '\n';
    if (closing + 1 == end || carriage_return) return std::nullopt;
    return Fault{from, to, "text stands behind the closing quote of a field"};
}

uint64_t CsvBatch::line_at(size_t position) const {
    return first_line_ + static_cast<uint64_t>(std::count(bytes_.data(), bytes_.data() + position, '\n'));
}

uint64_t CsvBatch::line(uint32_t row) const { return line_at(row_begin(row)); }

void CsvBatch::fail(const Fault& fault) const {
    throw InputError(fmt::format("line {}: {}", line_at(fault.begin), fault.message));
}

// ---- The reader: batches ----------------------------------------------------------------------------------------------------

CsvReader::CsvReader(ByteSource source, CsvLimits limits) : source_(std::move(source)), limits_(limits) { read_header(); }

// Reads until that many bytes are pending, or the input ends.
void CsvReader::fill(size_t size) {
    pending_.grow(size + 1, pending_size_);  // one more for a line feed that the last record may lack
    while (!at_end_ && pending_size_ < size) {
        const size_t got = source_(pending_.data() + pending_size_, size - pending_size_);
        pending_size_ += got;
        bytes_read_ += got;
        at_end_ = got == 0;
    }
    if (at_end_ && pending_size_ > 0 && pending_.data()[pending_size_ - 1] != '\n') pending_.data()[pending_size_++] = '\n';
}

// Takes whole records off the pending bytes. False when nothing is pending.
bool CsvReader::cut(CsvBatch& batch, uint32_t max_rows) {
    size_t size = std::max<size_t>(limits_.batch_bytes, 1);
    fill(size);
    if (pending_size_ == 0) return false;
    WholeRecords records = whole_records(pending_.data(), pending_size_, max_rows);
    while (records.size == 0 && !at_end_) {
        if (size >= kMaxRecordBytes) {
            throw InputError(fmt::format("line {}: the record is longer than {} bytes; is a quoted field not closed?",
                                         next_line_, kMaxRecordBytes));
        }
        size = std::min(size * 2, kMaxRecordBytes);
        fill(size);
        records = whole_records(pending_.data(), pending_size_, max_rows);
    }
    // The input ends inside quotes: the fields' check tells where they began.
    if (records.size == 0) records.size = pending_size_;

    std::swap(batch.bytes_, pending_);
    batch.size_ = records.size;
    batch.first_line_ = next_line_;
    next_line_ += records.newlines;
    const size_t rest = pending_size_ - records.size;
    pending_.grow(std::max(rest, limits_.batch_bytes) + 1, 0);
    if (rest > 0) std::memcpy(pending_.data(), batch.bytes_.data() + records.size, rest);
    pending_size_ = rest;
    return true;
}

bool CsvReader::next(CsvBatch& batch) { return cut(batch, limits_.batch_rows); }

void CsvReader::index(CsvBatch& batch) const {
    batch.find_separators();
    const std::optional<CsvBatch::Fault> quotes = batch.has_quotes_ ? batch.check_quotes() : std::nullopt;
    const std::optional<CsvBatch::Fault> record = batch.find_records(names_);
    // Behind a wrong quote nothing is what it seems, so that only a record that ends before it is to blame.
    if (record && (!quotes || record->end <= quotes->begin)) batch.fail(*record);
    if (quotes) batch.fail(*quotes);
}

void CsvReader::read_header() {
    fill(std::max<size_t>(limits_.batch_bytes, kByteOrderMark.size()));
    if (std::string_view(pending_.data(), pending_size_).starts_with(kByteOrderMark)) {
        pending_size_ -= kByteOrderMark.size();
        std::memmove(pending_.data(), pending_.data() + kByteOrderMark.size(), pending_size_);
    }
    CsvBatch header;
    const auto empty = [] { return InputError("line 1 is empty; it must name the columns"); };
    if (!cut(header, 1)) throw empty();
    header.find_separators();
    if (const std::optional<CsvBatch::Fault> fault = header.check_quotes()) header.fail(*fault);
    header.columns_ = static_cast<uint32_t>(header.separators_);
    header.rows_ = 1;
    for (uint32_t column = 0; column < header.columns_; ++column) {
        names_.push_back(read_name(header.unescape(header.field(0, column)).text(), column));
    }
    if (names_.size() == 1 && names_[0].empty()) throw empty();
}

}  // namespace qzengine
