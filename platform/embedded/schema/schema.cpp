// Look-ups in a schema, where its modules come from, and validation.
#include "schema/schema.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "schema/libyang_context.h"
#include "schema/schema_reader.h"
#include "schema/schema_storage.h"

namespace bgp_platform::schema {

namespace {

struct ModuleFile {
    std::string name;
    std::string text;
};

std::string read_file(const std::filesystem::path& path)
{
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file) {
        throw SchemaError(path.string() + ": " + std::generic_category().message(errno));
    }
    return text;
}

// "router.yang" and "router@2026-11-21.yang" both hold the module "router".
std::string module_name(const std::filesystem::path& path)
{
    const std::string stem = path.stem().string();
    return stem.substr(0, stem.find('@'));
}

std::vector<ModuleFile> module_files(const std::string& folder)
{
    std::error_code error;
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (at->path().extension() == ".yang") {
            paths.push_back(at->path());
        }
    }
    if (error) {
        throw SchemaError(folder + ": " + error.message());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<ModuleFile> files;
    files.reserve(paths.size());
    for (const auto& path : paths) {
        files.push_back({module_name(path), read_file(path)});
    }
    return files;
}

template <typename Matches>
const Node* first_node(const std::vector<const Node*>& nodes, Matches matches)
{
    const auto at = std::find_if(nodes.begin(), nodes.end(), matches);
    return at != nodes.end() ? *at : nullptr;
}

template <typename Modules, typename Matches>
const Module* first_module(const Modules& modules, Matches matches)
{
    const auto at = std::find_if(modules.begin(), modules.end(), matches);
    return at != modules.end() ? &*at : nullptr;
}

struct TreeDeleter {
    void operator()(lyd_node* tree) const noexcept { lyd_free_all(tree); }
};

}  // namespace

bool is_secret(std::string_view leaf_name)
{
    return leaf_name.find("assword") != std::string_view::npos;
}

bool parse_value(const Node& leaf, std::string_view text, Value* value, std::string* why)
{
    if (!is_secret(leaf)) {
        return leaf.type->parse(text, value, why);
    }
    *why = "not a value of the leaf's type";
    return leaf.type->parse(text, value);
}

const Node* Node::child(std::string_view child_name, const Module* in) const noexcept
{
    const Node* const found = first_node(
        children, [=](const Node* node) { return node->name == child_name && (in == nullptr || node->module == in); });
    return found != nullptr && found->has_namesake && in == nullptr ? nullptr : found;
}

const Node* Node::child(uint32_t child_tag, uint32_t name_space) const noexcept
{
    const uint32_t wanted = name_space == 0 ? module->hash : name_space;
    const Node* const found = first_node(children, [=](const Node* node) { return node->tag == child_tag; });
    if (found == nullptr || found->module->hash == wanted) {
        return found;
    }
    if (!found->has_namesake) {
        return name_space == 0 ? found : nullptr;
    }
    return first_node(children,
                      [=](const Node* node) { return node->tag == child_tag && node->module->hash == wanted; });
}

std::string Node::path() const
{
    return (parent != nullptr ? parent->path() : std::string()) + "/" + name;
}

Schema::Schema() : storage_(std::make_unique<Storage>()) {}

Schema::~Schema() = default;

std::shared_ptr<const Schema> Schema::from_modules(const std::vector<ModuleText>& modules)
{
    return SchemaReader::read(modules);
}

std::shared_ptr<const Schema> Schema::from_folder(const std::string& folder)
{
    const std::vector<ModuleFile> files = module_files(folder);
    if (files.empty()) {
        throw SchemaError(folder + ": no *.yang file in it");
    }
    std::vector<ModuleText> modules;
    modules.reserve(files.size());
    for (const ModuleFile& file : files) {
        modules.push_back({file.name, file.text});
    }
    return from_modules(modules);
}

const Module* Schema::module_by_prefix(std::string_view prefix_or_name) const noexcept
{
    return first_module(storage_->modules, [=](const Module& module) {
        return module.prefix == prefix_or_name || module.name == prefix_or_name;
    });
}

const Module* Schema::module_by_hash(uint32_t hash) const noexcept
{
    return first_module(storage_->modules, [=](const Module& module) { return module.hash == hash; });
}

const Module* Schema::module_by_uri(std::string_view uri) const noexcept
{
    return first_module(storage_->modules, [=](const Module& module) { return module.uri == uri; });
}

const Node* Schema::top_node(std::string_view name, const Module* module) const noexcept
{
    const Node* found = nullptr;
    for (const Node* node : top_) {
        if (node->name != name || (module != nullptr && node->module != module)) {
            continue;
        }
        if (found != nullptr) {
            return nullptr;
        }
        found = node;
    }
    return found;
}

const char* Schema::name_of(uint32_t hash) const noexcept
{
    const auto at = storage_->names.find(hash);
    return at != storage_->names.end() ? at->second->c_str() : nullptr;
}

std::string Schema::validate(const std::string& xml) const
{
    if (storage_->context == nullptr) {
        storage_->context = context_of(builtin_modules());
    }
    const ly_ctx* const context = storage_->context.get();
    const KeepMessages messages(context);
    lyd_node* read = nullptr;
    const LY_ERR result = lyd_parse_data_mem(context, xml.c_str(), LYD_XML, LYD_PARSE_STRICT | LYD_PARSE_NO_STATE,
                                             LYD_VALIDATE_NO_STATE, &read);
    const std::unique_ptr<lyd_node, TreeDeleter> tree(read);
    if (result == LY_SUCCESS) {
        return {};
    }
    const std::string message = messages.first_error();
    return message.empty() ? std::string("not valid: ") + std::to_string(result) : message;
}

}  // namespace bgp_platform::schema
