// HTML as a stream: written piece by piece, never held as a whole. Every text of a page comes through here and is escaped
// here, at the one place that knows how.
//
//     Markup page(file);
//     page.open("p", {{"class", "reason"}}).text("2 rows of ").foreign(name).close();
//     page.finish();
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bgp_rehearse {

class Markup {
public:
    explicit Markup(int file) : file_(file) {}

    // Of an element, by name. A value is any text; an attribute without one is just there ("hidden").
    using Attributes = std::initializer_list<std::pair<std::string_view, std::string_view>>;

    Markup& open(std::string_view element, Attributes attributes = {});
    Markup& close();                                                        // the innermost
    Markup& element(std::string_view element, Attributes attributes = {});  // that has no content: <meta>
    Markup& text(std::string_view text);                                    // control characters made visible
    Markup& foreign(std::string_view text);                                 // of a configuration or a library
    Markup& line(std::string_view element, std::string_view text, Attributes attributes = {});

    // What is no text: a style, a script, base64. It must not hold "</".
    Markup& raw(std::string_view content);

    // False, with errno set, when not everything could be written.
    [[nodiscard]] bool finish();

private:
    void begin(std::string_view element, Attributes attributes);
    void write_when_large();
    void write();

    int file_;
    int error_ = 0;  // of the first write that failed
    std::vector<std::string> open_;
    std::string out_;
};

// A text as it may stand in an element and between the quotes of an attribute.
std::string html_text(std::string_view text);

}  // namespace bgp_rehearse
