#include "report/json_writer.h"

#include <algorithm>
#include <cerrno>
#include <nlohmann/json.hpp>

#include "base/output_file.h"
#include "report/piece.h"

namespace bgp_rehearse {

namespace {

bool stands_for_itself(char byte)
{
    return byte >= ' ' && byte < '\x7f' && byte != '"' && byte != '\\';
}

// What stands behind a backslash for a character; 0 where there is no such sign, or one that is seldom.
char sign_of(char byte)
{
    return byte == '\n' ? 'n' : byte == '"' || byte == '\\' ? byte : '\0';
}

void append_with_signs(std::string_view text, std::string* json)
{
    for (const char byte : text) {
        const char sign = sign_of(byte);
        json->append(sign == '\0' ? "" : "\\").append(1, sign == '\0' ? byte : sign);
    }
}

}  // namespace

void append_json(std::string_view text, std::string* json)
{
    if (std::all_of(text.begin(), text.end(), stands_for_itself)) {
        json->append("\"").append(text).append("\"");
    } else if (std::all_of(text.begin(), text.end(),
                           [](char byte) { return stands_for_itself(byte) || sign_of(byte) != '\0'; })) {
        *json += '"';
        append_with_signs(text, json);
        *json += '"';
    } else {
        *json += nlohmann::json(text).dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
    }
}

JsonWriter::JsonWriter(int file)
    : sink_([file](std::string_view text) { return write_all(file, text.data(), text.size()); })
{
}

JsonWriter& JsonWriter::begin(char bracket, Layout layout)
{
    separate();
    out_ += bracket;
    levels_.push_back({bracket == '{' ? '}' : ']', layout});
    return *this;
}

JsonWriter& JsonWriter::end()
{
    const Level level = levels_.back();
    levels_.pop_back();
    if (level.layout == Lines && !level.empty) {
        new_line();
    }
    out_ += level.closing;
    if (levels_.empty()) {
        out_ += '\n';
    }
    if (out_.size() >= kPiece) {
        write();
    }
    return *this;
}

JsonWriter& JsonWriter::name(std::string_view name)
{
    separate();
    append_json(name, &out_);
    out_ += ": ";
    named_ = true;
    return *this;
}

JsonWriter& JsonWriter::text(std::string_view text)
{
    separate();
    append_json(text, &out_);
    return *this;
}

JsonWriter& JsonWriter::text_or_null(std::string_view value)
{
    return value.empty() ? null() : text(value);
}

JsonWriter& JsonWriter::number(std::size_t number)
{
    return raw(std::to_string(number));
}

JsonWriter& JsonWriter::signed_number(long long number)
{
    return raw(std::to_string(number));
}

JsonWriter& JsonWriter::number(double number)
{
    return raw(nlohmann::json(number).dump());
}

JsonWriter& JsonWriter::truth(bool truth)
{
    return raw(truth ? "true" : "false");
}

JsonWriter& JsonWriter::null()
{
    return raw("null");
}

JsonWriter& JsonWriter::raw(std::string_view text)
{
    separate();
    out_ += text;
    return *this;
}

// What stands before a member or element.
void JsonWriter::separate()
{
    if (named_ || levels_.empty()) {
        named_ = false;
        return;
    }
    Level& level = levels_.back();
    if (!level.empty) {
        out_ += level.layout == Inline ? ", " : ",";
    }
    level.empty = false;
    if (level.layout == Lines) {
        new_line();
    }
}

void JsonWriter::new_line()
{
    const auto indent =
        std::count_if(levels_.begin(), levels_.end(), [](const Level& each) { return each.layout == Lines; });
    out_.append("\n").append(2 * static_cast<std::size_t>(indent), ' ');
}

void JsonWriter::write()
{
    if (error_ == 0 && !sink_(out_)) {
        error_ = errno;
    }
    out_.clear();
}

bool JsonWriter::finish()
{
    write();
    errno = error_;
    return error_ == 0;
}

}  // namespace bgp_rehearse
