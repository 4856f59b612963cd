// The grammar of keypaths, without any look at the schema: tells the pieces of a text, in order, to whoever takes them.
//
// Of a PieceTaker are called, with views of what is gone after the call,
//
//     child(std::string_view prefix, std::string_view name)
//     begin_keys(), key(KeySource::Kind, std::string_view literal) for each, end_keys()
//     index(KeySource::Kind, std::string_view digits)
//     splice(std::string_view before)   // a slash, or nothing
//
// A path given as text is the same as a template, but without conversions: a percent sign is itself, and no splice.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "calls/readings.h"
#include "keypath/keypath.h"

namespace bgp_platform::capi {

template <typename PieceTaker>
class KeypathParser {
public:
    KeypathParser(std::string_view text, bool conversions, PieceTaker* taker)
        : text_(text), conversions_(conversions), taker_(*taker)
    {
    }

    // Returns what is wrong with the text, empty when nothing is; the pieces before that have been told then.
    std::string parse()
    {
        while (error_.empty() && !at_end()) {
            parse_piece();
        }
        return std::move(error_);
    }

    // The readings of open questions that the text depends on, as bits, when it has been parsed.
    uint32_t readings() const noexcept { return readings_; }

private:
    bool at_end() const { return at_ == text_.size(); }
    char peek() const { return at_end() ? '\0' : text_[at_]; }
    bool take(std::string_view expected)
    {
        if (text_.substr(at_, expected.size()) != expected) {
            return false;
        }
        at_ += expected.size();
        return true;
    }
    bool conversion_here() const { return conversions_ && peek() == '%'; }
    void fail(std::string what) { error_ = std::move(what); }
    bool skip_blanks()
    {
        const std::size_t start = at_;
        while (peek() == ' ') {
            ++at_;
        }
        return at_ != start;
    }
    void meet(Reading reading) { readings_ |= bit(reading); }

    void parse_piece()
    {
        if (conversion_here() && take("%s")) {
            taker_.splice({});
        } else if (take("{")) {
            parse_keys();
        } else if (take("[")) {
            parse_index();
        } else if (take("/")) {
            parse_child();
        } else if (at_ == 0) {
            fail("a keypath begins with a slash");
        } else {
            fail(std::string("unexpected '") + peek() + "'");
        }
    }

    void parse_child()
    {
        if (peek() == '{') {  // "/prefix-list/{name}": the slash stands for nothing
            meet(Reading::KeyIsQuotedBlanksAreTaken);
            return;
        }
        if (conversion_here() && take("%s")) {
            taker_.splice("/");
            return;
        }
        const std::size_t start = at_;
        while (stands_in_name(peek())) {
            ++at_;
        }
        const std::string_view text = text_.substr(start, at_ - start);
        const std::size_t colon = text.find(':');
        const std::string_view name = colon == std::string_view::npos ? text : text.substr(colon + 1);
        if (name.empty()) {
            fail("a slash without a name behind it");
            return;
        }
        taker_.child(colon == std::string_view::npos ? std::string_view() : text.substr(0, colon), name);
    }

    static bool stands_in_name(char letter)
    {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= '0' && letter <= '9') || letter == '_' || letter == '-' || letter == '.' || letter == ':';
    }

    void parse_keys()
    {
        taker_.begin_keys();
        bool blank = skip_blanks();
        if (blank) {
            meet(Reading::KeyIsQuotedBlanksAreTaken);
        }
        while (error_.empty() && peek() != '}') {
            if (at_end()) {
                fail("a brace is not closed");
                return;
            }
            parse_key();
            if (!at_end() && peek() != ' ' && peek() != '}' && error_.empty()) {
                fail("a key is made of two pieces");
            }
            blank = skip_blanks();
        }
        if (blank) {
            meet(Reading::KeyIsQuotedBlanksAreTaken);
        }
        take("}");
        taker_.end_keys();
    }

    void parse_key()
    {
        if (conversion_here()) {
            taker_.key(parse_conversion(), {});
            return;
        }
        if (take("\"")) {
            meet(Reading::KeyIsQuotedBlanksAreTaken);
            parse_quoted();
            return;
        }
        const std::size_t start = at_;
        while (!at_end() && peek() != ' ' && peek() != '}' && !conversion_here()) {
            ++at_;
        }
        taker_.key(KeySource::Kind::Literal, text_.substr(start, at_ - start));
    }

    void parse_quoted()
    {
        std::string literal;
        while (!take("\"")) {
            if (peek() == '\\') {
                ++at_;
            }
            if (at_end()) {
                fail("a quote is not closed");
                return;
            }
            if (conversion_here()) {
                fail("a conversion between quotes: a text key is quoted by itself");
                return;
            }
            literal += text_[at_++];
        }
        taker_.key(KeySource::Kind::Literal, literal);
    }

    KeySource::Kind parse_conversion()
    {
        static constexpr struct {
            std::string_view text;
            KeySource::Kind kind;
        } kConversions[] = {{"%d", KeySource::Kind::Int},    {"%u", KeySource::Kind::Unsigned},
                            {"%hu", KeySource::Kind::Short}, {"%s", KeySource::Kind::Text},
                            {"%x", KeySource::Kind::Value},  {"%*x", KeySource::Kind::Tuple}};
        for (const auto& conversion : kConversions) {
            if (take(conversion.text)) {
                if (conversion.kind == KeySource::Kind::Short) {
                    meet(Reading::ShortNumberInPathIsTaken);
                }
                return conversion.kind;
            }
        }
        fail("a conversion that keypaths do not have: " + std::string(text_.substr(at_, 3)));
        return KeySource::Kind::Literal;
    }

    void parse_index()
    {
        KeySource::Kind kind = KeySource::Kind::Literal;
        std::string_view digits;
        if (conversion_here()) {
            kind = parse_conversion();
        } else {
            const std::size_t start = at_;
            while (peek() >= '0' && peek() <= '9') {
                ++at_;
            }
            digits = text_.substr(start, at_ - start);
        }
        const bool is_position = kind == KeySource::Kind::Int || kind == KeySource::Kind::Unsigned || !digits.empty();
        if (error_.empty() && (!is_position || !take("]"))) {
            fail("a position is a number in square brackets");
        }
        taker_.index(kind, digits);
    }

    std::string_view text_;
    bool conversions_;
    PieceTaker& taker_;
    std::size_t at_ = 0;
    std::string error_;
    uint32_t readings_ = 0;
};

}  // namespace bgp_platform::capi
