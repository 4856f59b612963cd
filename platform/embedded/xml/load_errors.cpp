#include "xml/load_errors.h"

#include <utility>

namespace bgp_platform::xml {

namespace {

std::string lines(const std::vector<std::string>& errors, std::size_t more)
{
    std::string text;
    for (const std::string& error : errors) {
        text += (text.empty() ? "" : "\n") + error;
    }
    return more == 0 ? text : text + "\nand " + std::to_string(more) + " more";
}

}  // namespace

LoadError::LoadError(std::vector<std::string> errors, std::size_t more)
    : std::runtime_error(lines(errors, more)), errors_(std::move(errors)), more_(more)
{
}

void LoadErrors::add(const std::string& error)
{
    if (errors_.size() < most_) {
        errors_.push_back(error);
    } else {
        ++more_;
    }
}

void LoadErrors::take_back()
{
    if (more_ > 0) {
        --more_;
    } else {
        errors_.pop_back();
    }
}

void LoadErrors::end(const std::string& error)
{
    add(error);
    throw LoadError(errors_, more_);
}

void LoadErrors::settle() const
{
    if (any()) {
        throw LoadError(errors_, more_);
    }
}

}  // namespace bgp_platform::xml
