#include "report/html/markup.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "base/output_file.h"
#include "base/text_escape.h"
#include "report/piece.h"

namespace bgp_rehearse {

namespace {

// Whether it stands among words: behind it a line end would be a blank.
bool is_in_line(std::string_view element)
{
    constexpr std::string_view kInLine[] = {"a", "code", "kbd", "span", "strong"};
    return std::find(std::begin(kInLine), std::end(kInLine), element) != std::end(kInLine);
}

void append_text(std::string_view text, std::string* out)
{
    for (const char each : escaped(text)) {
        switch (each) {
            case '&':
                *out += "&amp;";
                break;
            case '<':
                *out += "&lt;";
                break;
            case '>':
                *out += "&gt;";
                break;
            case '"':
                *out += "&quot;";
                break;
            case '\'':
                *out += "&#39;";
                break;
            default:
                *out += each;
        }
    }
}

}  // namespace

std::string html_text(std::string_view text)
{
    std::string html;
    append_text(text, &html);
    return html;
}

void Markup::begin(std::string_view element, Attributes attributes)
{
    out_.append("<").append(element);
    for (const auto& [name, value] : attributes) {
        out_.append(" ").append(name);
        if (!value.empty()) {
            out_ += "=\"";
            append_text(value, &out_);
            out_ += '"';
        }
    }
    out_ += '>';
}

Markup& Markup::open(std::string_view element, Attributes attributes)
{
    begin(element, attributes);
    open_.emplace_back(element);
    return *this;
}

Markup& Markup::close()
{
    out_.append("</").append(open_.back()).append(is_in_line(open_.back()) ? ">" : ">\n");
    open_.pop_back();
    write_when_large();
    return *this;
}

Markup& Markup::element(std::string_view element, Attributes attributes)
{
    begin(element, attributes);
    out_ += '\n';
    return *this;
}

Markup& Markup::text(std::string_view text)
{
    append_text(text, &out_);
    return *this;
}

// Whatever direction its characters have, the text around it keeps its own.
Markup& Markup::foreign(std::string_view text)
{
    out_ += "<bdi>";
    append_text(text, &out_);
    out_ += "</bdi>";
    return *this;
}

Markup& Markup::line(std::string_view element, std::string_view content, Attributes attributes)
{
    return open(element, attributes).text(content).close();
}

Markup& Markup::raw(std::string_view content)
{
    out_ += content;
    write_when_large();
    return *this;
}

void Markup::write_when_large()
{
    if (out_.size() >= kPiece) {
        write();
    }
}

void Markup::write()
{
    if (error_ == 0 && !write_all(file_, out_.data(), out_.size())) {
        error_ = errno;
    }
    out_.clear();
}

bool Markup::finish()
{
    write();
    errno = error_;
    return error_ == 0;
}

}  // namespace bgp_rehearse
