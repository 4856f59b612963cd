// A configuration through libxml2's writer, row by row. Nothing but the rows on the way to the present one is kept.
#include "xml/config_writer.h"

#include <libxml/chvalid.h>
#include <libxml/xmlwriter.h>
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

// Where a document's bytes go. A write that fails is kept for check(), and the writer not told, which would print it.
class Sink {
public:
    Sink() = default;
    virtual ~Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual void write(std::string_view bytes) = 0;
    virtual void check() const {}  // throws when a write has failed
    std::size_t bytes() const { return bytes_; }

    static int write_bytes(void* sink, const char* bytes, int size)
    {
        const std::string_view piece(bytes, static_cast<std::size_t>(size));
        static_cast<Sink*>(sink)->write(piece);
        static_cast<Sink*>(sink)->bytes_ += piece.size();
        return size;
    }

private:
    std::size_t bytes_ = 0;
};

class DescriptorSink : public Sink {
public:
    explicit DescriptorSink(int descriptor) : descriptor_(descriptor) {}

    void write(std::string_view bytes) override
    {
        while (error_ == 0 && !bytes.empty()) {
            const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
            if (count > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(count));
            } else if (count == 0) {
                error_ = EIO;  // no progress, now or ever
            } else if (errno != EINTR) {
                error_ = errno;
            }
        }
    }

    void check() const override
    {
        if (error_ != 0) {
            throw WriteError("cannot write the configuration: " + std::generic_category().message(error_));
        }
    }

private:
    int descriptor_;
    int error_ = 0;  // of the first write that failed
};

class TextSink : public Sink {
public:
    void write(std::string_view bytes) override { text_ += bytes; }
    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

const xmlChar* xml_text(const char* text)
{
    return reinterpret_cast<const xmlChar*>(text);
}

const xmlChar* xml_text(const std::string& text)
{
    return xml_text(text.c_str());
}

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

class Writer {
public:
    Writer(Sink* sink, const store::Configuration& configuration, const Progress& progress)
        : sink_(sink), configuration_(configuration), progress_(progress)
    {
        xmlOutputBufferPtr const buffer = xmlOutputBufferCreateIO(Sink::write_bytes, nullptr, sink, nullptr);
        writer_.reset(buffer != nullptr ? xmlNewTextWriter(buffer) : nullptr);
        if (!writer_) {
            throw std::bad_alloc();
        }
        xmlTextWriterSetIndent(writer_.get(), 1);
        xmlTextWriterSetIndentString(writer_.get(), xml_text("  "));
    }

    void write_document()
    {
        xmlTextWriterStartDocument(writer_.get(), nullptr, "UTF-8", nullptr);
        xmlTextWriterStartElement(writer_.get(), xml_text(kConfigElement));
        xmlTextWriterWriteAttribute(writer_.get(), xml_text("xmlns"), xml_text(kConfigNamespace));
        write_top_nodes();
        xmlTextWriterEndElement(writer_.get());
        finish();
    }

    void write_elements()
    {
        write_top_nodes();
        finish();
    }

private:
    struct Deleter {
        void operator()(xmlTextWriter* writer) const noexcept { xmlFreeTextWriter(writer); }
    };

    static constexpr std::size_t kReportEvery = 1 << 20;

    void finish()
    {
        xmlTextWriterFlush(writer_.get());
        sink_->check();
        report(0);
    }

    void report(std::size_t every)
    {
        if (progress_ && sink_->bytes() - reported_ >= every) {
            reported_ = sink_->bytes();
            progress_(reported_, 0);
        }
    }

    void write_top_nodes() { write_nodes(configuration_.schema().top_nodes(), configuration_.root()); }

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
                    end();
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
        end();
        trail_.pop_back();
        sink_->check();
        report(kReportEvery);
    }

    void write_leaf(const Node& leaf, const Value& value)
    {
        if (value.absent()) {
            return;
        }
        start(leaf);
        if (value.is_text()) {
            write_text(leaf, value.bytes());
        } else {
            text_.clear();
            leaf.type->append_text(value, &text_);
            write_raw();
        }
        end();
    }

    void write_text(const Node& leaf, std::string_view text)
    {
        text_ = text;
        switch (content_of(text)) {
            case Content::Plain:
                write_raw();
                break;
            case Content::Escaped:
                xmlTextWriterWriteString(writer_.get(), xml_text(text_));
                break;
            case Content::Forbidden:
                throw WriteError(store::keypath(trail_, leaf) + ": " +
                                 (is_secret(leaf) ? "the value" : schema::in_quotes(text)) +
                                 " holds a character that XML cannot hold");
        }
    }

    void write_raw()
    {
        if (!text_.empty()) {
            xmlTextWriterWriteRawLen(writer_.get(), xml_text(text_), static_cast<int>(text_.size()));
        }
    }

    void start(const Node& node)
    {
        xmlTextWriterStartElement(writer_.get(), xml_text(node.name));
        if (node.parent == nullptr || node.parent->module != node.module) {
            xmlTextWriterWriteAttribute(writer_.get(), xml_text("xmlns"), xml_text(node.module->uri));
        }
    }

    void end() { xmlTextWriterEndElement(writer_.get()); }

    Sink* sink_;
    const store::Configuration& configuration_;
    const Progress& progress_;
    std::unique_ptr<xmlTextWriter, Deleter> writer_;
    store::Trail trail_;
    std::string text_;  // of the leaf being written
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
