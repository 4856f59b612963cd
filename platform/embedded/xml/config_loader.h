// Where each element of a configuration file belongs: to its wrapper, to a row, to a part that is carried along, or to
// what was refused and is passed over.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "store/configuration.h"
#include "xml/foreign_recorder.h"
#include "xml/limits.h"
#include "xml/load_errors.h"
#include "xml/row_builder.h"
#include "xml/start_tag.h"

namespace bgp_platform::xml {

// The parts of a document in the order in which they stand there. What is refused is gathered, with file and line, and
// the reading goes on behind the element; what ends it throws LoadError with all that was gathered.
class ConfigLoader {
public:
    ConfigLoader(std::string file, store::Configuration* into, const Limits& limits);

    // The texts of names and namespaces are interned by the caller: the same text has the same address, and
    // stays.
    void start_element(const StartTag& tag);
    void end_element(const char* name, const char* prefix);

    // Text comes in pieces of any size. The line is that of the piece's end.
    void text(std::string_view piece, int line);
    void comment(std::string_view text);
    void instruction(std::string_view target, std::string_view content);

    // What the parser itself finds wrong, or is not allowed. Nothing of it is shown where it may be a password.
    [[noreturn]] void refuse_markup(int line, const std::string& what);

    // The tag of the element that started last has no end. The element's name may be cut as well, so that nothing else is
    // said of it.
    [[noreturn]] void refuse_cut_tag(int line, const std::string& what);

    // The file cannot be read on.
    [[noreturn]] void end_reading(const std::string& error) { errors_.end(error); }

    // At the document's end.
    void finish();

private:
    // What the elements belong to that are no rows.
    enum class Beyond { Refused, ReplyError, Foreign };

    void start_around_rows(const StartTag& tag);
    void start_document(const StartTag& tag);
    void start_in_reply(const StartTag& tag);
    void open_wrapper(const StartTag& tag);
    bool in_reply() const noexcept { return reply_ && wrappers_ == 1; }

    [[noreturn]] void refuse_level(const StartTag& tag);

    void start_row(const StartTag& tag);

    bool is_foreign(const StartTag& tag) const;
    bool in_foreign() const noexcept { return beyond_ > 0 && what_ == Beyond::Foreign; }
    void start_beyond(Beyond what);
    void start_in_beyond(const StartTag& tag);
    void end_in_beyond(const char* name, const char* prefix);

    void check_foreign_size();

    std::string place() const;
    std::string told(int line, const std::string& what) const;
    void take(const Refusal& refusal);

    std::string file_;
    Limits limits_;
    LoadErrors errors_;
    store::Configuration* into_;
    RowBuilder rows_;
    ForeignRecorder foreign_;

    std::size_t levels_ = 0;                    // elements that are open
    std::size_t wrappers_ = 0;                  // of them, those around the configuration
    bool reply_ = false;                        // the outermost one is <rpc-reply>
    bool has_content_ = false;                  // a wrapper of a configuration was opened
    std::vector<NamespaceDeclaration> around_;  // of the wrappers; their texts are interned

    bool refused_last_ = false;  // the element that started last, behind which nothing has come
    std::size_t beyond_ = 0;     // of them, those in what is no rows
    Beyond what_ = Beyond::Refused;

    int reply_error_line_ = 0;
    bool in_error_message_ = false;
    std::string error_message_;
};

}  // namespace bgp_platform::xml
