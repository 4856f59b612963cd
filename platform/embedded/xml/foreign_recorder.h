// Keeps the top elements of modules that the schema does not know, as XML that means the same at any place: equal by
// canonical form, comments and processing instructions included.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "store/foreign_part.h"
#include "xml/start_tag.h"

namespace bgp_platform::xml {

class ForeignRecorder {
public:
    // A top element; `around` is what the elements that it stands in declare, outermost first.
    void begin(const StartTag& tag, const std::vector<NamespaceDeclaration>& around);

    // What stands in it, in the order of the document. An end tag comes with its start's name and prefix.
    void start_element(const StartTag& tag);
    void end_element(const char* name, const char* prefix);
    void text(std::string_view text);
    void comment(std::string_view text);
    void instruction(std::string_view target, std::string_view content);

    // The part that was begun last.
    const store::ForeignPart& present() const { return parts_.back(); }

    // About what all parts take in memory.
    std::size_t size() const noexcept { return size_; }

    std::vector<store::ForeignPart> take();

private:
    void append(std::string_view text);
    void append_escaped(std::string_view text, std::string_view special);
    void append_name(std::string_view prefix, std::string_view name);
    void append_declaration(const NamespaceDeclaration& declaration);
    void end_tag();

    std::vector<store::ForeignPart> parts_;
    std::size_t size_ = 0;
    bool begun_ = false;  // the innermost element's start tag is not ended yet
};

}  // namespace bgp_platform::xml
