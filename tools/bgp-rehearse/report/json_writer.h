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
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bgp_rehearse {

class JsonWriter {
public:
    // Takes what is written piece by piece; false, with errno set, when it could not be.
    using Sink = std::function<bool(std::string_view)>;

    explicit JsonWriter(int file);
    explicit JsonWriter(Sink sink) : sink_(std::move(sink)) {}

    enum Layout { Inline, Lines, Dense };  // Lines: each member or element has one of its own; Dense: without blanks

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

    Sink sink_;
    int error_ = 0;  // of the first write that failed
    std::vector<Level> levels_;
    bool named_ = false;  // the next value follows its name
    std::string out_;
};

// A text as JSON in ASCII; what is not UTF-8 becomes U+FFFD.
void append_json(std::string_view text, std::string* json);

}  // namespace bgp_rehearse
