// libyang's context of some modules, and what it says about them.
#include "schema/libyang_context.h"

#include <map>

namespace bgp_platform::schema {

namespace {

using Texts = std::map<std::string, std::string, std::less<>>;  // libyang wants them NUL-terminated

// libyang asks for a module or submodule, a module's imports among them.
LY_ERR find_text(const char* module, const char* /*revision*/, const char* submodule, const char* /*subrevision*/,
                 void* texts, LYS_INFORMAT* format, const char** text, ly_module_imp_data_free_clb* free_text)
{
    const auto& known = *static_cast<const Texts*>(texts);
    const auto at = known.find(submodule != nullptr ? submodule : module);
    if (at == known.end()) {
        return LY_ENOTFOUND;
    }
    *format = LYS_IN_YANG;
    *text = at->second.c_str();
    *free_text = nullptr;
    return LY_SUCCESS;
}

Context make_context(Texts* texts)
{
    ly_ctx* context = nullptr;
    const uint16_t options = LY_CTX_NO_YANGLIBRARY | LY_CTX_DISABLE_SEARCHDIRS | LY_CTX_SET_PRIV_PARSED;
    if (ly_ctx_new(nullptr, options, &context) != LY_SUCCESS) {
        throw SchemaError("libyang cannot make a context");
    }
    ly_ctx_set_module_imp_clb(context, find_text, texts);
    return Context(context);
}

void load_modules(ly_ctx* context, const std::vector<ModuleText>& modules)
{
    const KeepMessages messages(context);
    for (const ModuleText& module : modules) {
        const std::string name(module.name);
        if (ly_ctx_load_module(context, name.c_str(), nullptr, nullptr) == nullptr) {
            throw SchemaError("module " + name + ": " + messages.first_error());
        }
    }
}

}  // namespace

Context context_of(const std::vector<ModuleText>& modules)
{
    Texts texts;
    for (const ModuleText& module : modules) {
        texts.emplace(module.name, module.text);
    }
    Context context = make_context(&texts);
    load_modules(context.get(), modules);
    ly_ctx_set_module_imp_clb(context.get(), nullptr, nullptr);
    return context;
}

KeepMessages::KeepMessages(const ly_ctx* context) : context_(context), options_(ly_log_options(LY_LOSTORE))
{
    ly_err_clean(const_cast<ly_ctx*>(context_), nullptr);
}

KeepMessages::~KeepMessages()
{
    ly_err_clean(const_cast<ly_ctx*>(context_), nullptr);
    ly_log_options(options_);
}

std::string KeepMessages::first_error() const
{
    const ly_err_item* item = ly_err_first(context_);
    while (item != nullptr && item->level != LY_LLERR) {
        item = item->next;
    }
    if (item == nullptr || item->msg == nullptr) {
        return {};
    }
    return item->path != nullptr ? std::string(item->msg) + " (" + item->path + ")" : std::string(item->msg);
}

}  // namespace bgp_platform::schema
