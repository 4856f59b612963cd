// The top elements of a configuration file in their canonical form (W3C's Canonical XML 1.0, with comments), as libxml2's
// tree and its canonicaliser see them: what a reader of its own is held against.
#pragma once

#include <libxml/c14n.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bgp_test {

struct XmlDeleter {
    void operator()(xmlDoc* document) const noexcept { xmlFreeDoc(document); }
    void operator()(xmlXPathContext* context) const noexcept { xmlXPathFreeContext(context); }
    void operator()(xmlXPathObject* object) const noexcept { xmlXPathFreeObject(object); }
    void operator()(xmlChar* text) const noexcept { xmlFree(text); }
};
template <typename Thing>
using Xml = std::unique_ptr<Thing, XmlDeleter>;

// An element with all that it inherits; none where canonical XML has no form for it.
inline std::optional<std::string> canonical_element(xmlDoc* document, xmlNode* element)
{
    const Xml<xmlXPathContext> context(xmlXPathNewContext(document));
    context->node = element;
    const auto* const whole = reinterpret_cast<const xmlChar*>(
        "descendant-or-self::node() | descendant-or-self::*/@* | descendant-or-self::*/namespace::*");
    const Xml<xmlXPathObject> nodes(xmlXPathEvalExpression(whole, context.get()));
    xmlChar* text = nullptr;
    const int size = xmlC14NDocDumpMemory(document, nodes->nodesetval, XML_C14N_1_0, nullptr, 1, &text);
    const Xml<xmlChar> owned(text);
    if (size < 0) {
        return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
}

// The elements in the wrapper for which `wanted(namespace)` says so, in order. `document` is well-formed.
template <typename Wanted>
std::vector<std::optional<std::string>> canonical_top_elements(std::string_view document, Wanted wanted)
{
    const Xml<xmlDoc> parsed(xmlReadMemory(document.data(), static_cast<int>(document.size()), "document.xml", nullptr,
                                           XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    std::vector<std::optional<std::string>> elements;
    xmlNode* wrapper = parsed ? xmlDocGetRootElement(parsed.get()) : nullptr;
    if (wrapper != nullptr && std::string_view(reinterpret_cast<const char*>(wrapper->name)) == "rpc-reply") {
        wrapper = xmlFirstElementChild(wrapper);
    }
    for (xmlNode* each = wrapper == nullptr ? nullptr : xmlFirstElementChild(wrapper); each != nullptr;
         each = xmlNextElementSibling(each)) {
        if (each->ns != nullptr && wanted(reinterpret_cast<const char*>(each->ns->href))) {
            elements.push_back(canonical_element(parsed.get(), each));
        }
    }
    return elements;
}

}  // namespace bgp_test
