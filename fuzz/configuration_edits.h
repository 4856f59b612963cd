// Small changes of a configuration's text, at a leaf of it. What they make may be no configuration any more.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bgp_fuzz {

// An element that holds text and nothing else: "<name>value</name>".
struct LeafText {
    std::size_t open;   // its first character
    std::size_t value;  // of the text
    std::size_t close;  // behind the text
    std::size_t end;    // behind the element
};

inline std::vector<LeafText> leaves_of(const std::string& xml)
{
    std::vector<LeafText> leaves;
    for (std::size_t close = xml.find("</"); close != std::string::npos; close = xml.find("</", close + 1)) {
        const std::size_t value = xml.find_last_of('>', close) + 1;
        if (value != close && xml[value] != '\n') {
            leaves.push_back({xml.find_last_of('<', value), value, close, xml.find('>', close) + 1});
        }
    }
    return leaves;
}

inline std::string value_of(const std::string& xml, const LeafText& leaf)
{
    return xml.substr(leaf.value, leaf.close - leaf.value);
}

// The value of the next leaf of the same name, from the first on where it is the last; its own when it is the only one.
inline std::string next_value(const std::string& xml, const std::vector<LeafText>& leaves, std::size_t which)
{
    const std::string name = xml.substr(leaves[which].open, leaves[which].value - leaves[which].open);
    std::size_t next = which;
    do {
        next = (next + 1) % leaves.size();
    } while (xml.compare(leaves[next].open, name.size(), name) != 0);
    return value_of(xml, leaves[next]);
}

inline void remove_leaf(const LeafText& leaf, std::string* xml)
{
    xml->erase(leaf.open, leaf.end - leaf.open);
}

inline void set_leaf(const LeafText& leaf, const std::string& value, std::string* xml)
{
    xml->replace(leaf.value, leaf.close - leaf.value, value);
}

}  // namespace bgp_fuzz
