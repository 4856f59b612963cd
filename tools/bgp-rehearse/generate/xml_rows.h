// Writes the load format row by row, a line for each row, through a buffer to a sink.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include "generate/settings.h"

namespace bgp_generator {

// The names and values given are written as they are: none of them holds a character that XML would have escaped.
class XmlRows {
public:
    explicit XmlRows(const Sink& sink) : sink_(sink) {}

    void line(std::string_view text) { put(text, "\n"); }

    // A container around tables, on lines of its own; `attributes` as it stands behind the name.
    void open(std::string_view name, std::string_view attributes = {}) { put("<", name, attributes, ">\n"); }
    void close(std::string_view name)
    {
        put("</", name, ">\n");
        flush_when_full();
    }

    // A row, on one line; a row within a row may follow its leaves.
    void begin(std::string_view name, std::string_view attributes = {}) { put("<", name, attributes, ">"); }
    void end(std::string_view name)
    {
        put("</", name, ">\n");
        flush_when_full();
    }

    void leaf(std::string_view name, std::string_view value) { put("<", name, ">", value, "</", name, ">"); }
    void leaf(std::string_view name, const char* value) { leaf(name, std::string_view(value)); }
    template <typename Number, typename = std::enable_if_t<std::is_integral_v<Number>>>
    void leaf(std::string_view name, Number value)
    {
        leaf(name, std::string_view(std::to_string(value)));
    }

    // False once the sink did not take a piece; nothing is kept from then on.
    bool good() const noexcept { return good_; }
    bool finish()
    {
        flush();
        return good_;
    }

private:
    static constexpr std::size_t kPiece = 1 << 16;

    template <typename... Parts>
    void put(const Parts&... parts)
    {
        (buffer_.append(parts), ...);
    }
    void flush_when_full()
    {
        if (buffer_.size() >= kPiece) {
            flush();
        }
    }
    void flush()
    {
        good_ = good_ && sink_(buffer_);
        buffer_.clear();
    }

    const Sink& sink_;
    std::string buffer_;
    bool good_ = true;
};

}  // namespace bgp_generator
