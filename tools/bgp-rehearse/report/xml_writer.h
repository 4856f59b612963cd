// XML as a stream, an element a line. Texts may hold anything: what XML 1.0 has no place for is written as `escaped()` shows
// it.
//
//     XmlWriter xml(file);
//     xml.begin("testcase").attribute("name", "update_ipv6");
//     xml.begin("failure").line("one").line("two").end();
//     xml.end();
//     xml.finish();
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace bgp_rehearse {

class XmlWriter {
public:
    explicit XmlWriter(int file);

    XmlWriter& begin(const char* element);
    XmlWriter& attribute(std::string_view name, std::string_view text);  // before the element's content
    XmlWriter& attribute(std::string_view name, std::size_t number);
    XmlWriter& line(std::string_view text);  // of the element's text, which has no elements then
    XmlWriter& end();

    // False, with errno set, when not everything could be written.
    [[nodiscard]] bool finish();

private:
    struct Level {
        const char* element;
        bool open = true;  // its start tag is
        bool text = false;
    };
    void close_tag();
    void new_line();
    void write();

    int file_;
    int error_ = 0;  // of the first write that failed
    std::vector<Level> levels_;
    std::string out_;
};

// A text as an attribute's value or an element's content.
void append_xml(std::string_view text, std::string* xml);

}  // namespace bgp_rehearse
