// Text for people, line by line: in colours or without, as wide as the terminal or as long as it is.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace bgp_rehearse {

struct Look {
    bool colour = false;
    std::optional<std::size_t> columns;  // that lines are wrapped at; none: they are not
};

enum class Paint { Plain, Bold, Red, Green, Yellow };

class Page {
public:
    Page(const Look& look, int file) : look_(look), file_(file) {}

    // A text in a colour; as it is on a page without colours.
    std::string painted(std::string_view text, Paint paint) const;

    // A line that is never wrapped.
    void line(std::string_view text);

    // A line that is wrapped at words, with a text at its right end, or at that of the line below where there is no room.
    struct Line {
        std::size_t indent = 0;
        std::string_view mark;  // before the text, never wrapped
        Paint paint = Paint::Plain;
        std::string_view text;
        std::size_t hang = 0;       // where its further lines begin
        std::string_view at_right;  //
        Paint text_paint = Paint::Plain;
    };
    void line(const Line& line);

    // Writes what there is when it is a lot. A report of many changes goes out in pieces.
    void flush();

    // Writes all; false, with errno set, when not everything could be written.
    [[nodiscard]] bool finish();

private:
    void write();
    void add_at_right(std::size_t column, std::string_view text);

    Look look_;
    int file_;
    int error_ = 0;  // of the first write that failed
    std::string out_;
};

}  // namespace bgp_rehearse
