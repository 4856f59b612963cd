#include "support/change_lines.h"

#include <utility>

#include "store/changes.h"
#include "store/list.h"

namespace bgp_test {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Record;
using bgp_platform::schema::Value;
using bgp_platform::store::keypath;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

class ChangeLines : public bgp_platform::store::ChangeVisitor {
public:
    void entry_created(const Trail& around, const Row& entry) override
    {
        lines_.push_back("create " + keypath(around, &entry));
        Trail trail = around;
        trail.push_back(&entry);
        const Record& record = entry.record();
        for (std::size_t slot = record.keys; slot < record.values.size(); ++slot) {
            const Value& value = entry.value(static_cast<uint16_t>(slot));
            if (!value.absent()) {
                leaf_changed(trail, *record.values[slot], Value(), value);
            }
        }
        for (std::size_t slot = 0; slot < record.lists.size(); ++slot) {
            entry.list(static_cast<uint16_t>(slot)).for_each([this, &trail](const Row& below) {
                entry_created(trail, below);
            });
        }
    }

    void entry_deleted(const Trail& around, const Row& entry) override
    {
        lines_.push_back("delete " + keypath(around, &entry));
    }

    void leaf_changed(const Trail& row, const Node& leaf, const Value& /*before*/, const Value& after) override
    {
        const std::string path = keypath(row, leaf);
        if (after.absent()) {
            lines_.push_back("delete " + path);
        } else if (leaf.kind == NodeKind::Presence) {
            lines_.push_back("create " + path);
        } else {
            lines_.push_back("set " + path + " " + leaf.type->text(after));
        }
    }

    std::vector<std::string> take() { return std::move(lines_); }

private:
    std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> change_lines(const bgp_platform::Device& device)
{
    ChangeLines lines;
    device.walk_changes(lines);
    return lines.take();
}

}  // namespace bgp_test
