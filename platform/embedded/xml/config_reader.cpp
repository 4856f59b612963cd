// A configuration file through libxml2's parser, event by event, into the loader. The parser's events are used as they
// come and no tree is built: they know the line of every part of a file of any length, and nothing but rows is
// allocated.
#include "xml/config_reader.h"

#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <memory>
#include <system_error>

#include "schema/quote.h"
#include "xml/config_loader.h"

namespace bgp_platform::xml {

namespace {

// Where a document's bytes come from.
class Source {
public:
    Source() = default;
    virtual ~Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual std::size_t read(char* buffer, std::size_t size) = 0;  // 0 at the end
};

class TextSource : public Source {
public:
    explicit TextSource(std::string_view text) : rest_(text) {}

    std::size_t read(char* buffer, std::size_t size) override
    {
        const std::size_t count = rest_.copy(buffer, size);
        rest_.remove_prefix(count);
        return count;
    }

private:
    std::string_view rest_;
};

class FileSource : public Source {
public:
    FileSource(const std::string& path, const Progress& progress) : path_(path), progress_(progress)
    {
        do {
            descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        } while (descriptor_ < 0 && errno == EINTR);
        if (descriptor_ < 0) {
            fail();
        }
        struct stat status {};
        if (fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
            total_ = static_cast<std::size_t>(status.st_size);
        }
    }
    ~FileSource() override { close(descriptor_); }

    std::size_t read(char* buffer, std::size_t size) override
    {
        ssize_t count = 0;
        do {
            count = ::read(descriptor_, buffer, size);
        } while (count < 0 && errno == EINTR);
        if (count < 0) {
            fail();
        }
        report(static_cast<std::size_t>(count));
        return static_cast<std::size_t>(count);
    }

private:
    static constexpr std::size_t kReportEvery = 1 << 20;

    void report(std::size_t count)
    {
        bytes_ += count;
        if (progress_ && (count == 0 || bytes_ - reported_ >= kReportEvery)) {
            reported_ = bytes_;
            progress_(bytes_, total_);
        }
    }

    [[noreturn]] void fail() const { throw LoadError(path_ + ": " + std::generic_category().message(errno)); }

    const std::string& path_;
    const Progress& progress_;
    int descriptor_ = -1;
    std::size_t bytes_ = 0;
    std::size_t reported_ = 0;
    std::size_t total_ = 0;
};

// The parser's message without the piece of the document that some have behind a line end, or as bytes: it may be of a
// password.
std::string_view without_excerpt(std::string_view message)
{
    message = message.substr(0, message.find(", bytes 0x"));
    message = message.substr(0, message.find('\n'));
    return message.substr(0, message.find_last_not_of(" :") + 1);
}

std::string_view text_of(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
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
    Parse(Source* source, const std::string& name, store::Configuration* into, const Limits& limits)
        : source_(source), name_(name), loader_(name, into, limits), errors_of_thread_(error, this)
    {
        xmlSAXHandler handler = events();
        context_.reset(xmlCreateIOParserCtxt(&handler, this, read, nullptr, this, XML_CHAR_ENCODING_NONE));
        if (!context_) {
            rethrow();  // the first read may have failed
            throw LoadError(name_ + ": cannot make an XML parser");
        }
        xmlCtxtUseOptions(context_.get(), XML_PARSE_NONET | XML_PARSE_BIG_LINES);
    }

    void run()
    {
        xmlParseDocument(context_.get());
        rethrow();
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
            failure_ = std::current_exception();
        }
    }

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
            [&] { count = static_cast<int>(self(parse).source_->read(buffer, static_cast<std::size_t>(size))); });
        return count;
    }

    static void start_element(void* parse, const xmlChar* name, const xmlChar* /*prefix*/, const xmlChar* uri,
                              int /*namespaces*/, const xmlChar** /*declared*/, int attributes, int /*defaulted*/,
                              const xmlChar** attribute)
    {
        Parse& me = self(parse);
        me.guarded([&] {
            me.loader_.start_element(reinterpret_cast<const char*>(name), reinterpret_cast<const char*>(uri),
                                     me.line());
            if (attributes > 0) {  // name, prefix, ... of the first
                const std::string prefix = attribute[1] != nullptr ? std::string(text_of(attribute[1])) + ":" : "";
                me.loader_.refuse_attribute(prefix + std::string(text_of(attribute[0])));
            }
        });
    }

    static void end_element(void* parse, const xmlChar* /*name*/, const xmlChar* /*prefix*/, const xmlChar* /*uri*/)
    {
        self(parse).guarded([&] { self(parse).loader_.end_element(); });
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
            me.loader_.refuse_markup(error->line > 0 ? error->line : me.line(),
                                     "not well-formed: " + schema::shortened(what));
        });
    }

    Source* source_;
    const std::string& name_;
    ConfigLoader loader_;
    std::exception_ptr failure_;
    ErrorsOfThread errors_of_thread_;
    std::unique_ptr<xmlParserCtxt, ContextDeleter> context_;
};

}  // namespace

void read_config_file(const std::string& path, store::Configuration* into, const Progress& progress,
                      const Limits& limits)
{
    FileSource source(path, progress);
    Parse(&source, path, into, limits).run();
}

void read_config_text(std::string_view text, const std::string& name, store::Configuration* into, const Limits& limits)
{
    TextSource source(text);
    Parse(&source, name, into, limits).run();
}

}  // namespace bgp_platform::xml
