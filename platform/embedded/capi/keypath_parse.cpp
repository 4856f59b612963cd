// Templates into plans: the grammar of keypaths, without any look at the schema.
#include <cctype>

#include "capi/keypath.h"

namespace bgp_platform::capi {

namespace {

class Parser {
public:
    Parser(std::string_view text, bool conversions) : text_(text), conversions_(conversions)
    {
        plan_.steps.reserve(kUsualSteps);
    }

    Plan parse()
    {
        while (plan_.error.empty() && !at_end()) {
            parse_piece();
        }
        return std::move(plan_);
    }

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
    void fail(std::string what) { plan_.error = std::move(what); }
    void skip_blanks()
    {
        while (peek() == ' ') {
            ++at_;
        }
    }

    void parse_piece()
    {
        if (conversion_here() && take("%s")) {
            add(Step::Kind::Splice);
        } else if (take("{")) {
            parse_keys();
        } else if (take("[")) {
            parse_index();
        } else if (take("/")) {
            parse_child();
        } else if (plan_.steps.empty()) {
            fail("a keypath begins with a slash");
        } else {
            fail(std::string("unexpected '") + peek() + "'");
        }
    }

    Step& add(Step::Kind kind)
    {
        plan_.steps.emplace_back();
        plan_.steps.back().kind = kind;
        return plan_.steps.back();
    }

    void parse_child()
    {
        if (peek() == '{') {  // "/prefix-list/{name}": the slash stands for nothing
            return;
        }
        if (conversion_here() && take("%s")) {
            add(Step::Kind::Splice).name = "/";
            return;
        }
        const std::size_t start = at_;
        while (!at_end() && (std::isalnum(static_cast<unsigned char>(peek())) != 0 || peek() == '_' || peek() == '-' ||
                             peek() == '.' || peek() == ':')) {
            ++at_;
        }
        const std::string_view name = text_.substr(start, at_ - start);
        const std::size_t colon = name.find(':');
        Step& step = add(Step::Kind::Child);
        if (colon != std::string_view::npos) {
            step.prefix = name.substr(0, colon);
            step.name = name.substr(colon + 1);
        } else {
            step.name = name;
        }
        if (step.name.empty()) {
            fail("a slash without a name behind it");
        }
    }

    void parse_keys()
    {
        Step& step = add(Step::Kind::Keys);
        skip_blanks();
        while (plan_.error.empty() && peek() != '}') {
            if (at_end()) {
                fail("a brace is not closed");
                return;
            }
            step.keys.push_back(parse_key());
            if (!at_end() && peek() != ' ' && peek() != '}' && plan_.error.empty()) {
                fail("a key is made of two pieces");
            }
            skip_blanks();
        }
        take("}");
    }

    KeySource parse_key()
    {
        if (conversion_here()) {
            return parse_conversion();
        }
        KeySource key;
        if (take("\"")) {
            parse_quoted(&key.literal);
            return key;
        }
        while (!at_end() && peek() != ' ' && peek() != '}' && !conversion_here()) {
            key.literal += text_[at_++];
        }
        return key;
    }

    void parse_quoted(std::string* literal)
    {
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
            *literal += text_[at_++];
        }
    }

    KeySource parse_conversion()
    {
        static constexpr struct {
            std::string_view text;
            KeySource::Kind kind;
        } kConversions[] = {{"%d", KeySource::Kind::Int},    {"%u", KeySource::Kind::Unsigned},
                            {"%hu", KeySource::Kind::Short}, {"%s", KeySource::Kind::Text},
                            {"%x", KeySource::Kind::Value},  {"%*x", KeySource::Kind::Tuple}};
        for (const auto& conversion : kConversions) {
            if (take(conversion.text)) {
                return {conversion.kind, {}};
            }
        }
        fail("a conversion that keypaths do not have: " + std::string(text_.substr(at_, 3)));
        return {};
    }

    void parse_index()
    {
        Step& step = add(Step::Kind::Index);
        KeySource number;
        bool is_position = false;
        if (conversion_here()) {
            number = parse_conversion();
            is_position = number.kind == KeySource::Kind::Int || number.kind == KeySource::Kind::Unsigned;
        } else {
            while (std::isdigit(static_cast<unsigned char>(peek())) != 0) {
                number.literal += text_[at_++];
            }
            is_position = !number.literal.empty();
        }
        if (plan_.error.empty() && (!is_position || !take("]"))) {
            fail("a position is a number in square brackets");
        }
        step.keys.push_back(std::move(number));
    }

    static constexpr std::size_t kUsualSteps = 6;

    std::string_view text_;
    bool conversions_;
    std::size_t at_ = 0;
    Plan plan_;
};

}  // namespace

Plan parse_template(std::string_view format)
{
    return Parser(format, true).parse();
}

Plan parse_path_text(std::string_view text)
{
    return Parser(text, false).parse();
}

}  // namespace bgp_platform::capi
