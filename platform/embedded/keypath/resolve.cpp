// Plans and their arguments into places of the tree.
#include <algorithm>
#include <charconv>

#include "keypath/parser.h"

namespace bgp_platform::capi {

namespace {

// The arguments of one call, taken in order. A plan that was spliced in has none of its own.
struct Arguments {
    va_list list;
};

// The node that a path's names lead to.
class NodeFinder {
public:
    NodeFinder(const schema::Schema& schema, const schema::Module* name_space)
        : schema_(schema), name_space_(name_space)
    {
    }
    void child(std::string_view prefix, std::string_view name)
    {
        node = lost_ ? nullptr : find_child(schema_, prefix, name, node, name_space_);
        lost_ = node == nullptr;
    }
    void begin_keys() {}
    void key(KeySource::Kind /*kind*/, std::string_view /*literal*/) {}
    void end_keys() {}
    void index(KeySource::Kind /*kind*/, std::string_view /*digits*/) {}
    void splice(std::string_view /*before*/) {}

    const schema::Node* node = nullptr;

private:
    const schema::Schema& schema_;
    const schema::Module* name_space_;
    bool lost_ = false;
};

class Resolver {
public:
    Resolver(const schema::Schema& schema, KeypathCache* keypaths, const schema::Module* name_space, store::Path* path)
        : schema_(schema), keypaths_(*keypaths), name_space_(name_space), path_(*path)
    {
        path_.node = nullptr;
        path_.entries.clear();
    }

    bool walk(const Plan& plan, Arguments* arguments)
    {
        if (!plan.error.empty()) {
            return fail(CONFD_ERR_BADPATH, plan.error);
        }
        met = plan.readings;
        for (const Step& step : plan.steps) {
            const bool done = step.kind == Step::Kind::Child   ? child(step)
                              : step.kind == Step::Kind::Keys  ? keys(step, arguments)
                              : step.kind == Step::Kind::Index ? index(step, arguments)
                                                               : splice(step, arguments);
            if (!done) {
                return false;
            }
        }
        return true;
    }

    PathError error;
    uint32_t met = 0;  // readings that the path depends on, as bits

private:
    bool fail(int code, std::string detail)
    {
        error = {code, std::move(detail)};
        return false;
    }

    bool child(const Step& step)
    {
        if (step.last_child == nullptr || step.last_parent != path_.node || step.last_module != name_space_) {
            step.last_child = find_child(schema_, step.prefix, step.name, path_.node, name_space_);
            step.last_parent = path_.node;
            step.last_module = name_space_;
        }
        return go_to(step.last_child, step.name);
    }

    // To a node below the one at hand; null when there is none of that name.
    bool go_to(const schema::Node* child, std::string_view name)
    {
        const schema::Node* const parent = path_.node;
        if (parent != nullptr && parent->is_list() && !path_.names_entry()) {
            return fail(CONFD_ERR_BADPATH, "no key for the list " + parent->name);
        }
        if (child == nullptr) {
            return fail(CONFD_ERR_BADPATH, no_child(name));
        }
        path_.node = child;
        return true;
    }

    std::string no_child(std::string_view name) const
    {
        const schema::Node* const parent = path_.node;
        const auto& children = parent == nullptr ? schema_.top_nodes() : parent->children;
        const bool several = std::any_of(children.begin(), children.end(), [name](const schema::Node* node) {
            return node->has_namesake && node->name == name;
        });
        const std::string below = parent == nullptr ? "the root" : parent->path();
        return (several ? "more than one module has a " : "there is no ") + std::string(name) + " below " + below;
    }

    // Opens a selector of the list at hand.
    bool select()
    {
        if (path_.node == nullptr || !path_.node->is_list() || path_.names_entry()) {
            return fail(CONFD_ERR_BADPATH, "a key where no list is");
        }
        path_.entries.emplace_back();
        path_.entries.back().list = path_.node;
        return true;
    }

    bool keys(const Step& step, Arguments* arguments)
    {
        if (!begin_keys()) {
            return false;
        }
        for (const KeySource& source : step.keys) {
            if (!key(source, arguments)) {
                return false;
            }
        }
        return end_keys();
    }

    bool begin_keys()
    {
        if (!select()) {
            return false;
        }
        path_.entries.back().keys.reserve(path_.node->entry->keys);
        if (path_.node->entry->keys > kPublishedKeys) {
            met |= bit(Reading::KeyOfMoreThanEightIsTaken);
        }
        return true;
    }

    bool end_keys()
    {
        const std::size_t given = path_.entries.back().keys.size();
        const std::size_t wanted = path_.node->entry->keys;
        return given == wanted ||
               fail(CONFD_ERR_BADPATH, "the list " + path_.node->name + " has " + std::to_string(wanted) +
                                           " keys, not " + std::to_string(given));
    }

    bool key(const KeySource& source, Arguments* arguments)
    {
        if (source.kind == KeySource::Kind::Value) {
            return key_value(va_arg(arguments->list, const confd_value_t*));
        }
        if (source.kind == KeySource::Kind::Tuple) {
            const int count = va_arg(arguments->list, int);
            const confd_value_t* const values = va_arg(arguments->list, const confd_value_t*);
            for (int i = 0; i < count; ++i) {
                if (!key_value(values + i)) {
                    return false;
                }
            }
            return true;
        }
        char number[16];
        return key_text(scalar(source, arguments, number));
    }

    // The text of a literal, a number or a %s.
    static std::string_view scalar(const KeySource& source, Arguments* arguments, char (&number)[16])
    {
        const auto digits = [&number](auto value) {
            return std::string_view(
                number, static_cast<std::size_t>(std::to_chars(number, number + sizeof number, value).ptr - number));
        };
        switch (source.kind) {
            case KeySource::Kind::Int:
                return digits(va_arg(arguments->list, int));
            case KeySource::Kind::Unsigned:
                return digits(va_arg(arguments->list, unsigned int));
            case KeySource::Kind::Short:  // promoted to int by the call
                return digits(static_cast<unsigned short>(va_arg(arguments->list, int)));
            case KeySource::Kind::Text: {
                const char* const text = va_arg(arguments->list, const char*);
                return text == nullptr ? std::string_view() : std::string_view(text);
            }
            default:
                return source.literal;
        }
    }

    // The leaf that the next key is for, or null when the list has no more.
    const schema::Node* next_key()
    {
        const schema::Record& record = *path_.node->entry;
        const std::size_t given = path_.entries.back().keys.size();
        if (given < record.keys) {
            return record.values[given];
        }
        fail(CONFD_ERR_BADPATH, "the list " + path_.node->name + " has only " + std::to_string(record.keys) + " keys");
        return nullptr;
    }

    bool key_text(std::string_view text)
    {
        const schema::Node* const leaf = next_key();
        if (leaf == nullptr) {
            return false;
        }
        schema::Value value;
        std::string why;
        if (!leaf->type->parse(text, &value, &why)) {
            return fail(CONFD_ERR_BADTYPE, "key " + leaf->name + ": " + why);
        }
        return take_key(std::move(value));
    }

    bool key_value(const confd_value_t* confd)
    {
        const schema::Node* const leaf = next_key();
        if (leaf == nullptr) {
            return false;
        }
        schema::Value value;
        if (confd == nullptr || !leaf->type->from_confd(*confd, &value)) {
            return fail(CONFD_ERR_BADTYPE, "key " + leaf->name + " is no " + leaf->type->name);
        }
        return take_key(std::move(value));
    }

    bool take_key(schema::Value value)
    {
        if (value.has_host_bits()) {
            met |= bit(Reading::HostBitsOfPrefixAreKept);
        }
        path_.entries.back().keys.push_back(std::move(value));
        return true;
    }

    bool index(const Step& step, Arguments* arguments)
    {
        char number[16];
        return index(scalar(step.keys.front(), arguments, number));
    }

    bool index(std::string_view digits)
    {
        if (!select()) {
            return false;
        }
        std::ptrdiff_t& position = path_.entries.back().position;
        const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), position);
        return (parsed.ec == std::errc() && position >= 0) ||
               fail(CONFD_ERR_BADPATH, "not a position: " + std::string(digits));
    }

    bool splice(const Step& step, Arguments* arguments)
    {
        const char* const text = arguments == nullptr ? nullptr : va_arg(arguments->list, const char*);
        if (text == nullptr) {
            return fail(CONFD_ERR_BADPATH, "no text for a %s");
        }
        if (!step.name.empty()) {
            return walk_text(step.name + text);
        }
        return walk_text(text);
    }

    bool walk_text(std::string_view text)
    {
        if (path_.node == nullptr) {
            text.remove_prefix(walk_front(text));
        }
        TextWalk walk(*this);
        KeypathParser parser(text, false, &walk);
        std::string wrong = parser.parse();
        met |= parser.readings();
        return wrong.empty() ? !error : fail(CONFD_ERR_BADPATH, std::move(wrong));
    }

    // Goes to the outermost list that the text names, if it begins with one, and returns the length of its name.
    std::size_t walk_front(std::string_view text)
    {
        const auto opens = [](char letter) { return letter == '{' || letter == '['; };
        const auto length = static_cast<std::size_t>(std::find_if(text.begin(), text.end(), opens) - text.begin());
        const schema::Node* const node = keypaths_.node_of(text.substr(0, length), name_space_);
        if (node == nullptr || !node->is_list() || inside_list(*node)) {
            return 0;
        }
        path_.node = node;
        return length;
    }

    static bool inside_list(const schema::Node& node)
    {
        const schema::Node* around = node.parent;
        while (around != nullptr && !around->is_list()) {
            around = around->parent;
        }
        return around != nullptr;
    }

    // Walks along a path that is given as text. Behind a piece that does not fit it stands still: what is wrong with the
    // text itself is told first.
    class TextWalk {
    public:
        explicit TextWalk(Resolver& resolver) : at_(resolver) {}
        void child(std::string_view prefix, std::string_view name)
        {
            if (going()) {
                at_.go_to(find_child(at_.schema_, prefix, name, at_.path_.node, at_.name_space_), name);
            }
        }
        void begin_keys()
        {
            if (going()) {
                at_.begin_keys();
            }
        }
        void key(KeySource::Kind /*kind*/, std::string_view literal)
        {
            if (going()) {
                at_.key_text(literal);
            }
        }
        void end_keys()
        {
            if (going()) {
                at_.end_keys();
            }
        }
        void index(KeySource::Kind /*kind*/, std::string_view digits)
        {
            if (going()) {
                at_.index(digits);
            }
        }
        void splice(std::string_view /*before*/) {}  // a text has none

    private:
        bool going() const noexcept { return !at_.error; }

        Resolver& at_;
    };

    const schema::Schema& schema_;
    KeypathCache& keypaths_;
    const schema::Module* name_space_;
    store::Path& path_;
};

}  // namespace

const schema::Node* find_child(const schema::Schema& schema, std::string_view prefix, std::string_view name,
                               const schema::Node* parent, const schema::Module* name_space)
{
    const schema::Module* const module = prefix.empty() ? nullptr : schema.module_by_prefix(prefix);
    if (!prefix.empty() && module == nullptr) {
        return nullptr;
    }
    if (parent != nullptr) {
        return parent->child(name, module);
    }
    const schema::Node* const own =
        module == nullptr && name_space != nullptr ? schema.top_node(name, name_space) : nullptr;
    return own != nullptr ? own : schema.top_node(name, module);
}

PathError read_keys(const schema::Node& list, const confd_value_t* values, int n, std::vector<schema::Value>* keys)
{
    const schema::Record& record = *list.entry;
    if (n < 0 || n > record.keys) {
        return {CONFD_ERR_BADPATH,
                "the list " + list.name + " has " + std::to_string(record.keys) + " keys, not " + std::to_string(n)};
    }
    keys->resize(static_cast<std::size_t>(n));
    for (std::size_t i = 0; i < keys->size(); ++i) {
        const schema::Node& leaf = *record.values[i];
        if (!leaf.type->from_confd(values[i], &(*keys)[i])) {
            return {CONFD_ERR_BADTYPE, "key " + leaf.name + " is no " + leaf.type->name};
        }
    }
    return {};
}

const schema::Node* KeypathCache::node_of(std::string_view path, const schema::Module* name_space)
{
    if (path != last_.path || name_space != last_.name_space) {
        NodeFinder finder(schema_, name_space);
        const bool fits = KeypathParser(path, false, &finder).parse().empty();
        last_ = {std::string(path), name_space, fits ? finder.node : nullptr};
    }
    return last_.node;
}

const Plan& KeypathCache::plan_of(const char* format)
{
    Recent& recently = recent(format);
    if (recently.text != nullptr && format != nullptr && *recently.text == format) {
        return *recently.plan;
    }
    lookup_.assign(format == nullptr ? "" : format);
    auto known = plans_.find(lookup_);
    if (known == plans_.end()) {
        if (plans_.size() == kMost) {
            plans_.clear();
            recent_.fill({});
        }
        known = plans_.emplace(lookup_, parse_template(lookup_)).first;
    }
    recent(format) = {&known->first, &known->second};
    return known->second;
}

PathError KeypathCache::resolve(const char* format, va_list arguments, const schema::Module* name_space,
                                store::Path* path)
{
    Arguments taken;
    va_copy(taken.list, arguments);
    Resolver resolver(schema_, this, name_space, path);
    if (resolver.walk(plan_of(format), &taken) && path->node == nullptr) {
        resolver.met |= bit(Reading::EmptyPathIsBadDefaultExists);
        resolver.error = {CONFD_ERR_BADPATH, "an empty path"};
    }
    va_end(taken.list);
    met_ = resolver.met;
    return std::move(resolver.error);
}

}  // namespace bgp_platform::capi
