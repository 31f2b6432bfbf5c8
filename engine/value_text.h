/*
 * Text of values, and values of text: the plain forms that CSV fields, results and casts share.
 *
 * Integers in digits; decimals with the digits behind the point that they show; doubles and floats as the shortest text that
 * reads back as the same number. Text of a string is its bytes and its blanks written out, text of a CLOB its value, text of
 * binary data and of a BLOB the bytes in hexadecimal digits. Texts of dates and times stand in engine/datetime_text.h,
 * those of intervals in engine/interval_text.h.
 */
#ifndef QZENGINE_VALUE_TEXT_H
#define QZENGINE_VALUE_TEXT_H

#include <string>
#include <string_view>

#include "engine/constant.h"
#include "engine/text_buffer.h"
#include "engine/value_type.h"

namespace qzengine {

void append_text(TextBuffer& out, int32_t value);
void append_text(TextBuffer& out, int64_t value);
void append_text(TextBuffer& out, double value);
void append_text(TextBuffer& out, float value);
void append_text(TextBuffer& out, const xdec& value);
void append_text(TextBuffer& out, const bdta3_colstr& value);

// Two digits a byte, in upper case.
void append_hex(TextBuffer& out, std::string_view bytes);

// The value in a physical row, which is not NULL. EvaluationError for a LOB that cannot be read.
void append_value_text(TextBuffer& out, qz_env* env, ValueType type, const bdta3_col* vector, uint32_t row);

// The value of a LOB: in the slot, or else in storage. EvaluationError when it cannot be read.
std::string_view lob_text(qz_env* env, ValueType type, const bdta3_colstr& slot, std::string& storage);

// A constant for people, as its literal in UTF-8: strings in quotes, NULL as NULL.
std::string describe(const Constant& constant);

// Two digits for each byte, in either case. 0 or EC_HEX_TEXT_INVALID.
int32_t parse_hex(std::string_view digits, std::string& bytes);

// Whole texts, with nothing around the number. 0, EC_NUMBER_TEXT_INVALID, or EC_DATA_OVERFLOW for a number out of range.
int32_t parse_text(std::string_view text, int32_t& value);
int32_t parse_text(std::string_view text, int64_t& value);
int32_t parse_text(std::string_view text, double& value);
int32_t parse_text(std::string_view text, float& value);
int32_t parse_text(std::string_view text, xdec& value);

}  // namespace qzengine

#endif
