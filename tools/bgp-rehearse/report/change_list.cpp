#include "report/change_list.h"

#include <unordered_map>

#include "report/change_moves.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::Value;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

class Collector : public bgp_platform::store::ChangeVisitor {
public:
    explicit Collector(std::vector<Change>* changes) : changes_(changes) {}

    void entry_created(const Trail& around, const Row& entry) override { add(Change::Kind::Created, around, entry); }
    void entry_deleted(const Trail& around, const Row& entry) override { add(Change::Kind::Deleted, around, entry); }

    void leaf_changed(const Trail& row, const Node& leaf, const Value& before, const Value& after) override
    {
        // A row's leaves may come with changes of its lists between them.
        const auto [place, first] = rows_.try_emplace(row.empty() ? nullptr : row.back(), changes_->size());
        if (first) {
            start_row(row);
        }
        (*changes_)[place->second].leaves.push_back({&leaf, set_value(before), set_value(after)});
    }

private:
    void add(Change::Kind kind, const Trail& around, const Row& entry)
    {
        changes_->push_back({kind, path_of(around, *entry.record().owner), &entry, nullptr, {}});
    }

    void start_row(const Trail& row)
    {
        if (row.empty()) {
            changes_->push_back({Change::Kind::Changed, path_named({}), nullptr, nullptr, {}});
        } else {
            add(Change::Kind::Changed, Trail(row.begin(), row.end() - 1), *row.back());
        }
    }

    // The list's keypath. Changes of one list come one after the other but for those of lists inside its entries.
    const std::shared_ptr<const std::string>& path_of(const Trail& around, const Node& list)
    {
        if (!last_path_ || last_list_ != &list || last_around_ != around) {
            last_path_ = path_named(bgp_platform::store::keypath(around, list));
            last_list_ = &list;
            last_around_ = around;
        }
        return last_path_;
    }

    std::shared_ptr<const std::string> path_named(const std::string& path)
    {
        std::shared_ptr<const std::string>& known = paths_[path];
        if (!known) {
            known = std::make_shared<const std::string>(path);
        }
        return known;
    }

    std::vector<Change>* changes_;
    std::unordered_map<const Row*, std::size_t> rows_;  // where the change of a row's leaves is; null: the root
    std::unordered_map<std::string, std::shared_ptr<const std::string>> paths_;
    std::shared_ptr<const std::string> last_path_;
    const Node* last_list_ = nullptr;
    Trail last_around_;
};

}  // namespace

std::vector<Change> collect_changes(const bgp_platform::Device& device)
{
    std::vector<Change> changes;
    Collector collector(&changes);
    device.walk_changes(collector);
    find_moves(&changes);
    return changes;
}

}  // namespace bgp_rehearse
