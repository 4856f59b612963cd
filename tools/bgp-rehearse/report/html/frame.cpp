#include "report/html/frame.h"

#include <fmt/format.h>

#include "base/base64.h"
#include "base/sha256.h"

namespace bgp_rehearse {

namespace {

// Nothing from outside, and of what is inside just this style and these scripts.
std::string security_policy(const Assets& assets)
{
    const auto hash = [](std::string_view text) {
        Sha256 sum;
        sum.add(text);
        const Sha256::Digest digest = sum.digest();
        return fmt::format(" 'sha256-{}'", base64_of({reinterpret_cast<const char*>(digest.data()), digest.size()}));
    };
    std::string scripts;
    for (const std::string_view script : assets.scripts) {
        scripts += hash(script);
    }
    return fmt::format(
        "default-src 'none'; script-src{}; style-src{}; img-src data:; base-uri 'none'; form-action 'none'", scripts,
        hash(assets.style));
}

}  // namespace

void write_head(const std::string& title, const Assets& assets, Markup* page)
{
    page->raw("<!DOCTYPE html>\n").open("html", {{"lang", "en"}}).open("head");
    page->element("meta", {{"charset", "utf-8"}});
    page->element("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", security_policy(assets)}});
    page->element("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
    page->element("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
    page->line("title", title);
    page->element("link", {{"rel", "icon"}, {"href", "data:,"}});  // else a browser asks its server for one
    page->open("style").raw(assets.style).close();
    page->close();
}

void write_scripts(const Assets& assets, Markup* page)
{
    for (const std::string_view script : assets.scripts) {
        page->open("script").raw(script).close();
    }
}

void write_navigation(const std::vector<PartLink>& parts, Markup* page)
{
    page->open("nav", {{"aria-label", "Parts of the report"}}).open("ul");
    for (const PartLink& each : parts) {
        page->open("li").line("a", each.name, {{"href", each.link}}).close();
    }
    page->close().close();
}

}  // namespace bgp_rehearse
