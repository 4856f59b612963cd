#include "report/html/row_numbers.h"

#include <fmt/format.h>

#include <algorithm>

#include "judge/row_changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::store::Row;
using Numbers = std::unordered_map<const Row*, std::size_t>;

// Gives each row that is looked for its number.
class Numbering : public RowVisitor {
public:
    explicit Numbering(Numbers* numbers) : numbers_(*numbers) {}

    void kept(const Node& /*list*/, std::size_t /*rows*/) override {}
    void row(const RowChange& change) override
    {
        if (change.fate != Fate::AsItWas) {
            number(change);
        }
    }
    void outside(const RowChange& change) override { number(change); }

private:
    void number(const RowChange& change)
    {
        ++last_;
        for (const Row* row : {change.before, change.after}) {
            if (const auto found = numbers_.find(row); found != numbers_.end()) {
                found->second = last_;
            }
        }
    }

    Numbers& numbers_;
    std::size_t last_ = 0;
};

}  // namespace

RowNumbers::RowNumbers(const Report& report)
{
    if (report.device == nullptr || !report.judgement) {
        return;
    }
    for (const Finding& finding : report.judgement->findings) {
        for (const Place& place : finding.places) {
            for (const Row* row : {place.before, place.after}) {
                if (row != nullptr) {
                    numbers_.emplace(row, 0);
                }
            }
        }
    }
    if (!numbers_.empty()) {
        Numbering numbering(&numbers_);
        walk_rows(*report.device, numbering);
    }
}

std::size_t RowNumbers::of(const Place& place) const
{
    const auto found = numbers_.find(place.after != nullptr ? place.after : place.before);
    return found == numbers_.end() ? 0 : found->second;
}

std::vector<std::size_t> RowNumbers::of(const Finding& finding) const
{
    std::vector<std::size_t> numbers;
    for (const Place& place : finding.places) {
        if (const std::size_t number = of(place); number != 0) {
            numbers.push_back(number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

std::string link_to_row(std::size_t number)
{
    return fmt::format("#row-{}", number);
}

}  // namespace bgp_rehearse
