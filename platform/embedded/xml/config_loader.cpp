#include "xml/config_loader.h"

#include <utility>

#include "schema/quote.h"
#include "xml/load_format.h"

namespace bgp_platform::xml {

using schema::in_quotes;
using schema::shortened;

namespace {

bool is(const StartTag& tag, std::string_view name, std::string_view uri)
{
    return tag.uri != nullptr && name == tag.name && uri == tag.uri;
}

bool holds_configuration(const StartTag& tag)
{
    return is(tag, kConfigElement, kConfigNamespace) || is(tag, kConfigElement, kNetconfNamespace) ||
           is(tag, kDataElement, kNetconfNamespace);
}

bool has_name_of_wrapper(const StartTag& tag)
{
    const std::string_view name = tag.name;
    return name == kConfigElement || name == kDataElement || name == kReplyElement;
}

std::string described(const StartTag& tag)
{
    std::string element = "<" + shortened(tag.name) + ">";
    if (!has_name_of_wrapper(tag)) {
        return element;
    }
    return element + (tag.uri == nullptr ? " in no namespace" : " in the namespace " + in_quotes(tag.uri));
}

}  // namespace

ConfigLoader::ConfigLoader(std::string file, store::Configuration* into, const Limits& limits)
    : file_(std::move(file)), limits_(limits), errors_(limits.errors), into_(into), rows_(into, limits)
{
}

void ConfigLoader::start_element(const StartTag& tag)
{
    refused_last_ = false;
    if (++levels_ > limits_.levels) {
        refuse_level(tag);
    }
    if (beyond_ > 0) {
        start_in_beyond(tag);
    } else if (rows_.any_open()) {
        start_row(tag);
    } else {
        start_around_rows(tag);
    }
}

void ConfigLoader::start_around_rows(const StartTag& tag)
{
    if (wrappers_ == 0) {
        start_document(tag);
    } else if (in_reply()) {
        start_in_reply(tag);
    } else if (is_foreign(tag)) {
        foreign_.begin(tag, around_);
        start_beyond(Beyond::Foreign);
        check_foreign_size();
    } else {
        start_row(tag);
    }
}

void ConfigLoader::refuse_level(const StartTag& tag)
{
    errors_.end(
        told(tag.line, place() + ": elements are nested more than " + std::to_string(limits_.levels) + " deep"));
}

void ConfigLoader::start_document(const StartTag& tag)
{
    reply_ = is(tag, kReplyElement, kNetconfNamespace);
    if (!reply_ && !holds_configuration(tag)) {
        errors_.end(told(tag.line, "the outermost element is " + described(tag) + "; " + kWhereItStands));
    }
    open_wrapper(tag);
}

void ConfigLoader::start_in_reply(const StartTag& tag)
{
    if (is(tag, kDataElement, kNetconfNamespace) && !has_content_) {
        open_wrapper(tag);
    } else if (is(tag, kReplyErrorElement, kNetconfNamespace)) {
        reply_error_line_ = tag.line;
        error_message_.clear();
        start_beyond(Beyond::ReplyError);
    } else {
        errors_.add(
            told(tag.line, "element <" + shortened(tag.name) + "> stands in the reply, where one <data> belongs"));
        start_beyond(Beyond::Refused);
    }
}

// A reply has attributes of its own, such as the number of the request.
void ConfigLoader::open_wrapper(const StartTag& tag)
{
    ++wrappers_;
    around_.insert(around_.end(), tag.declarations.begin(), tag.declarations.end());
    has_content_ = has_content_ || !in_reply();
    if (!in_reply() && !tag.attributes.empty()) {
        take(rows_.refused_attribute(tag));
    }
}

// A name of the data model in an unknown namespace is rather a mistake than another module.
bool ConfigLoader::is_foreign(const StartTag& tag) const
{
    const schema::Schema& schema = into_->schema();
    return tag.uri != nullptr && schema.module_by_uri(tag.uri) == nullptr &&
           tag.uri != std::string_view(kConfigNamespace) && tag.uri != std::string_view(kNetconfNamespace) &&
           schema.top_node(tag.name, nullptr) == nullptr;
}

void ConfigLoader::start_row(const StartTag& tag)
{
    try {
        rows_.start_element(tag);
    } catch (const Refusal& refusal) {
        take(refusal);
        start_beyond(Beyond::Refused);
        refused_last_ = true;
    }
}

void ConfigLoader::start_beyond(Beyond what)
{
    what_ = what;
    beyond_ = 1;
}

void ConfigLoader::start_in_beyond(const StartTag& tag)
{
    ++beyond_;
    if (what_ == Beyond::Foreign) {
        foreign_.start_element(tag);
        check_foreign_size();
    }
    in_error_message_ = what_ == Beyond::ReplyError && is(tag, "error-message", kNetconfNamespace);
}

void ConfigLoader::end_element(const char* name, const char* prefix)
{
    refused_last_ = false;
    --levels_;
    if (beyond_ > 0) {
        end_in_beyond(name, prefix);
    } else if (rows_.any_open()) {
        try {
            rows_.end_element();
        } catch (const Refusal& refusal) {
            take(refusal);
        }
    } else {
        --wrappers_;
    }
}

void ConfigLoader::end_in_beyond(const char* name, const char* prefix)
{
    --beyond_;
    in_error_message_ = false;
    if (what_ == Beyond::Foreign) {
        foreign_.end_element(name, prefix);
        check_foreign_size();
    } else if (what_ == Beyond::ReplyError && beyond_ == 0) {
        const std::string message = error_message_.empty() ? "" : ": " + in_quotes(error_message_);
        errors_.add(told(reply_error_line_, "the device answered with an error, not with its configuration" + message));
    }
}

void ConfigLoader::text(std::string_view piece, int line)
{
    refused_last_ = false;
    if (beyond_ == 0) {
        try {
            rows_.text(piece, line);
        } catch (const Refusal& refusal) {
            take(refusal);
        }
    } else if (what_ == Beyond::Foreign) {
        foreign_.text(piece);
        check_foreign_size();
    } else if (in_error_message_ && error_message_.size() < limits_.value_bytes) {
        error_message_ += piece;
    }
}

void ConfigLoader::comment(std::string_view text)
{
    if (in_foreign()) {
        foreign_.comment(text);
        check_foreign_size();
    }
}

void ConfigLoader::instruction(std::string_view target, std::string_view content)
{
    if (in_foreign()) {
        foreign_.instruction(target, content);
        check_foreign_size();
    }
}

void ConfigLoader::check_foreign_size()
{
    if (foreign_.size() > limits_.foreign_bytes) {
        errors_.end(told(foreign_.present().line,
                         place() + ": with it, modules that are not in the data model take more than " +
                             std::to_string(limits_.foreign_bytes) + " bytes"));
    }
}

void ConfigLoader::refuse_markup(int line, const std::string& what)
{
    if (wrappers_ == 0) {
        errors_.end(told(line, what));
    }
    const bool hidden = beyond_ > 0 || rows_.in_secret();
    errors_.end(told(line, place() + ": " + (hidden ? "not well-formed; what stands here is not shown" : what)));
}

void ConfigLoader::refuse_cut_tag(int line, const std::string& what)
{
    if (refused_last_) {
        errors_.take_back();
        beyond_ = 0;
    }
    refuse_markup(line, what);
}

void ConfigLoader::finish()
{
    if (!has_content_ && !errors_.any()) {
        errors_.add(told(1, "the reply holds no <data>"));
    }
    errors_.settle();
    into_->add_foreign(foreign_.take());
}

std::string ConfigLoader::place() const
{
    return in_foreign() ? "/" + shortened(foreign_.present().name) : rows_.path();
}

std::string ConfigLoader::told(int line, const std::string& what) const
{
    return file_ + ":" + std::to_string(line) + ": " + what;
}

void ConfigLoader::take(const Refusal& refusal)
{
    if (refusal.final) {
        errors_.end(told(refusal.line, refusal.what));
    }
    errors_.add(told(refusal.line, refusal.what));
}

}  // namespace bgp_platform::xml
