#include "engine/result_format.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "engine/charset.h"
#include "engine/value_text.h"

namespace qzengine {
namespace {

struct ResultColumn {
    std::string name;
    ValueType type;
    bool is_char;  // its implied blanks are its type's, and not written out
};

std::vector<ResultColumn> columns_of(const Plan& plan) {
    std::vector<ResultColumn> columns;
    for (const Output& output : plan.outputs) {
        const Node& node = plan.nodes[output.node];
        columns.push_back({output.name, node.type, node.characters > 0});
    }
    return columns;
}

// Calls value(column, vector, physical row) or null(column) for each value, and next_row behind each row.
template <class Value, class Null, class NextRow>
void for_each_value(const Evaluator& evaluator, size_t columns, uint32_t count, Value value, Null null, NextRow next_row) {
    std::vector<const bdta3_col*> vectors;
    for (size_t column = 0; column < columns; ++column) vectors.push_back(evaluator.result(column));
    for (uint32_t row = 0; row < count; ++row) {
        for (size_t column = 0; column < columns; ++column) {
            const bdta3_col* vector = vectors[column];
            const uint32_t physical = physical_row(vector, row);
            vector->data->valid[physical] != 0 ? value(column, vector, physical) : null(column);
        }
        next_row(row);
    }
}

// A value whose bytes go out as they are; those of binary data go out as digits.
bool is_text(ValueType type) { return type == ValueType::kString || type == ValueType::kClob; }

struct Text {
    std::string_view bytes;
    uint32_t blank;
};

Text text_in(qz_env* env, const ResultColumn& column, const bdta3_col* vector, uint32_t row, std::string& storage) {
    const bdta3_colstr& slot = values_of<bdta3_colstr>(vector)[row];
    if (column.type == ValueType::kClob) return {lob_text(env, column.type, slot, storage), 0};
    return {{slot.bytes, slot.len}, column.is_char ? 0 : slot.blank};
}

// ---- CSV --------------------------------------------------------------------------------------------------------------------

void append_csv_text(TextBuffer& out, std::string_view text, uint32_t blank) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos && text.size() + blank > 0) {
        out.append(text);
        out.append(blank, ' ');
        return;
    }
    out.append('"');
    for (size_t begin = 0; begin < text.size();) {
        const size_t quote = std::min(text.find('"', begin), text.size());
        out.append(text.substr(begin, quote - begin));
        if (quote < text.size()) out.append("\"\"");
        begin = quote + 1;
    }
    out.append(blank, ' ');
    out.append('"');
}

// A name in the character set of the values.
std::string written_name(const std::string& name) {
    if (std::optional<std::string> written = from_utf8(name)) return *std::move(written);
    throw UsageError(fmt::format("the name {} cannot be written: {} has no character {}; AS gives another name",
                                 well_formed(name), charset_name(), well_formed(first_unwritable(name))));
}

class CsvWriter : public ResultWriter {
  public:
    explicit CsvWriter(const Plan& plan) : columns_(columns_of(plan)) {}

    void begin(TextBuffer& out) override {
        for (size_t i = 0; i < columns_.size(); ++i) {
            if (i > 0) out.append(',');
            append_csv_text(out, written_name(columns_[i].name), 0);
        }
        out.append('\n');
    }

    void end(TextBuffer&, uint64_t) override {}

    void rows(const Evaluator& evaluator, uint32_t count, TextBuffer& out) override {
        const size_t last = columns_.size() - 1;
        qz_env* env = evaluator.environment().env();
        std::string storage;
        for_each_value(
            evaluator, columns_.size(), count,
            [&](size_t column, const bdta3_col* vector, uint32_t row) {
                if (is_text(columns_[column].type)) {
                    const Text text = text_in(env, columns_[column], vector, row, storage);
                    append_csv_text(out, text.bytes, text.blank);
                } else {
                    const size_t begin = out.size();
                    append_value_text(out, env, columns_[column].type, vector, row);
                    if (out.size() == begin) out.append("\"\"");  // an empty field would be NULL
                }
                out.append(column == last ? '\n' : ',');
            },
            [&](size_t column) { out.append(column == last ? '\n' : ','); }, [](uint32_t) {});
    }

  private:
    std::vector<ResultColumn> columns_;
};

// ---- JSON -------------------------------------------------------------------------------------------------------------------

void append_json_text(TextBuffer& out, std::string_view text, uint32_t blank) {
    out.append('"');
    for (char c : text) {
        if (c == '"' || c == '\\') {
            out.append('\\');
            out.append(c);
        } else if (static_cast<unsigned char>(c) < 0x20) {
            out.append(fmt::format("\\u{:04x}", static_cast<unsigned>(c)));
        } else {
            out.append(c);
        }
    }
    out.append(blank, ' ');
    out.append('"');
}

bool is_json_number(ValueType type, const bdta3_col* vector, uint32_t row) {
    if (type == ValueType::kDouble) return std::isfinite(values_of<double>(vector)[row]);
    if (type == ValueType::kFloat) return std::isfinite(values_of<float>(vector)[row]);
    return is_numeric(type);
}

class JsonWriter : public ResultWriter {
  public:
    explicit JsonWriter(const Plan& plan) : columns_(columns_of(plan)) {
        for (const ResultColumn& column : columns_) {
            TextBuffer key;
            key.append(keys_.empty() ? "{" : ",");
            append_json_text(key, well_formed(column.name), 0);
            key.append(':');
            keys_.emplace_back(key.view());
        }
    }

    void begin(TextBuffer& out) override { out.append("["); }
    std::string_view separator() const override { return ","; }
    void end(TextBuffer& out, uint64_t) override { out.append("\n]\n"); }

    void rows(const Evaluator& evaluator, uint32_t count, TextBuffer& out) override {
        if (count > 0) out.append('\n');
        qz_env* env = evaluator.environment().env();
        for_each_value(
            evaluator, columns_.size(), count,
            [&](size_t column, const bdta3_col* vector, uint32_t row) {
                out.append(keys_[column]);
                append_json(out, env, columns_[column], vector, row);
            },
            [&](size_t column) {
                out.append(keys_[column]);
                out.append("null");
            },
            [&](uint32_t row) { out.append(row + 1 < count ? "},\n" : "}"); });
    }

  private:
    static void append_json(TextBuffer& out, qz_env* env, const ResultColumn& column, const bdta3_col* vector, uint32_t row) {
        if (is_json_number(column.type, vector, row)) return append_value_text(out, env, column.type, vector, row);
        if (is_text(column.type)) {
            std::string storage;
            const Text text = text_in(env, column, vector, row, storage);
            std::string converted;
            return append_json_text(out, to_utf8(text.bytes, converted), text.blank);
        }
        TextBuffer text;
        append_value_text(text, env, column.type, vector, row);
        append_json_text(out, text.view(), 0);
    }

    std::vector<ResultColumn> columns_;
    std::vector<std::string> keys_;  // what stands before each value
};

// ---- Table ------------------------------------------------------------------------------------------------------------------

// Text in UTF-8 without what would move a terminal's cursor.
std::string printable(std::string_view text) {
    std::string shown;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        if (byte == 0xC2 && next < 0xA0) {  // U+0080 to U+009F
            shown += fmt::format("\\x{:02X}", next);
            ++i;
        } else if (c == '\n') {
            shown += "\\n";
        } else if (c == '\t') {
            shown += "\\t";
        } else if (byte < 0x20 || byte == 0x7F) {
            shown += fmt::format("\\x{:02X}", byte);
        } else {
            shown += c;
        }
    }
    return shown;
}

class TableWriter : public ResultWriter {
  public:
    explicit TableWriter(const Plan& plan) : columns_(columns_of(plan)) {
        for (const ResultColumn& column : columns_) names_.push_back(printable(well_formed(column.name)));
        for (const std::string& name : names_) widths_.push_back(display_width(name));
    }

    bool in_order() const override { return true; }
    void begin(TextBuffer&) override {}

    void rows(const Evaluator& evaluator, uint32_t count, TextBuffer& out) override {
        std::vector<std::vector<std::string>> lines(count);
        uint32_t line = 0;
        qz_env* env = evaluator.environment().env();
        std::string storage;
        for_each_value(
            evaluator, columns_.size(), count,
            [&](size_t column, const bdta3_col* vector, uint32_t row) {
                TextBuffer text;
                if (is_text(columns_[column].type)) {
                    const Text value = text_in(env, columns_[column], vector, row, storage);
                    text.append(to_utf8(value.bytes));
                    text.append(value.blank, ' ');
                } else {
                    append_value_text(text, env, columns_[column].type, vector, row);
                }
                lines[line].push_back(printable(text.view()));
            },
            [&](size_t) { lines[line].emplace_back("NULL"); }, [&](uint32_t) { ++line; });
        if (!begun_) begin_table(lines, out);
        for (const std::vector<std::string>& cells : lines) append_line(cells, out);
    }

    void end(TextBuffer& out, uint64_t rows) override {
        if (!begun_) begin_table({}, out);
        out.append(fmt::format("({} row{})\n", rows, rows == 1 ? "" : "s"));
    }

  private:
    void begin_table(const std::vector<std::vector<std::string>>& lines, TextBuffer& out) {
        begun_ = true;
        for (const std::vector<std::string>& cells : lines) {
            for (size_t i = 0; i < cells.size(); ++i) widths_[i] = std::max(widths_[i], display_width(cells[i]));
        }
        append_line(names_, out);
        for (size_t i = 0; i < columns_.size(); ++i) {
            if (i > 0) out.append('+');
            out.append(widths_[i] + 2, '-');
        }
        out.append('\n');
    }

    void append_line(const std::vector<std::string>& cells, TextBuffer& out) const {
        for (size_t i = 0; i < cells.size(); ++i) {
            const size_t width = display_width(cells[i]);
            const size_t padding = widths_[i] > width ? widths_[i] - width : 0;
            const bool right = is_numeric(columns_[i].type);
            const bool last = i + 1 == cells.size();
            out.append(i > 0 ? "| " : " ");
            out.append(right ? padding : 0, ' ');
            out.append(cells[i]);
            out.append(right || last ? 0 : padding, ' ');
            if (!last) out.append(' ');
        }
        out.append('\n');
    }

    std::vector<ResultColumn> columns_;
    std::vector<std::string> names_;
    std::vector<size_t> widths_;
    bool begun_ = false;
};

}  // namespace

std::unique_ptr<ResultWriter> make_result_writer(ResultFormat format, const Plan& plan) {
    switch (format) {
        case ResultFormat::kCsv:
            return std::make_unique<CsvWriter>(plan);
        case ResultFormat::kJson:
            return std::make_unique<JsonWriter>(plan);
        case ResultFormat::kTable:
            return std::make_unique<TableWriter>(plan);
    }
    return nullptr;
}

}  // namespace qzengine
