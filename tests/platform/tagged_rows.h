// Arrays of tagged values, written as the tests of their calls speak of them.
#pragma once

#include <string>
#include <vector>

#include "capi_device.h"

namespace capi_test {

// A row of an array reads like a table: what, tag, value.
class Rows {
public:
    Rows& leaf(const char* name, confd_value_t value)
    {
        rows_.push_back({{confd_str2hash(name), 0}, value});
        return *this;
    }
    Rows& ask(const char* name) { return leaf(name, no_value()); }
    Rows& begin(const char* name)
    {
        rows_.emplace_back();
        CONFD_SET_TAG_XMLBEGIN(&rows_.back(), confd_str2hash(name), 0);
        return *this;
    }
    Rows& begin_of_deletion(const char* name)
    {
        rows_.emplace_back();
        CONFD_SET_TAG_XMLBEGINDEL(&rows_.back(), confd_str2hash(name), 0);
        return *this;
    }
    Rows& nth(const char* name, int position)
    {
        rows_.emplace_back();
        CONFD_SET_TAG_CDBBEGIN(&rows_.back(), confd_str2hash(name), 0, position);
        return *this;
    }
    Rows& end(const char* name)
    {
        rows_.emplace_back();
        CONFD_SET_TAG_XMLEND(&rows_.back(), confd_str2hash(name), 0);
        return *this;
    }
    Rows& name_space(const char* uri)
    {
        CONFD_SET_TAG_NS(&rows_.back(), confd_str2hash(uri));
        return *this;
    }

    confd_tag_value_t* data() { return rows_.data(); }
    int size() const { return static_cast<int>(rows_.size()); }

    // The values that stand at leaves, in order; they are given back.
    std::vector<std::string> taken_leaves()
    {
        std::vector<std::string> out;
        for (confd_tag_value_t& row : rows_) {
            if (row.v.type != C_XMLBEGIN && row.v.type != C_XMLEND && row.v.type != C_CDBBEGIN) {
                out.push_back(taken(&row.v));
            }
        }
        return out;
    }

private:
    std::vector<confd_tag_value_t> rows_;
};

inline std::string named(const char* name)
{
    return "tag " + std::to_string(confd_str2hash(name)) + " (" + name + ")";
}

}  // namespace capi_test
