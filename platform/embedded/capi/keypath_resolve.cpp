// Plans and their arguments into places of the tree.
#include <charconv>

#include "capi/keypath.h"

namespace bgp_platform::capi {

namespace {

// The arguments of one call, taken in order. A plan that was spliced in has none of its own.
struct Arguments {
    va_list list;
};

class Resolver {
public:
    Resolver(const schema::Schema& schema, const schema::Module* name_space, store::Path* path)
        : schema_(schema), name_space_(name_space), path_(*path)
    {
        path_.node = nullptr;
        path_.entries.clear();
    }

    bool walk(const Plan& plan, Arguments* arguments)
    {
        if (!plan.error.empty()) {
            return fail(CONFD_ERR_BADPATH, plan.error);
        }
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

private:
    bool fail(int code, std::string detail)
    {
        error = {code, std::move(detail)};
        return false;
    }

    bool child(const Step& step)
    {
        const schema::Node* const parent = path_.node;
        if (parent != nullptr && parent->is_list() && !path_.names_entry()) {
            return fail(CONFD_ERR_BADPATH, "no key for the list " + parent->name);
        }
        if (step.last_child == nullptr || step.last_parent != parent || step.last_module != name_space_) {
            step.last_child = find_child(schema_, step, parent, name_space_);
            step.last_parent = parent;
            step.last_module = name_space_;
        }
        if (step.last_child == nullptr) {
            return fail(CONFD_ERR_BADPATH, "there is no " + step.name + " below " +
                                               (parent == nullptr ? std::string("the root") : parent->path()));
        }
        path_.node = step.last_child;
        return true;
    }

    // Opens a selector of the current list.
    store::Selector* select()
    {
        if (path_.node == nullptr || !path_.node->is_list() || path_.names_entry()) {
            fail(CONFD_ERR_BADPATH, "a key where no list is");
            return nullptr;
        }
        path_.entries.emplace_back();
        path_.entries.back().list = path_.node;
        return &path_.entries.back();
    }

    bool keys(const Step& step, Arguments* arguments)
    {
        store::Selector* const selector = select();
        if (selector == nullptr) {
            return false;
        }
        const schema::Record& record = *path_.node->entry;
        selector->keys.reserve(record.keys);
        for (const KeySource& source : step.keys) {
            if (!key(source, arguments, record, &selector->keys)) {
                return false;
            }
        }
        if (selector->keys.size() != record.keys) {
            return fail(CONFD_ERR_BADPATH, "the list " + path_.node->name + " has " + std::to_string(record.keys) +
                                               " keys, not " + std::to_string(selector->keys.size()));
        }
        return true;
    }

    bool key(const KeySource& source, Arguments* arguments, const schema::Record& record,
             std::vector<schema::Value>* keys)
    {
        if (source.kind == KeySource::Kind::Value) {
            return key_value(va_arg(arguments->list, const confd_value_t*), record, keys);
        }
        if (source.kind == KeySource::Kind::Tuple) {
            const int count = va_arg(arguments->list, int);
            const confd_value_t* const values = va_arg(arguments->list, const confd_value_t*);
            for (int i = 0; i < count; ++i) {
                if (!key_value(values + i, record, keys)) {
                    return false;
                }
            }
            return true;
        }
        char number[16];
        return key_text(scalar(source, arguments, number), record, keys);
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
    const schema::Node* next_key(const schema::Record& record, const std::vector<schema::Value>& keys)
    {
        if (keys.size() < record.keys) {
            return record.values[keys.size()];
        }
        fail(CONFD_ERR_BADPATH, "the list " + path_.node->name + " has only " + std::to_string(record.keys) + " keys");
        return nullptr;
    }

    bool key_text(std::string_view text, const schema::Record& record, std::vector<schema::Value>* keys)
    {
        const schema::Node* const leaf = next_key(record, *keys);
        if (leaf == nullptr) {
            return false;
        }
        schema::Value value;
        std::string why;
        if (!leaf->type->parse(text, &value, &why)) {
            return fail(CONFD_ERR_BADTYPE, "key " + leaf->name + ": " + why);
        }
        keys->push_back(std::move(value));
        return true;
    }

    bool key_value(const confd_value_t* confd, const schema::Record& record, std::vector<schema::Value>* keys)
    {
        const schema::Node* const leaf = next_key(record, *keys);
        if (leaf == nullptr) {
            return false;
        }
        schema::Value value;
        if (confd == nullptr || !leaf->type->from_confd(*confd, &value)) {
            return fail(CONFD_ERR_BADTYPE, "key " + leaf->name + " is no " + leaf->type->name);
        }
        keys->push_back(std::move(value));
        return true;
    }

    bool index(const Step& step, Arguments* arguments)
    {
        store::Selector* const selector = select();
        if (selector == nullptr) {
            return false;
        }
        char number[16];
        const std::string_view text = scalar(step.keys.front(), arguments, number);
        const auto parsed = std::from_chars(text.data(), text.data() + text.size(), selector->position);
        if (parsed.ec != std::errc() || selector->position < 0) {
            return fail(CONFD_ERR_BADPATH, "not a position: " + std::string(text));
        }
        return true;
    }

    bool splice(const Step& step, Arguments* arguments)
    {
        const char* const text = arguments == nullptr ? nullptr : va_arg(arguments->list, const char*);
        if (text == nullptr) {
            return fail(CONFD_ERR_BADPATH, "no text for a %s");
        }
        return walk(parse_path_text(step.name + text), nullptr);
    }

    const schema::Schema& schema_;
    const schema::Module* name_space_;
    store::Path& path_;
};

}  // namespace

const schema::Node* find_child(const schema::Schema& schema, const Step& step, const schema::Node* parent,
                               const schema::Module* name_space)
{
    const schema::Module* const module = step.prefix.empty() ? nullptr : schema.module_by_prefix(step.prefix);
    if (!step.prefix.empty() && module == nullptr) {
        return nullptr;
    }
    if (parent != nullptr) {
        const schema::Node* const found = parent->child(step.name);
        return found != nullptr && (module == nullptr || found->module == module) ? found : nullptr;
    }
    const schema::Node* const own =
        module == nullptr && name_space != nullptr ? schema.top_node(step.name, name_space) : nullptr;
    return own != nullptr ? own : schema.top_node(step.name, module);
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
    Resolver resolver(schema_, name_space, path);
    resolver.walk(plan_of(format), &taken);
    va_end(taken.list);
    return std::move(resolver.error);
}

}  // namespace bgp_platform::capi
