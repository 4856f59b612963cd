// JSON as a stream: written piece by piece, never held as a whole, in ASCII (a terminal would act on some of the characters
// beyond it, and on DEL).
//
//     JsonWriter json(file);
//     json.begin('{', JsonWriter::Lines);
//     json.name("calls").number(3);
//     json.name("log").begin('[').text("one").text("two").end();
//     json.end();
//     json.finish();
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace bgp_rehearse {

class JsonWriter {
public:
    explicit JsonWriter(int file) : file_(file) {}

    enum Layout { Inline, Lines };  // whether each member or element has a line of its own

    JsonWriter& begin(char bracket, Layout layout = Inline);  // '{' or '['
    JsonWriter& end();
    JsonWriter& name(std::string_view name);  // of the value that follows
    JsonWriter& text(std::string_view text);
    JsonWriter& text_or_null(std::string_view text);  // null for ""
    JsonWriter& number(std::size_t number);
    JsonWriter& signed_number(long long number);
    JsonWriter& number(double number);
    JsonWriter& truth(bool truth);
    JsonWriter& null();

    // What was put together since the last piece went out.
    const std::string& written_so_far() const noexcept { return out_; }

    // False, with errno set, when not everything could be written.
    [[nodiscard]] bool finish();

private:
    struct Level {
        char closing;
        Layout layout;
        bool empty = true;
    };
    void separate();
    void new_line();
    void write();
    JsonWriter& raw(std::string_view text);

    int file_;
    int error_ = 0;  // of the first write that failed
    std::vector<Level> levels_;
    bool named_ = false;  // the next value follows its name
    std::string out_;
};

// A text as JSON in ASCII; what is not UTF-8 becomes U+FFFD.
void append_json(std::string_view text, std::string* json);

}  // namespace bgp_rehearse
