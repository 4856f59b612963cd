// A schema as text: numbers, and texts behind their length. A part is known by its place among those of its kind, from 1.
#include "schema/compiled_schema.h"

#include <charconv>
#include <deque>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "schema/schema_storage.h"

namespace bgp_platform::schema {

namespace {

// What a schema consists of.
using Parts = std::tuple<std::deque<Module>&, std::deque<Type>&, std::deque<Record>&, std::deque<Node>&>;

// The fields of each part and of what it holds, for the writer and the reader. A field that joins one of them does not
// compile until it is among them here.
template <typename Form, typename T>
using Of = typename Form::template Field<T>;

template <typename Form>
void fields(Form& form, Of<Form, Module> module)
{
    auto& [name, prefix, uri, hash] = module;
    form.all(name, prefix, uri, hash);
}

template <typename Form>
void fields(Form& form, Of<Form, EnumName> known)
{
    auto& [name, number] = known;
    form.all(name, number);
}

template <typename Form>
void fields(Form& form, Of<Form, Interval> interval)
{
    auto& [low, high] = interval;
    form.all(low, high);
}

template <typename Form>
void fields(Form& form, Of<Form, Type> type)
{
    auto& [base, vtype, name, intervals, enums] = type;
    form.all(base, vtype, name, intervals, enums);
}

template <typename Form>
void fields(Form& form, Of<Form, Record> record)
{
    auto& [owner, keys, values, lists] = record;
    form.all(owner, keys, values, lists);
}

template <typename Form>
void fields(Form& form, Of<Form, Node> node)
{
    auto& [name, module, tag, kind, parent, children, type, default_value, record, slot, entry, key, state, secret,
           has_namesake] = node;
    form.all(name, module, tag, kind, parent, children, type);
    form.value(type, default_value);
    form.all(record, slot, entry, key, state, secret, has_namesake);
}

class Writer {
public:
    template <typename T>
    using Field = const T&;

    explicit Writer(const Parts& parts)
    {
        std::apply([&](const auto&... kinds) { (number(kinds), ...); }, parts);
    }

    template <typename... Fields>
    void all(const Fields&... each)
    {
        (put(each), ...);
    }
    void value(const Type* type, const Value& value)
    {
        put(value.kind());
        if (!value.absent()) {
            put(type->text(value));
        }
    }
    template <typename T>
    void size(const std::deque<T>& kind)
    {
        put(kind.size());
    }
    void end_line() { text_.back() = '\n'; }
    std::string take() { return std::move(text_); }

private:
    template <typename T>
    void number(const std::deque<T>& kind)
    {
        std::size_t place = 0;
        for (const T& part : kind) {
            places_.emplace(&part, ++place);
        }
    }
    template <typename T>
    void put(const T& field)
    {
        if constexpr (std::is_enum_v<T>) {
            put(static_cast<std::underlying_type_t<T>>(field));
        } else if constexpr (std::is_arithmetic_v<T>) {
            text_ += std::to_string(field) + ' ';
        } else if constexpr (std::is_pointer_v<T>) {
            put(field == nullptr ? 0 : places_.at(field));
        } else {
            fields(*this, field);
        }
    }
    template <typename T>
    void put(const std::vector<T>& many)
    {
        put(many.size());
        for (const T& one : many) {
            put(one);
        }
    }
    void put(const std::string& text)
    {
        put(text.size());
        text_ += text + ' ';
    }

    std::unordered_map<const void*, std::size_t> places_;
    std::string text_;
};

class Reader {
public:
    template <typename T>
    using Field = T&;

    Reader(std::string_view text, const Parts& parts) : rest_(text), parts_(parts) {}

    template <typename... Fields>
    void all(Fields&... each)
    {
        (get(&each), ...);
    }
    void value(const Type* type, Value& value)
    {
        Value::Kind kind{};
        get(&kind);
        if (kind == Value::Kind::Absent) {
            return;
        }
        std::string text;
        get(&text);
        require(type != nullptr && type->parse(text, &value) && value.kind() == kind);
    }
    template <typename T>
    void size(std::deque<T>& kind)
    {
        kind.resize(size());
    }
    void end_line() const { require(ended_ == '\n'); }
    void end() const { require(rest_.empty()); }

private:
    static void require(bool understood)
    {
        if (!understood) {
            throw SchemaError("not the text of a compiled schema");
        }
    }
    char end_of_field(std::size_t size)
    {
        require(size < rest_.size() && (rest_[size] == ' ' || rest_[size] == '\n'));
        ended_ = rest_[size];
        rest_.remove_prefix(size + 1);
        return ended_;
    }
    // What is counted has a character each, or more.
    std::size_t size()
    {
        std::size_t size = 0;
        get(&size);
        require(size <= rest_.size());
        return size;
    }
    template <typename T>
    void get(T* field)
    {
        if constexpr (std::is_enum_v<T>) {
            std::underlying_type_t<T> number{};
            get(&number);
            *field = static_cast<T>(number);
        } else if constexpr (std::is_arithmetic_v<T>) {
            const auto [stop, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), *field);
            require(error == std::errc());
            end_of_field(static_cast<std::size_t>(stop - rest_.data()));
        } else if constexpr (std::is_pointer_v<T>) {
            get_part(field);
        } else {
            fields(*this, *field);
        }
    }
    template <typename T>
    void get_part(const T** part)
    {
        std::size_t place = 0;
        get(&place);
        auto& kind = std::get<std::deque<T>&>(parts_);
        require(place <= kind.size());
        *part = place == 0 ? nullptr : &kind[place - 1];
    }
    template <typename T>
    void get(std::vector<T>* many)
    {
        many->resize(size());
        for (T& one : *many) {
            get(&one);
        }
    }
    void get(std::string* text)
    {
        const std::size_t length = size();
        *text = rest_.substr(0, length);
        end_of_field(length);
    }
    void get(bool* flag)
    {
        unsigned number = 0;
        get(&number);
        *flag = number != 0;
    }

    std::string_view rest_;
    char ended_ = '\0';  // the character behind the last field
    Parts parts_;
};

// The counts, and each part on a line.
template <typename Form>
void all_of(Form& form, const Parts& parts)
{
    std::apply([&](auto&... kinds) { (form.size(kinds), ...); }, parts);
    form.end_line();
    const auto each = [&](auto& kind) {
        for (auto& part : kind) {
            fields(form, part);
            form.end_line();
        }
    };
    std::apply([&](auto&... kinds) { (each(kinds), ...); }, parts);
}

}  // namespace

std::string CompiledSchema::text_of(const Schema& schema)
{
    const auto& [storage, root, top] = schema;
    auto& [context, modules, types, records, nodes, names] = *storage;
    const Parts parts(modules, types, records, nodes);
    Writer writer(parts);
    all_of(writer, parts);
    writer.all(root, top);
    writer.end_line();
    return writer.take();
}

std::shared_ptr<const Schema> CompiledSchema::read(std::string_view text)
{
    const std::shared_ptr<Schema> schema(new Schema);
    auto& [storage, root, top] = *schema;
    auto& [context, modules, types, records, nodes, names] = *storage;
    const Parts parts(modules, types, records, nodes);
    Reader reader(text, parts);
    all_of(reader, parts);
    reader.all(root, top);
    reader.end_line();
    reader.end();
    for (const Module& module : modules) {
        names.emplace(module.hash, &module.uri);
    }
    for (const Node& node : nodes) {
        names.emplace(node.tag, &node.name);
    }
    return schema;
}

}  // namespace bgp_platform::schema
