// Templates and their arguments as text.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "calls/readings.h"
#include "keypath/keypath.h"
#include "store/changes.h"

namespace bgp_platform::capi {

namespace {

std::string plain_text(const confd_value_t* value)
{
    if (value == nullptr) {
        return {};
    }
    std::array<char, 256> small{};
    const int length = plain_value_text(small.data(), static_cast<int>(small.size()), *value);
    if (static_cast<std::size_t>(length) < small.size()) {
        return {small.data(), static_cast<std::size_t>(length)};
    }
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    plain_value_text(text.data(), length + 1, *value);
    text.pop_back();
    return text;
}

// As a text key stands between braces: quoted where it would not be read back as one key.
std::string quoted(std::string_view text)
{
    static const schema::Type kText;
    std::string out;
    store::append_key(kText, schema::Value::of_text(text), &out);
    return out;
}

bool octets_show_letters(const confd_buf_t& octets)
{
    return std::any_of(octets.ptr, octets.ptr + octets.size,
                       [](unsigned char octet) { return octet >> 4 > 9 || (octet & 0xF) > 9; });
}

class Formatter {
public:
    Formatter(const char* format, va_list arguments, KeypathCache* keypaths) : at_(format), keypaths_(keypaths)
    {
        va_copy(arguments_, arguments);
    }
    ~Formatter() { va_end(arguments_); }
    Formatter(const Formatter&) = delete;
    Formatter& operator=(const Formatter&) = delete;

    std::string format()
    {
        text_.reserve(kUsualLength);
        while (*at_ != '\0') {
            if (!in_key_ && names()) {
                continue;
            }
            const std::size_t before = text_.size();
            if (*at_ != '%' || !conversion()) {
                literal(*at_++);
            } else if (text_.size() != before) {
                key_starts_ = false;
            }
        }
        if (keypaths_ != nullptr) {
            keypaths_->note(met_);
        }
        return std::move(text_);
    }

private:
    // What stands outside braces, up to the next brace or conversion; false when that is nothing.
    bool names()
    {
        const std::size_t length = std::strcspn(at_, "{%");
        text_.append(at_, length);
        at_ += length;
        return length > 0;
    }

    // As parse_template() reads it: a quote opens at the start of a key only, and a brace opens none within one.
    void literal(char letter)
    {
        const bool key_starts = key_starts_;
        key_starts_ = false;
        if (in_quotes_ && letter == '\\' && *at_ != '\0') {
            text_ += letter;
            letter = *at_++;
        } else if (in_quotes_) {
            in_quotes_ = letter != '"';
        } else if (in_key_) {
            in_key_ = letter != '}';
            in_quotes_ = key_starts && letter == '"';
            key_starts_ = letter == ' ';
            keys_ += letter == ' ' && !key_starts ? 1 : 0;
        } else if (letter == '{') {
            open();
        }
        text_ += letter;
    }

    void open()
    {
        in_key_ = true;
        key_starts_ = true;
        keys_ = 0;
        record_ = nullptr;
        if (keypaths_ == nullptr) {
            return;
        }
        if (const schema::Node* const list = list_of(text_)) {
            record_ = list->entry;
        }
    }

    // The list that a path without its last key names; null when the schema has none. A slash before the brace
    // ("/prefix-list/{") stands for nothing.
    const schema::Node* list_of(std::string_view path) const
    {
        const schema::Node* const node = keypaths_->node_of(path.substr(0, path.find_last_not_of('/') + 1), nullptr);
        return node != nullptr && node->is_list() ? node : nullptr;
    }

    bool conversion()
    {
        if (take("%d")) {
            text_ += std::to_string(va_arg(arguments_, int));
        } else if (take("%u")) {
            text_ += std::to_string(va_arg(arguments_, unsigned int));
        } else if (take("%hu")) {
            text_ += std::to_string(static_cast<unsigned short>(va_arg(arguments_, int)));
        } else if (take("%s")) {
            const char* const text = va_arg(arguments_, const char*);
            add_text(text == nullptr ? "" : text);
        } else if (take("%x")) {
            key(va_arg(arguments_, const confd_value_t*));
        } else if (take("%*x")) {
            tuple();
        } else {
            return false;
        }
        return true;
    }

    void tuple()
    {
        const int count = va_arg(arguments_, int);
        const confd_value_t* const values = va_arg(arguments_, const confd_value_t*);
        for (int i = 0; i < count; ++i) {
            if (i > 0) {
                text_ += ' ';
                ++keys_;
            }
            key(values + i);
        }
    }

    void key(const confd_value_t* value)
    {
        schema::Value typed;
        if (value != nullptr && record_ != nullptr && keys_ < record_->keys &&
            record_->values[keys_]->type->from_confd(*value, &typed)) {
            const std::size_t start = text_.size();
            store::append_key(*record_->values[keys_]->type, typed, &text_);
            met_ |= start < text_.size() && text_[start] == '"' ? bit(Reading::KeyIsQuotedBlanksAreTaken) : 0;
        } else {
            add_text(plain_text(value));
        }
        met_ |= value != nullptr && shows_letters(*value) ? bit(Reading::OctetsAreInLowerCase) : 0;
    }

    void add_text(std::string_view text)
    {
        const std::string key = in_key_ ? quoted(text) : std::string(text);
        met_ |= key != text ? bit(Reading::KeyIsQuotedBlanksAreTaken) : 0;
        text_ += key;
    }

    bool take(std::string_view expected)
    {
        if (std::strncmp(at_, expected.data(), expected.size()) != 0) {
            return false;
        }
        at_ += expected.size();
        return true;
    }

    static constexpr std::size_t kUsualLength = 96;

    const char* at_;
    KeypathCache* keypaths_;
    va_list arguments_;
    std::string text_;
    bool in_key_ = false;      // between braces
    bool key_starts_ = false;  // behind the brace or a blank
    bool in_quotes_ = false;
    uint32_t met_ = 0;      // readings that the text depends on, as bits
    std::size_t keys_ = 0;  // of the brace that is open: keys written before the one at hand
    const schema::Record* record_ = nullptr;
};

}  // namespace

bool shows_letters(const confd_value_t& value)
{
    switch (value.type) {
        case C_BINARY:
        case C_HEXSTR:
            return octets_show_letters(value.val.buf);
        case C_LIST:
            return std::any_of(value.val.list.ptr, value.val.list.ptr + value.val.list.size,
                               [](const confd_value_t& entry) { return shows_letters(entry); });
        default:
            return false;
    }
}

std::string key_tuple_text(const schema::Node& list, const std::vector<schema::Value>& keys)
{
    std::string text = "{";
    for (std::size_t i = 0; i < keys.size(); ++i) {
        text += i == 0 ? "" : " ";
        store::append_key(*list.entry->values[i]->type, keys[i], &text);
    }
    return text + "}";
}

std::string keypath_text(const store::Path& path)
{
    std::vector<const schema::Node*> nodes;
    for (const schema::Node* node = path.node; node != nullptr; node = node->parent) {
        nodes.push_back(node);
    }
    std::string text;
    auto selector = path.entries.begin();
    for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
        text.append("/").append((*node)->name);
        if (selector == path.entries.end() || selector->list != *node) {
            continue;
        }
        if (selector->position >= 0) {
            text.append("[").append(std::to_string(selector->position)).append("]");
        } else {
            text += key_tuple_text(*selector->list, selector->keys);
        }
        ++selector;
    }
    return text;
}

std::string format_template(const char* format, va_list arguments, KeypathCache* keypaths)
{
    return format == nullptr ? std::string() : Formatter(format, arguments, keypaths).format();
}

}  // namespace bgp_platform::capi
