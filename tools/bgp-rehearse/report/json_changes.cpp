#include "report/json_changes.h"

#include <unordered_map>

#include "judge/evidence.h"
#include "judge/row_changes.h"
#include "report/row_leaves.h"
#include "report/subtree.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::Value;
using bgp_platform::store::List;
using bgp_platform::store::Row;

class RowsAsJson : public RowVisitor {
public:
    explicit RowsAsJson(JsonWriter* json) : json_(*json) {}

    void kept(const Node& /*list*/, std::size_t /*rows*/) override {}

    void row(const RowChange& change) override
    {
        if (change.fate == Fate::AsItWas) {
            return;
        }
        json_.begin('{').name("path").text(bgp_platform::store::keypath(*change.around, &change.row()));
        json_.name("list").text(path_of(change.list())).name("keys");
        write_keys(change.row());
        json_.name("within").begin('[');
        for (const Row* row : *change.around) {
            json_.begin('{').name("list").text(path_of(*row->record().owner)).name("keys");
            write_keys(*row);
            json_.end();
        }
        json_.end().name("fate").text(name_of(change.fate));
        if (change.fate == Fate::Moved || change.fate == Fate::MovedAndChanged) {
            json_.name("from").begin('{').name("path").text(stored_path(change)).name("keys");
            write_keys(*change.before);
            json_.end();
        }
        write_leaves(change);
        json_.end();
    }

    void outside(const RowChange& change) override
    {
        json_.begin('{').name("path").text("/").name("list").text("/").name("keys").begin('{').end();
        json_.name("within").begin('[').end().name("fate").text(name_of(change.fate));
        write_leaves(change);
        json_.end();
    }

private:
    void write_keys(const Row& row)
    {
        json_.begin('{');
        for (uint16_t slot = 0; slot < row.record().keys; ++slot) {
            const Node& key = *row.record().values[slot];
            json_.name(key.name).text(shown(key, row.value(slot)));
        }
        json_.end();
    }

    void write_leaves(const RowChange& change)
    {
        const RowLeaves of(change);
        json_.name("step").text_or_null(step_of_writer(of.writer)).name("leaves").begin('[');
        for (const LeafChange& leaf : of.leaves) {
            json_.begin('{').name("name").text(names_of_leaves_.of(*leaf.node)).name("before");
            write_value(*leaf.node, leaf.before, leaf.entries_before);
            json_.name("after");
            write_value(*leaf.node, leaf.after, leaf.entries_after);
            json_.name("step").text_or_null(step_of_writer(leaf.writer)).end();
        }
        json_.end();
    }

    void write_value(const Node& leaf, const Value* value, const List* entries)
    {
        if (entries != nullptr) {
            json_.begin('[');
            entries->for_each([&](const Row& entry) { json_.text(shown(leaf, entry.value(0))); });
            json_.end();
        } else if (value != nullptr) {
            json_.text(shown(leaf, *value));
        } else {
            json_.null();
        }
    }

    const std::string& shown(const Node& leaf, const Value& value)
    {
        text_.clear();
        append_value(leaf, value, &text_);
        return text_;
    }

    const std::string& path_of(const Node& list)
    {
        std::string& path = paths_[&list];
        path = path.empty() ? list.path() : path;
        return path;
    }

    JsonWriter& json_;
    std::string text_;
    NamesInRow names_of_leaves_;
    std::unordered_map<const Node*, std::string> paths_;  // of lists
};

}  // namespace

void write_changes(const bgp_platform::Device& device, JsonWriter* json)
{
    json->begin('[', JsonWriter::Lines);
    RowsAsJson writer(json);
    walk_rows(device, writer);
    json->end();
}

}  // namespace bgp_rehearse
