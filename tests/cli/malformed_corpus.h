// Malformed configurations made of a small one: cut off at every byte, bits turned in every byte, bytes and leaves missing,
// leaves doubled, of a wrong type, under a wrong name or in a wrong namespace.
#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "support/text_lines.h"

namespace bgp_test {

// Every type of value, a list in a list, a leaf-list; one leaf a line.
inline constexpr char kSmall[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- one of each -->
<config xmlns="http://tail-f.com/ns/config/1.0">
  <DC-AALL-MIB xmlns="http://tail-f.com/ns/mibs/DC-AALL-MIB">
    <aallPreAccessListTable>
      <aallPreAccessListEntry>
        <aallPreAccessListListIndex>-5</aallPreAccessListListIndex>
        <aallPreAccessListRuleIndex>10</aallPreAccessListRuleIndex>
        <aallPreAccessListAddrPrefix>c0:00:02:00</aallPreAccessListAddrPrefix>
        <aallPreAccessListIncluded>permit</aallPreAccessListIncluded>
      </aallPreAccessListEntry>
    </aallPreAccessListTable>
  </DC-AALL-MIB>
  <bgp-internal xmlns="urn:bgp-update:yang:bgp-internal">
    <bgp-vrf>
      <vrf-idx>0</vrf-idx>
      <bgp-free-index>7</bgp-free-index>
    </bgp-vrf>
  </bgp-internal>
  <prefix-list xmlns="urn:bgp-update:yang:prefix-list">
    <name>caf&#xe9; &amp; bar</name>
    <seq>
      <number>10</number>
      <address>192.0.2.0/24</address>
    </seq>
  </prefix-list>
  <r:router xmlns:r="urn:bgp-update:yang:router">
    <r:bgp>
      <r:as-number>65010</r:as-number>
      <r:router-id>192.0.2.1</r:router-id>
    </r:bgp>
  </r:router>
</config>
)";

// What a change of the document may lead to when it is not refused.
enum class Allowed {
    Nothing,  // it must be refused
    Same,     // it loads as the small configuration itself: white space, comment or declaration
    Value,    // one value differs, or is written in another way
    NoLeaf,   // one leaf is missing, which is no key
};

struct Malformed {
    std::string kind;
    std::string text;
    Allowed allowed = Allowed::Nothing;
    bool inside = true;  // what is wrong stands within <config>, so that there is a path
};

// What a byte of a document is part of.
enum class Part { Prologue, Tag, Blank, Value };

inline std::vector<Part> parts_of(const std::string& text)
{
    std::vector<Part> parts;
    while (parts.size() < text.size()) {
        const std::size_t start = parts.size();
        const bool prologue = text.compare(start, 2, "<?") == 0 || text.compare(start, 2, "<!") == 0;
        const bool tag = text[start] == '<';
        const std::size_t end = tag ? text.find('>', start) + 1 : std::min(text.find('<', start), text.size());
        const bool blank = text.find_first_not_of(" \n", start) >= end;
        parts.resize(end, prologue ? Part::Prologue : tag ? Part::Tag : blank ? Part::Blank : Part::Value);
    }
    return parts;
}

inline Allowed allowed_in(Part part)
{
    return part == Part::Value ? Allowed::Value : part == Part::Tag ? Allowed::Nothing : Allowed::Same;
}

// A leaf with its tags, and where it stands.
struct LeafText {
    std::size_t at;
    std::string whole;
    std::string name;
    std::string value;
};

inline std::vector<LeafText> leaves_of(const std::string& text)
{
    std::vector<LeafText> leaves;
    std::size_t line_start = 0;
    for (const std::string& line : lines_of(text)) {
        const std::size_t tag = line.find('<');
        const std::size_t end_tag = line.find("</");
        if (tag < end_tag && end_tag != std::string::npos) {
            const std::size_t value = line.find('>') + 1;
            leaves.push_back({line_start + tag, line.substr(tag), line.substr(tag + 1, value - tag - 2),
                              line.substr(value, end_tag - value)});
        }
        line_start += line.size() + 1;
    }
    return leaves;
}

inline std::string replace_all(std::string text, const std::string& part, const std::string& instead)
{
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += instead.size()) {
        text.replace(at, part.size(), instead);
    }
    return text;
}

class Corpus {
public:
    Corpus()
    {
        truncations();
        flips();
        missing_bytes();
        changed_leaves();
        renamed();
    }

    const std::vector<Malformed>& all() const { return all_; }

    std::vector<Malformed> of(const std::string& kind) const
    {
        std::vector<Malformed> some;
        std::copy_if(all_.begin(), all_.end(), std::back_inserter(some),
                     [&](const Malformed& each) { return each.kind == kind; });
        return some;
    }

private:
    const std::string small_ = kSmall;
    const std::size_t first_ = small_.find(">\n  <DC") + 1;  // of what stands within <config>
    const std::size_t last_ = small_.find("</config>");
    const std::vector<Part> parts_ = parts_of(small_);
    std::vector<Malformed> all_;

    bool inside(std::size_t at) const { return at >= first_ && at <= last_; }

    // White space behind the end is all that may be cut off.
    void truncations()
    {
        for (std::size_t size = 0; size < small_.size(); ++size) {
            const bool whole = small_.find_first_not_of('\n', size) == std::string::npos;
            all_.push_back(
                {"truncation", small_.substr(0, size), whole ? Allowed::Same : Allowed::Nothing, inside(size)});
        }
    }

    void flips()
    {
        for (std::size_t at = 0; at < small_.size(); ++at) {
            for (const int mask : {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0xFF}) {
                std::string text = small_;
                text[at] = static_cast<char>(text[at] ^ mask);
                all_.push_back({"flip", text, allowed_in(parts_[at]), inside(at)});
            }
        }
    }

    void missing_bytes()
    {
        for (std::size_t at = 0; at < small_.size(); ++at) {
            std::string text = small_;
            text.erase(at, 1);
            all_.push_back({"missing byte", text, allowed_in(parts_[at]), inside(at)});
        }
    }

    // Every leaf of the document: missing, doubled, of another type, under another name, in another namespace.
    void changed_leaves()
    {
        for (const LeafText& leaf : leaves_of(small_)) {
            const std::string& whole = leaf.whole;
            const std::string& name = leaf.name;
            const auto put = [&](const std::string& kind, const std::string& instead, Allowed allowed) {
                std::string text = small_;
                all_.push_back({kind, text.replace(leaf.at, whole.size(), instead), allowed});
            };
            put(is_key(name) ? "missing key" : "missing leaf", "", is_key(name) ? Allowed::Nothing : Allowed::NoLeaf);
            put("doubled leaf", whole + whole, Allowed::Nothing);
            put("element in a leaf", "<" + name + ">" + whole + "</" + name + ">", Allowed::Nothing);
            put("unknown name", "<" + name + "x>1</" + name + "x>", Allowed::Nothing);
            put("attribute", "<" + name + " a=\"1\">" + leaf.value + "</" + name + ">", Allowed::Nothing);
            const std::string bare = name.substr(name.find(':') + 1);  // NOLINT: npos + 1 is the whole name
            put("wrong namespace", "<" + bare + " xmlns=\"urn:other\">1</" + bare + ">", Allowed::Nothing);
            put("wrong namespace", "<" + bare + " xmlns=\"\">1</" + bare + ">", Allowed::Nothing);
            for (const char* value : {"", "two words", "99999999999999999999", "0x10", "1e3", "c0:0", "1.2.3",
                                      "1.2.3.4/33", "&lt;", "NaN", "+1", "\xC3\xA9"}) {
                const bool empty_octets = name == "aallPreAccessListAddrPrefix" && *value == '\0';
                put("wrong type", "<" + name + ">" + value + "</" + name + ">",
                    name == "name" || empty_octets ? Allowed::Value : Allowed::Nothing);
            }
        }
    }

    static bool is_key(const std::string& name)
    {
        const std::vector<std::string> no_keys = {"aallPreAccessListAddrPrefix", "aallPreAccessListIncluded",
                                                  "bgp-free-index", "address", "r:router-id"};
        return std::find(no_keys.begin(), no_keys.end(), name) == no_keys.end();
    }

    // Every start tag with its end tags under another name, and every namespace another one.
    void renamed()
    {
        for (std::size_t at = small_.find('<'); at != std::string::npos; at = small_.find('<', at + 1)) {
            const std::string name = small_.substr(at + 1, small_.find_first_of(" >", at) - at - 1);
            if (name.find_first_of("/!?") != std::string::npos) {
                continue;
            }
            std::string text = replace_all(small_, "<" + name + ">", "<" + name + "-x>");
            text = replace_all(text, "<" + name + " ", "<" + name + "-x ");
            text = replace_all(text, "</" + name + ">", "</" + name + "-x>");
            all_.push_back({"unknown name", text, Allowed::Nothing, name != "config"});
        }
        for (std::size_t at = small_.find("xmlns"); at != std::string::npos; at = small_.find("xmlns", at + 1)) {
            const std::size_t space = small_.find('"', at) + 1;
            const std::size_t size = small_.find('"', space) - space;
            for (const char* instead : {"urn:other", "urn:bgp-update:yang:metacli-internal", ""}) {
                std::string text = small_;
                all_.push_back({"wrong namespace", text.replace(space, size, instead), Allowed::Nothing, at > first_});
            }
        }
    }
};

}  // namespace bgp_test
