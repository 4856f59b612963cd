// A configuration file through libxml2's parser, event by event, into the loader. The parser's events are used as they
// come and no tree is built: they know the line of every part of a file of any length, and nothing but rows is
// allocated.
#include "xml/config_reader.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <exception>
#include <memory>

#include "schema/quote.h"
#include "xml/config_loader.h"
#include "xml/look.h"

namespace bgp_platform::xml {

namespace {

// The parser's message without the piece of the document that some have behind a line end, or as bytes: it may be of a
// password.
std::string_view without_excerpt(std::string_view message)
{
    message = message.substr(0, message.find(", bytes 0x"));
    message = message.substr(0, message.find('\n'));
    return message.substr(0, message.find_last_not_of(" :") + 1);
}

const char* chars_of(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

std::string_view text_of(const xmlChar* text)
{
    return text == nullptr ? std::string_view() : std::string_view(chars_of(text));
}

// What the parser hands over: prefix, URI of each.
void take_declarations(int count, const xmlChar** declared, StartTag* tag)
{
    tag->declarations.clear();
    for (int i = 0; i < count; ++i, declared += 2) {
        tag->declarations.push_back({text_of(declared[0]), text_of(declared[1])});
    }
}

// Name, prefix, URI, begin and end of the value of each.
void take_attributes(int count, const xmlChar** attribute, StartTag* tag)
{
    tag->attributes.clear();
    for (int i = 0; i < count; ++i, attribute += 5) {
        const std::string_view value(chars_of(attribute[3]), static_cast<std::size_t>(attribute[4] - attribute[3]));
        tag->attributes.push_back({text_of(attribute[1]), text_of(attribute[0]), value});
    }
}

// Elements may be nested more deeply than by the parser's default: the loader has a limit of its own.
void allow_levels(std::size_t levels)
{
    xmlParserMaxDepth = std::max(xmlParserMaxDepth, static_cast<unsigned int>(levels) + 1);
}

struct ContextDeleter {
    void operator()(xmlParserCtxt* context) const noexcept
    {
        xmlFreeDoc(context->myDoc);
        xmlFreeParserCtxt(context);
    }
};

// Errors of libxml2's character decoders come to the thread's handler, not to the parser's; without one they are printed
// and the document just ends. Gives the thread a handler for the time of its scope.
class ErrorsOfThread {
public:
    ErrorsOfThread(xmlStructuredErrorFunc handler, void* context)
        : handler_before_(xmlStructuredError), context_before_(xmlStructuredErrorContext)
    {
        xmlSetStructuredErrorFunc(context, handler);
    }
    ~ErrorsOfThread() { xmlSetStructuredErrorFunc(context_before_, handler_before_); }
    ErrorsOfThread(const ErrorsOfThread&) = delete;
    ErrorsOfThread& operator=(const ErrorsOfThread&) = delete;

private:
    xmlStructuredErrorFunc handler_before_;
    void* context_before_;
};

// One run of the parser. What goes wrong in an event is thrown when the parser has returned, for exceptions do not pass
// through libxml2. Until then further events do nothing, and a further read gives it no more bytes. (xmlStopParser
// would take away the buffer under the parser's feet when it is called from a read.)
class Parse {
public:
    Parse(PeekedSource* source, const std::string& name, store::Configuration* into, const Limits& limits)
        : source_(source), name_(name), loader_(name, into, limits), errors_of_thread_(error, this)
    {
        if (const std::string why = why_no_xml(source->head()); !why.empty()) {
            loader_.refuse_markup(1, why);
        }
        allow_levels(limits.levels);
        xmlSAXHandler handler = events();
        context_.reset(xmlCreateIOParserCtxt(&handler, this, read, nullptr, this, XML_CHAR_ENCODING_NONE));
        if (!context_) {
            rethrow();  // the first read may have failed
            throw LoadError(name_ + ": cannot make an XML parser");
        }
        // XML_PARSE_NOENT: an ampersand in an attribute comes as it is. There are no entities but XML's own five, for a
        // DOCTYPE is refused, and what it declares has no event here.
        xmlCtxtUseOptions(context_.get(), XML_PARSE_NONET | XML_PARSE_BIG_LINES | XML_PARSE_NOENT);
    }

    void run()
    {
        xmlParseDocument(context_.get());
        rethrow();
        loader_.finish();
    }

private:
    static xmlSAXHandler events()
    {
        xmlSAXHandler handler{};
        handler.initialized = XML_SAX2_MAGIC;
        handler.startElementNs = start_element;
        handler.endElementNs = end_element;
        handler.characters = text;
        handler.cdataBlock = text;
        handler.ignorableWhitespace = text;
        handler.comment = comment;
        handler.processingInstruction = instruction;
        handler.internalSubset = doctype;
        handler.reference = entity_reference;
        handler.serror = error;
        return handler;
    }

    static Parse& self(void* parse) { return *static_cast<Parse*>(parse); }
    int line() const { return context_ && context_->input != nullptr ? context_->input->line : 0; }

    template <typename Action>
    void guarded(Action action) noexcept
    {
        if (failure_) {
            return;
        }
        try {
            action();
        } catch (...) {
            keep_failure();
        }
    }

    // Apart from guarded(), which each event goes through.
    void keep_failure() noexcept { failure_ = std::current_exception(); }

    void rethrow() const
    {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
    }

    static int read(void* parse, char* buffer, int size)
    {
        int count = -1;
        self(parse).guarded(
            [&] { count = static_cast<int>(self(parse).read(buffer, static_cast<std::size_t>(size))); });
        return count;
    }

    std::size_t read(char* buffer, std::size_t size)
    {
        try {
            return source_->read(buffer, size);
        } catch (const LoadError& error) {
            loader_.end_reading(error.what());
        }
    }

    static void start_element(void* parse, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                              int declarations, const xmlChar** declared, int attributes, int /*defaulted*/,
                              const xmlChar** attribute)
    {
        Parse& me = self(parse);
        me.guarded([&] {
            StartTag& tag = me.tag_;
            tag.name = chars_of(name);
            tag.prefix = chars_of(prefix);
            tag.uri = chars_of(uri);
            tag.line = me.line();
            take_declarations(declarations, declared, &tag);
            take_attributes(attributes, attribute, &tag);
            me.loader_.start_element(tag);
        });
    }

    static void end_element(void* parse, const xmlChar* name, const xmlChar* prefix, const xmlChar* /*uri*/)
    {
        self(parse).guarded([&] { self(parse).loader_.end_element(chars_of(name), chars_of(prefix)); });
    }

    static void comment(void* parse, const xmlChar* text)
    {
        self(parse).guarded([&] { self(parse).loader_.comment(text_of(text)); });
    }

    static void instruction(void* parse, const xmlChar* target, const xmlChar* content)
    {
        self(parse).guarded([&] { self(parse).loader_.instruction(text_of(target), text_of(content)); });
    }

    static void text(void* parse, const xmlChar* text, int size)
    {
        const std::string_view piece(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
        self(parse).guarded([&] { self(parse).loader_.text(piece, self(parse).line()); });
    }

    static void doctype(void* parse, const xmlChar* /*name*/, const xmlChar* /*external*/, const xmlChar* /*system*/)
    {
        self(parse).guarded([&] { self(parse).loader_.refuse_markup(self(parse).line(), "a DOCTYPE is not allowed"); });
    }

    static void entity_reference(void* parse, const xmlChar* name)
    {
        self(parse).guarded([&] {
            self(parse).loader_.refuse_markup(
                self(parse).line(), "the entity reference &" + schema::shortened(text_of(name)) + "; is not allowed");
        });
    }

    static void error(void* parse, xmlErrorPtr error)
    {
        if (error->level == XML_ERR_WARNING) {
            return;
        }
        Parse& me = self(parse);
        me.guarded([&] {
            const std::string_view what = without_excerpt(error->message != nullptr ? error->message : "unknown error");
            const int line = error->line > 0 ? error->line : me.line();
            const std::string message = "not well-formed: " + schema::shortened(what);
            if (error->code == XML_ERR_GT_REQUIRED) {
                me.loader_.refuse_cut_tag(line, message);
            }
            me.loader_.refuse_markup(line, message);
        });
    }

    PeekedSource* source_;
    const std::string& name_;
    ConfigLoader loader_;
    StartTag tag_;  // of the element that starts
    std::exception_ptr failure_;
    ErrorsOfThread errors_of_thread_;
    std::unique_ptr<xmlParserCtxt, ContextDeleter> context_;
};

}  // namespace

void read_config_file(const std::string& path, store::Configuration* into, const Progress& progress,
                      const Limits& limits)
{
    const std::string name = shown_name(path);
    const std::unique_ptr<PeekedSource> source = open_input(path, name, progress);
    Parse(source.get(), name, into, limits).run();
}

void read_config_text(std::string_view text, const std::string& name, store::Configuration* into, const Limits& limits)
{
    PeekedSource source(std::make_unique<TextSource>(text));
    Parse(&source, name, into, limits).run();
}

}  // namespace bgp_platform::xml
