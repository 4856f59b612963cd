// A configuration as XML, row by row. Nothing but the rows on the way to the present one and a piece of text is kept.
#include "xml/config_writer.h"

#include <libxml/chvalid.h>
#include <libxml/entities.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "schema/quote.h"
#include "store/changes.h"
#include "xml/load_format.h"

namespace bgp_platform::xml {

namespace {

using schema::Node;
using schema::NodeKind;
using schema::Value;
using store::List;
using store::Row;

// Where a document's bytes go.
class Sink {
public:
    Sink() = default;
    virtual ~Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual void write(std::string_view bytes) = 0;  // throws WriteError
};

class DescriptorSink : public Sink {
public:
    explicit DescriptorSink(int descriptor) : descriptor_(descriptor) {}

    void write(std::string_view bytes) override
    {
        while (!bytes.empty()) {
            const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
            if (count > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(count));
            } else if (count == 0) {
                fail(EIO);  // no progress, now or ever
            } else if (errno != EINTR) {
                fail(errno);
            }
        }
    }

private:
    [[noreturn]] static void fail(int error)
    {
        throw WriteError("cannot write the configuration: " + std::generic_category().message(error));
    }

    int descriptor_;
};

class TextSink : public Sink {
public:
    void write(std::string_view bytes) override { text_ += bytes; }
    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

enum class Content { Plain, Escaped, Forbidden };

Content content_of_ascii(unsigned char byte)
{
    if (byte == '&' || byte == '<' || byte == '>' || byte == '\r') {
        return Content::Escaped;
    }
    return byte < 0x20 && byte != '\t' && byte != '\n' ? Content::Forbidden : Content::Plain;
}

// Whether a text can stand in XML as it is, with some characters escaped, or not at all: XML has no way to write most
// control characters, nor bytes that are not UTF-8.
Content content_of(std::string_view text)
{
    Content content = Content::Plain;
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = static_cast<unsigned char>(text[at]);
        int length = 1;
        Content here = Content::Plain;
        if (byte < 0x80) {
            here = content_of_ascii(byte);
        } else {
            length = static_cast<int>(text.size() - at);
            const int code = xmlGetUTF8Char(reinterpret_cast<const unsigned char*>(text.data() + at), &length);
            here = code >= 0 && xmlIsCharQ(static_cast<unsigned>(code)) ? Content::Plain : Content::Forbidden;
        }
        if (here == Content::Forbidden) {
            return here;
        }
        content = here == Content::Escaped ? here : content;
        at += static_cast<std::size_t>(length);
    }
    return content;
}

// A text that is to stand between tags or quotes.
std::string escaped_for_xml(const std::string& text)
{
    const std::unique_ptr<xmlChar, xmlFreeFunc> escaped(
        xmlEncodeSpecialChars(nullptr, reinterpret_cast<const xmlChar*>(text.c_str())), xmlFree);
    if (!escaped) {
        throw std::bad_alloc();
    }
    return reinterpret_cast<const char*>(escaped.get());
}

class Writer {
public:
    Writer(Sink* sink, const store::Configuration& configuration, const Progress& progress)
        : sink_(sink), configuration_(configuration), progress_(progress)
    {
    }

    void write_document()
    {
        out_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        open_element(kConfigElement, kConfigNamespace);
        write_top_nodes();
        write_foreign();
        close_element(kConfigElement);
        finish();
    }

    void write_elements()
    {
        write_top_nodes();
        finish();
    }

private:
    static constexpr std::size_t kPiece = 1 << 16;
    static constexpr std::size_t kReportEvery = 1 << 20;

    void finish()
    {
        hand_over();
        report(0);
    }

    void hand_over()
    {
        sink_->write(out_);
        written_ += out_.size();
        out_.clear();
    }

    void report(std::size_t every)
    {
        if (progress_ && written_ - reported_ >= every) {
            reported_ = written_;
            progress_(reported_, 0);
        }
    }

    // An element that is closed before anything stands in it is written as <name/>.
    void open_element(std::string_view name, std::string_view name_space)
    {
        begin_line();
        out_.append("<").append(name);
        if (!name_space.empty()) {
            out_.append(" xmlns=\"").append(escaped_for_xml(std::string(name_space))).append("\"");
        }
        begun_ = true;
        ++depth_;
    }

    void close_element(std::string_view name)
    {
        --depth_;
        if (begun_) {
            out_ += "/>";
        } else {
            begin_line();
            out_.append("</").append(name).append(">");
        }
        end_line();
    }

    void begin_line()
    {
        if (begun_) {
            out_ += ">\n";
            begun_ = false;
        }
        out_.append(2 * depth_, ' ');
    }

    void end_line()
    {
        out_ += '\n';
        begun_ = false;
        if (out_.size() >= kPiece) {
            hand_over();
        }
    }

    void write_top_nodes() { write_nodes(configuration_.schema().top_nodes(), configuration_.root()); }

    void write_foreign()
    {
        for (const store::ForeignPart& part : configuration_.foreign()) {
            begin_line();
            for (const std::string& piece : part.text) {
                out_ += piece;
                if (out_.size() >= kPiece) {
                    hand_over();
                }
            }
            end_line();
            report(kReportEvery);
        }
    }

    void write_nodes(const std::vector<const Node*>& nodes, const Row& row)
    {
        for (const Node* node : nodes) {
            write_node(*node, row);
        }
    }

    void write_node(const Node& node, const Row& row)
    {
        switch (node.kind) {
            case NodeKind::Leaf:
                write_leaf(node, row.value(node.slot));
                break;
            case NodeKind::LeafList:
                row.list(node.slot).for_each([&](const Row& entry) { write_leaf(node, entry.value(0)); });
                break;
            case NodeKind::List:
                row.list(node.slot).for_each([&](const Row& entry) { write_entry(node, entry); });
                break;
            case NodeKind::Container:
            case NodeKind::Presence:
                if (holds_content(node, row)) {
                    start(node);
                    write_nodes(node.children, row);
                    end(node);
                }
                break;
        }
    }

    static bool holds_content(const Node& node, const Row& row)
    {
        switch (node.kind) {
            case NodeKind::Leaf:
            case NodeKind::Presence:
                return !row.value(node.slot).absent();
            case NodeKind::LeafList:
            case NodeKind::List:
                return !row.list(node.slot).empty();
            case NodeKind::Container:
                break;
        }
        for (const Node* child : node.children) {
            if (holds_content(*child, row)) {
                return true;
            }
        }
        return false;
    }

    void write_entry(const Node& list, const Row& entry)
    {
        trail_.push_back(&entry);
        start(list);
        write_nodes(list.children, entry);
        end(list);
        trail_.pop_back();
        report(kReportEvery);
    }

    void write_leaf(const Node& leaf, const Value& value)
    {
        if (value.absent()) {
            return;
        }
        start(leaf);
        const std::size_t behind_name = out_.size();
        out_ += '>';
        if (value.is_text()) {
            append_text(leaf, value.bytes());
        } else {
            leaf.type->append_text(value, &out_);
        }
        --depth_;
        if (out_.size() == behind_name + 1) {
            out_.back() = '/';
            out_ += '>';
        } else {
            out_.append("</").append(leaf.name).append(">");
        }
        end_line();
    }

    void append_text(const Node& leaf, std::string_view text)
    {
        switch (content_of(text)) {
            case Content::Plain:
                out_ += text;
                break;
            case Content::Escaped:
                out_ += escaped_for_xml(std::string(text));
                break;
            case Content::Forbidden:
                throw WriteError(store::keypath(trail_, leaf) + ": " +
                                 (is_secret(leaf) ? "the value" : schema::in_quotes(text)) +
                                 " holds a character that XML cannot hold");
        }
    }

    void start(const Node& node)
    {
        const bool of_other_module = node.parent == nullptr || node.parent->module != node.module;
        open_element(node.name, of_other_module ? std::string_view(node.module->uri) : std::string_view());
    }

    void end(const Node& node) { close_element(node.name); }

    Sink* sink_;
    const store::Configuration& configuration_;
    const Progress& progress_;
    store::Trail trail_;
    std::string out_;        // what is not handed over yet
    std::size_t depth_ = 0;  // elements that are open
    bool begun_ = false;     // the innermost one's tag is not ended yet
    std::size_t written_ = 0;
    std::size_t reported_ = 0;
};

}  // namespace

void write_config(const store::Configuration& configuration, int descriptor, const Progress& progress)
{
    DescriptorSink sink(descriptor);
    Writer(&sink, configuration, progress).write_document();
}

std::string config_text(const store::Configuration& configuration, bool wrapped)
{
    TextSink sink;
    const Progress none;
    Writer writer(&sink, configuration, none);
    wrapped ? writer.write_document() : writer.write_elements();
    return sink.take();
}

}  // namespace bgp_platform::xml
