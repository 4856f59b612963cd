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

// The lines that a node's element begins and ends with, and what stands inside it. A leaf's stand on one line.
struct Element {
    Element(const Node& of, std::size_t depth) : node(&of)
    {
        const bool of_other_module = of.parent == nullptr || of.parent->module != of.module;
        const std::string indent(2 * depth, ' ');
        start = indent + "<" + of.name +
                (of_other_module ? " xmlns=\"" + escaped_for_xml(of.module->uri) + "\"" : std::string()) + ">";
        end = "</" + of.name + ">\n";
        if (of.kind != NodeKind::Leaf && of.kind != NodeKind::LeafList) {
            start += '\n';
            end.insert(0, indent);
        }
    }

    const Node* node;
    std::string start;
    std::string end;
    std::vector<Element> inside;  // made when something is to be written there
};

std::vector<Element> elements_of(const std::vector<const Node*>& nodes, std::size_t depth)
{
    std::vector<Element> elements;
    elements.reserve(nodes.size());
    for (const Node* node : nodes) {
        elements.emplace_back(*node, depth);
    }
    return elements;
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
        out_.append("<").append(kConfigElement).append(" xmlns=\"").append(kConfigNamespace).append("\">\n");
        const std::size_t begun = position();
        depth_ = 1;
        write_top_nodes();
        write_foreign();
        end_element(begun, std::string("</") + kConfigElement + ">\n");
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

    // In the document. While it stays, `out_` keeps what was written before.
    std::size_t position() const noexcept { return written_ + out_.size(); }

    // An element that is ended where its beginning is, before anything stands in it, is written as <name/>.
    void end_element(std::size_t begun, std::string_view end)
    {
        if (position() == begun) {
            out_.replace(out_.size() - 2, 2, "/>\n");
        } else {
            out_ += end;
        }
        end_line();
    }

    void end_line()
    {
        if (out_.size() >= kPiece) {
            hand_over();
        }
    }

    void write_top_nodes()
    {
        std::vector<Element> top = elements_of(configuration_.schema().top_nodes(), depth_);
        write_elements(&top, configuration_.root());
    }

    void write_foreign()
    {
        for (const store::ForeignPart& part : configuration_.foreign()) {
            out_.append(2 * depth_, ' ');
            for (const std::string& piece : part.text) {
                out_ += piece;
                if (out_.size() >= kPiece) {
                    hand_over();
                }
            }
            out_ += '\n';
            end_line();
            report(kReportEvery);
        }
    }

    void write_elements(std::vector<Element>* elements, const Row& row)
    {
        for (Element& element : *elements) {
            write_element(&element, row);
        }
    }

    void write_element(Element* element, const Row& row)
    {
        const Node& node = *element->node;
        switch (node.kind) {
            case NodeKind::Leaf:
                write_leaf(*element, row.value(node.slot));
                break;
            case NodeKind::LeafList:
                row.list(node.slot).for_each([&](const Row& entry) { write_leaf(*element, entry.value(0)); });
                break;
            case NodeKind::List:
                row.list(node.slot).for_each([&](const Row& entry) { write_entry(element, entry); });
                break;
            case NodeKind::Container:
                write_container(element, row);
                break;
            case NodeKind::Presence:
                if (!row.value(node.slot).absent()) {
                    end_element(write_inside(element, row), element->end);
                }
                break;
        }
    }

    // Begins the element and writes what stands in it. Returns where it began.
    std::size_t write_inside(Element* element, const Row& row)
    {
        out_ += element->start;
        const std::size_t begun = position();
        ++depth_;
        if (element->inside.empty()) {
            element->inside = elements_of(element->node->children, depth_);
        }
        write_elements(&element->inside, row);
        --depth_;
        return begun;
    }

    // One in which nothing stands is not there.
    void write_container(Element* element, const Row& row)
    {
        const std::size_t begun = write_inside(element, row);
        if (position() == begun) {
            out_.resize(out_.size() - element->start.size());
        } else {
            end_element(begun, element->end);
        }
    }

    void write_entry(Element* list, const Row& entry)
    {
        trail_.push_back(&entry);
        end_element(write_inside(list, entry), list->end);
        trail_.pop_back();
        report(kReportEvery);
    }

    void write_leaf(const Element& leaf, const Value& value)
    {
        if (value.absent()) {
            return;
        }
        out_ += leaf.start;
        const std::size_t behind_name = out_.size();
        if (value.is_text()) {
            append_text(*leaf.node, value.bytes());
        } else {
            leaf.node->type->append_text(value, &out_);
        }
        if (out_.size() == behind_name) {
            out_.back() = '/';
            out_ += ">\n";
        } else {
            out_ += leaf.end;
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

    Sink* sink_;
    const store::Configuration& configuration_;
    const Progress& progress_;
    store::Trail trail_;
    std::string out_;        // what is not handed over yet
    std::size_t depth_ = 0;  // elements that are open
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
