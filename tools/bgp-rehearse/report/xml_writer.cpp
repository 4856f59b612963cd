#include "report/xml_writer.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "base/output_file.h"
#include "base/text_escape.h"
#include "report/piece.h"

namespace bgp_rehearse {

namespace {

struct Replacement {
    std::string_view text;
    std::string_view written;
};
// Where a reader would take it for markup; and two that are no characters of XML, in UTF-8.
constexpr Replacement kReplacements[] = {{"&", "&amp;"},
                                         {"<", "&lt;"},
                                         {">", "&gt;"},
                                         {"\"", "&quot;"},
                                         {"\xEF\xBF\xBE", "\\u{fffe}"},
                                         {"\xEF\xBF\xBF", "\\u{ffff}"}};

const Replacement* replacement_at(std::string_view text)
{
    const auto* const found =
        std::find_if(std::begin(kReplacements), std::end(kReplacements),
                     [text](const Replacement& each) { return text.substr(0, each.text.size()) == each.text; });
    return found == std::end(kReplacements) ? nullptr : found;
}

}  // namespace

void append_xml(std::string_view text, std::string* xml)
{
    const std::string shown = escaped(text);
    for (std::string_view rest = shown; !rest.empty();) {
        const Replacement* const replacement = replacement_at(rest);
        *xml += replacement == nullptr ? rest.substr(0, 1) : replacement->written;
        rest.remove_prefix(replacement == nullptr ? 1 : replacement->text.size());
    }
}

XmlWriter::XmlWriter(int file) : file_(file), out_(R"(<?xml version="1.0" encoding="UTF-8"?>)") {}

XmlWriter& XmlWriter::begin(const char* element)
{
    close_tag();
    new_line();
    out_.append("<").append(element);
    levels_.push_back({element});
    return *this;
}

XmlWriter& XmlWriter::attribute(std::string_view name, std::string_view text)
{
    out_.append(" ").append(name).append("=\"");
    append_xml(text, &out_);
    out_ += '"';
    return *this;
}

XmlWriter& XmlWriter::attribute(std::string_view name, std::size_t number)
{
    return attribute(name, std::to_string(number));
}

XmlWriter& XmlWriter::line(std::string_view text)
{
    close_tag();
    Level& level = levels_.back();
    out_.append(level.text ? "\n" : "");
    level.text = true;
    append_xml(text, &out_);
    return *this;
}

XmlWriter& XmlWriter::end()
{
    const Level level = levels_.back();
    levels_.pop_back();
    if (level.open) {
        out_ += "/>";
    } else {
        if (!level.text) {
            new_line();
        }
        out_.append("</").append(level.element).append(">");
    }
    if (levels_.empty()) {
        out_ += '\n';
    }
    if (out_.size() >= kPiece) {
        write();
    }
    return *this;
}

void XmlWriter::close_tag()
{
    if (!levels_.empty() && levels_.back().open) {
        out_ += '>';
        levels_.back().open = false;
    }
}

void XmlWriter::new_line()
{
    out_.append("\n").append(2 * levels_.size(), ' ');
}

void XmlWriter::write()
{
    if (error_ == 0 && !write_all(file_, out_.data(), out_.size())) {
        error_ = errno;
    }
    out_.clear();
}

bool XmlWriter::finish()
{
    write();
    errno = error_;
    return error_ == 0;
}

}  // namespace bgp_rehearse
