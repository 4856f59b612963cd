#include "xml/foreign_recorder.h"

#include <algorithm>
#include <utility>

namespace bgp_platform::xml {

namespace {

constexpr std::size_t kPiece = 1 << 16;

constexpr std::string_view kSpecialInText = "<>&\r";
constexpr std::string_view kSpecialInValues = "<&\"\t\n\r";

std::string_view reference(char letter)
{
    switch (letter) {
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '&':
            return "&amp;";
        case '"':
            return "&quot;";
        case '\t':
            return "&#9;";
        case '\n':
            return "&#10;";
        default:
            return "&#13;";
    }
}

std::string_view or_empty(const char* text)
{
    return text == nullptr ? std::string_view() : std::string_view(text);
}

bool declares(const std::vector<NamespaceDeclaration>& declarations, std::string_view prefix)
{
    return std::any_of(declarations.begin(), declarations.end(),
                       [&](const NamespaceDeclaration& each) { return each.prefix == prefix; });
}

// What an element declares together with what it has from around it, the default namespace always among them: its text
// will stand in another document.
std::vector<NamespaceDeclaration> in_scope(const std::vector<NamespaceDeclaration>& own,
                                           const std::vector<NamespaceDeclaration>& around)
{
    std::vector<NamespaceDeclaration> all = own;
    for (auto outer = around.rbegin(); outer != around.rend(); ++outer) {
        if (!declares(all, outer->prefix)) {
            all.push_back(*outer);
        }
    }
    if (!declares(all, "")) {
        all.push_back({"", ""});
    }
    return all;
}

}  // namespace

void ForeignRecorder::begin(const StartTag& tag, const std::vector<NamespaceDeclaration>& around)
{
    store::ForeignPart part;
    part.name = tag.name;
    part.name_space = or_empty(tag.uri);
    part.line = tag.line;
    size_ += sizeof part + part.name.size() + part.name_space.size();
    parts_.push_back(std::move(part));
    StartTag whole = tag;
    whole.declarations = in_scope(tag.declarations, around);
    start_element(whole);
}

void ForeignRecorder::start_element(const StartTag& tag)
{
    end_tag();
    ++parts_.back().elements;
    append("<");
    append_name(or_empty(tag.prefix), tag.name);
    for (const NamespaceDeclaration& declaration : tag.declarations) {
        append_declaration(declaration);
    }
    for (const Attribute& attribute : tag.attributes) {
        append(" ");
        append_name(attribute.prefix, attribute.name);
        append("=\"");
        append_escaped(attribute.value, kSpecialInValues);
        append("\"");
    }
    begun_ = true;
}

void ForeignRecorder::append_declaration(const NamespaceDeclaration& declaration)
{
    append(declaration.prefix.empty() ? " xmlns" : " xmlns:");
    append(declaration.prefix);
    append("=\"");
    append_escaped(declaration.uri, kSpecialInValues);
    append("\"");
}

void ForeignRecorder::end_element(const char* name, const char* prefix)
{
    if (begun_) {
        append("/>");
        begun_ = false;
        return;
    }
    append("</");
    append_name(or_empty(prefix), name);
    append(">");
}

void ForeignRecorder::text(std::string_view text)
{
    end_tag();
    append_escaped(text, kSpecialInText);
}

void ForeignRecorder::comment(std::string_view text)
{
    end_tag();
    append("<!--");
    append(text);
    append("-->");
}

void ForeignRecorder::instruction(std::string_view target, std::string_view content)
{
    end_tag();
    append("<?");
    append(target);
    if (!content.empty()) {
        append(" ");
        append(content);
    }
    append("?>");
}

std::vector<store::ForeignPart> ForeignRecorder::take()
{
    size_ = 0;
    return std::exchange(parts_, {});
}

void ForeignRecorder::end_tag()
{
    if (begun_) {
        append(">");
        begun_ = false;
    }
}

void ForeignRecorder::append(std::string_view text)
{
    store::ForeignPart& part = parts_.back();
    if (part.text.empty() || part.text.back().size() + text.size() > kPiece) {
        if (!part.text.empty()) {
            part.text.back().shrink_to_fit();
        }
        part.text.emplace_back();
    }
    part.text.back() += text;
    part.bytes += text.size();
    size_ += text.size();
}

void ForeignRecorder::append_escaped(std::string_view text, std::string_view special)
{
    for (;;) {
        const std::size_t plain = std::min(text.find_first_of(special), text.size());
        append(text.substr(0, plain));
        if (plain == text.size()) {
            return;
        }
        append(reference(text[plain]));
        text.remove_prefix(plain + 1);
    }
}

void ForeignRecorder::append_name(std::string_view prefix, std::string_view name)
{
    if (!prefix.empty()) {
        append(prefix);
        append(":");
    }
    append(name);
}

}  // namespace bgp_platform::xml
