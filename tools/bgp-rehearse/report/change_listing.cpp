#include "report/change_listing.h"

#include <fmt/format.h>
#include <netinet/in.h>

#include <algorithm>
#include <unordered_map>

#include "base/text_escape.h"
#include "calls/recorder.h"
#include "judge/evidence.h"
#include "judge/row_changes.h"
#include "judge/words.h"
#include "report/row_leaves.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Value;
using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::store::Writer;

constexpr std::size_t kIndent = 4;           // of a row, and of what is in it
constexpr std::size_t kNarrowestNames = 28;  // so that values of neighbouring rows stand under each other
constexpr char kUnspecified4[] = "0.0.0.0";
constexpr char kUnspecified6[] = "::";

// Whether octets are an address: of four or sixteen.
bool is_address(const Value& value)
{
    return value.is_octets() && (value.bytes().size() == sizeof(in_addr) || value.bytes().size() == sizeof(in6_addr));
}

// The value of a leaf, an address that is stored as octets with its words beside it.
void append_shown(const Node& leaf, const Value& value, std::string* text)
{
    if (is_secret(leaf)) {
        *text += bgp_platform::capi::kMasked;
    } else if (leaf.kind == NodeKind::Presence) {
        *text += "(present)";
    } else {
        leaf.type->append_text(value, text);
        if (is_address(value)) {
            text->append(" (").append(address_words(std::string(value.bytes()))).append(")");
        }
    }
}

std::string shown(const Node& leaf, const Value* value, const List* entries)
{
    std::string text;
    if (entries != nullptr) {
        const char* between = "";
        entries->for_each([&](const Row& entry) {
            text += between;
            between = ", ";
            append_shown(leaf, entry.value(0), &text);
        });
    } else if (value != nullptr) {
        append_shown(leaf, *value, &text);
    } else {
        text = "(not set)";
    }
    return escaped(text);
}

std::string braced_key(const Row& row)
{
    return escaped("{" + bgp_platform::store::key_text(row) + "}");
}

// The addresses among its keys in words, but for those that stand for none.
std::string addresses_in_key(const Row& row)
{
    std::string text;
    for (uint16_t slot = 0; slot < row.record().keys; ++slot) {
        const Value& value = row.value(slot);
        const std::string words = is_address(value) ? address_words(std::string(value.bytes())) : std::string();
        if (!words.empty() && words != kUnspecified4 && words != kUnspecified6) {
            text.append(text.empty() ? "  " : ", ").append(words);
        }
    }
    return text;
}

class Listing : public RowVisitor {
public:
    Listing(const Subtree& subtree, Page* page) : subtree_(subtree), page_(*page) {}

    void kept(const Node& /*list*/, std::size_t /*rows*/) override {}

    void row(const RowChange& change) override
    {
        if (change.fate == Fate::AsItWas) {
            return;
        }
        RowLeaves of(change);
        if (!subtree_.holds(change)) {
            keep_those_held(change, &of.leaves);
            if (of.leaves.empty()) {
                return;
            }
        }
        tell_row(change, of);
    }

    void outside(const RowChange& change) override
    {
        RowLeaves of(change);
        if (!subtree_.is_all()) {
            keep_those_held(change, &of.leaves);
        }
        if (!of.leaves.empty()) {
            head("/");
            tell_leaves(change, of, 0, kIndent);
        }
    }

    bool empty() const noexcept { return empty_; }

private:
    void keep_those_held(const RowChange& change, std::vector<LeafChange>* leaves) const
    {
        leaves->erase(std::remove_if(leaves->begin(), leaves->end(),
                                     [&](const LeafChange& leaf) { return !subtree_.holds(change, leaf); }),
                      leaves->end());
    }

    void head(const std::string& path)
    {
        empty_ = false;
        page_.line({2, path, Paint::Bold, {}, 0, {}});
    }

    // A row below one that was told stands in it; the others below the keypath of their list.
    std::size_t place(const RowChange& change)
    {
        while (!told_.empty() && (change.around->empty() || told_.back() != change.around->back())) {
            told_.pop_back();
        }
        const std::size_t indent = kIndent * (told_.size() + 1);
        if (told_.empty() && (list_ != &change.list() || around_ != *change.around)) {
            list_ = &change.list();
            around_ = *change.around;
            head(escaped(
                bgp_platform::store::keypath(around_, nullptr) +
                bgp_platform::store::way_below(around_.empty() ? nullptr : around_.back()->record().owner, *list_)));
        }
        told_.push_back(&change.row());
        return indent;
    }

    void tell_row(const RowChange& change, const RowLeaves& of)
    {
        const std::size_t indent = place(change);
        std::string text;
        if (told_.size() > 1) {
            text += escaped(name_in_row(change.list())) + " ";
        }
        const bool moved = change.fate == Fate::Moved || change.fate == Fate::MovedAndChanged;
        text += moved ? braced_key(*change.before) + " -> " : "";
        text += braced_key(change.row());
        text += addresses_in_key(change.row());
        page_.line({indent, mark_of(change.fate), paint_of(change.fate), text, indent + kIndent,
                    step_of_writer(of.writer), paint_of(change.fate)});
        if (change.fate != Fate::Removed) {
            tell_leaves(change, of, of.writer, indent + kIndent);
        }
    }

    void tell_leaves(const RowChange& change, const RowLeaves& of, Writer told, std::size_t indent)
    {
        std::size_t width = kNarrowestNames;
        for (const LeafChange& leaf : of.leaves) {
            width = std::max(width, name_of(*leaf.node).size());
        }
        const bool both = change.fate != Fate::New;
        for (const LeafChange& leaf : of.leaves) {
            const std::string name = fmt::format("{:<{}}", name_of(*leaf.node), width + 2);
            const std::string value = (both ? shown(*leaf.node, leaf.before, leaf.entries_before) + " -> " : "") +
                                      shown(*leaf.node, leaf.after, leaf.entries_after);
            page_.line({indent, name, Paint::Plain, value, indent + width + 2,
                        leaf.writer == told ? "" : step_of_writer(leaf.writer)});
        }
    }

    static const char* mark_of(Fate fate) noexcept
    {
        return fate == Fate::New ? "+ " : fate == Fate::Removed ? "- " : "~ ";
    }

    static Paint paint_of(Fate fate) noexcept
    {
        return fate == Fate::New ? Paint::Green : fate == Fate::Removed ? Paint::Red : Paint::Yellow;
    }

    const std::string& name_of(const Node& leaf)
    {
        std::string& name = names_[&leaf];
        if (name.empty()) {
            name = escaped(name_in_row(leaf));
        }
        return name;
    }

    const Subtree& subtree_;
    Page& page_;
    bool empty_ = true;
    bgp_platform::store::Trail told_;  // the row that was told last, and those around it
    const Node* list_ = nullptr;       // whose keypath was told last
    bgp_platform::store::Trail around_;
    std::unordered_map<const Node*, std::string> names_;  // of leaves, escaped
};

}  // namespace

void list_changes(const bgp_platform::Device& device, const Subtree& subtree, Page* page)
{
    page->line({0, subtree.is_all() ? "Changes" : "Changes below ", Paint::Bold, escaped(subtree.keypath()), 2, {}});
    Listing listing(subtree, page);
    walk_rows(device, listing);
    if (listing.empty()) {
        page->line("  none");
    }
}

}  // namespace bgp_rehearse
