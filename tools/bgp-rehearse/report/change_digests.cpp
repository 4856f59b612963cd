#include "report/change_digests.h"

#include <string_view>

#include "judge/evidence.h"
#include "judge/row_changes.h"
#include "report/row_leaves.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::Value;
using bgp_platform::store::Row;
using bgp_platform::store::Writer;

// FNV-1a of 64 bits: the same on every machine, and quick for short texts.
class Digest {
public:
    void add(std::string_view text)
    {
        for (const char byte : text) {
            take(static_cast<unsigned char>(byte));
        }
        take(0);
    }

    uint64_t value() const noexcept { return value_; }

private:
    void take(unsigned char byte) noexcept { value_ = (value_ ^ byte) * 0x100000001b3; }

    uint64_t value_ = 0xcbf29ce484222325;
};

class ChangeDigester : public RowVisitor {
public:
    void kept(const Node& /*list*/, std::size_t /*rows*/) override {}

    void row(const RowChange& change) override
    {
        if (change.fate == Fate::AsItWas) {
            return;
        }
        path_ = bgp_platform::store::keypath(*change.around, &change.row());
        if (change.fate != Fate::Changed) {
            Digest& digest = digests_[change.writer];
            digest.add(name_of(change.fate));
            digest.add(path_);
            digest.add(change.before != nullptr ? bgp_platform::store::key_text(*change.before) : "");
        }
        add_leaves(change);
    }

    void outside(const RowChange& change) override
    {
        path_ = "/";
        add_leaves(change);
    }

    std::map<std::string, uint64_t> take() const
    {
        std::map<std::string, uint64_t> digests;
        for (const auto& [writer, digest] : digests_) {
            digests.emplace(step_of_writer(writer), digest.value());
        }
        return digests;
    }

private:
    // Of a row that was removed there is nothing more to say.
    void add_leaves(const RowChange& change)
    {
        if (change.after == nullptr) {
            return;
        }
        for_each_leaf_change(change, [this](const LeafChange& leaf) {
            Digest& digest = digests_[leaf.writer];
            digest.add(path_);
            digest.add(names_.of(*leaf.node));
            if (leaf.entries_after != nullptr) {
                leaf.entries_after->for_each([&](const Row& entry) { add_value(*leaf.node, entry.value(0), &digest); });
            } else if (leaf.after != nullptr) {
                add_value(*leaf.node, *leaf.after, &digest);
            }
            digest.add("");
        });
    }

    void add_value(const Node& leaf, const Value& value, Digest* digest)
    {
        text_ = "=";
        append_value(leaf, value, &text_);
        digest->add(text_);
    }

    std::map<Writer, Digest> digests_;
    std::string path_;  // of the row
    std::string text_;
    NamesInRow names_;
};

}  // namespace

std::map<std::string, uint64_t> change_digests(const bgp_platform::Device& device)
{
    ChangeDigester digester;
    walk_rows(device, digester);
    return digester.take();
}

}  // namespace bgp_rehearse
