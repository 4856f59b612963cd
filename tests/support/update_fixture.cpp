#include "support/update_fixture.h"

#include <memory>
#include <stdexcept>

#include "bgp_update/update.h"
#include "support/change_lines.h"
#include "support/stored_rows.h"

namespace bgp_test {

using bgp_platform::Device;
using bgp_platform::UpgradeHandles;
using bgp_platform::schema::ModuleText;

std::string config(std::string_view top_elements)
{
    return "<config xmlns=\"http://tail-f.com/ns/config/1.0\">" + std::string(top_elements) + "</config>";
}

std::string bgp_entity(std::string_view leaves)
{
    return mib(leaf("bgpRmEntTable", leaf("bgpRmEntEntry", std::string(leaves))));
}

std::string error_text(std::string_view function, int code, std::string_view path, std::string_view detail)
{
    std::string text(function);
    text.append(": ").append(confd_strerror(code));
    for (const std::string_view part : {path, detail}) {
        if (!part.empty()) {
            text.append(": ").append(part);
        }
    }
    return text;
}

std::string absent(std::string_view function, std::string_view path)
{
    return error_text(function, CONFD_ERR_NOEXISTS, path);
}

std::string planned(std::string_view function, std::string_view path)
{
    return error_text(function, CONFD_ERR_INTERNAL, path, "as planned");
}

std::string listing(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += '"';
        for (const char c : line) {
            text += c == '\n' ? "\\n" : std::string(1, c);
        }
        text += "\"\n";
    }
    return text;
}

std::string& UpdateTest::moduleText(std::string_view module)
{
    if (device_) {
        throw std::logic_error("the data model is changed before anything is stored");
    }
    if (modules_.empty()) {
        for (const ModuleText& builtin : bgp_platform::schema::builtin_modules()) {
            modules_.emplace_back(builtin.name, builtin.text);
        }
    }
    for (auto& [name, text] : modules_) {
        if (name == module) {
            return text;
        }
    }
    throw std::logic_error("there is no module " + std::string(module));
}

void UpdateTest::leafHasType(std::string_view module, std::string_view leaf, std::string_view type)
{
    std::string& text = moduleText(module);
    const std::size_t slash = leaf.find('/');
    const std::size_t list =
        slash == std::string_view::npos ? 0 : text.find("list " + std::string(leaf.substr(0, slash)) + " {");
    const std::string name(leaf.substr(slash == std::string_view::npos ? 0 : slash + 1));
    std::size_t node = text.find("leaf " + name + " {", list);
    if (node == std::string::npos) {
        node = text.find("leaf-list " + name + " {", list);
    }
    if (node == std::string::npos) {
        throw std::logic_error("module " + std::string(module) + " has no leaf " + std::string(leaf));
    }
    const std::size_t from = text.find("type ", node);
    text.replace(from, text.find(';', from) - from, "type " + std::string(type));
}

void UpdateTest::leafListIsLeaf(std::string_view module, std::string_view name)
{
    std::string& text = moduleText(module);
    const std::string keyword = "leaf-list";
    const std::size_t node = text.find(keyword + " " + std::string(name) + " {");
    if (node == std::string::npos) {
        throw std::logic_error("module " + std::string(module) + " has no leaf-list " + std::string(name));
    }
    text.replace(node, keyword.size(), "leaf");
}

Device& UpdateTest::device()
{
    if (!device_) {
        Device::Options options;
        if (!modules_.empty()) {
            std::vector<ModuleText> texts;
            for (const auto& [name, text] : modules_) {
                texts.push_back({name, text});
            }
            options.schema = bgp_platform::schema::Schema::from_modules(texts);
        }
        device_.emplace(options);
    }
    return *device_;
}

UpgradeHandles UpdateTest::open()
{
    if (!upgrade_) {
        upgrade_ = device().open_upgrade();
    }
    return *upgrade_;
}

void UpdateTest::commit()
{
    device().commit();
    upgrade_.reset();
}

void UpdateTest::stored(std::string_view top_elements)
{
    device().load_text(config(top_elements), "stored");
}

void UpdateTest::upgrade()
{
    EXPECT_EQ(run(update), 0);
}

void UpdateTest::expectLog(const std::vector<std::string>& lines)
{
    EXPECT_EQ(listing(device().log()), listing(lines));
}

void UpdateTest::expectChanges(const std::vector<std::string>& lines)
{
    EXPECT_EQ(listing(change_lines(device())), listing(lines));
}

void UpdateTest::expectCalls(const std::vector<std::string>& lines)
{
    std::vector<std::string> calls;
    for (const auto& call : device().recorder().calls()) {
        calls.push_back(call.text());
    }
    EXPECT_EQ(listing(calls), listing(lines));
}

void UpdateTest::expectNothingLeftOpen()
{
    const bgp_platform::OpenThings open = device().open_things();
    EXPECT_EQ(open.cdb_sessions, 0U);
    EXPECT_EQ(open.cdb_sockets, 0U);
    EXPECT_EQ(open.cursors, 0U);
    EXPECT_EQ(open.values, 0U);
}

}  // namespace bgp_test
