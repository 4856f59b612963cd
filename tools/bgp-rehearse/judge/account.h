// The account of rows, a double entry: what was stored and what the result holds are counted in the two configurations;
// between them stand the fates of the rows, counted where they are brought together. The sums must close, list by list.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "judge/list_order.h"
#include "judge/row_changes.h"

namespace bgp_rehearse {

struct RowCounts {
    std::size_t stored = 0;  // counted in the stored configuration
    std::size_t kept = 0;    // as they were
    std::size_t changed = 0;
    std::size_t moved = 0;
    std::size_t moved_and_changed = 0;
    std::size_t removed = 0;
    std::size_t added = 0;   // new
    std::size_t result = 0;  // counted in the result

    bool closes() const noexcept
    {
        return stored == kept + changed + moved + moved_and_changed + removed && result == stored - removed + added;
    }
    bool untouched() const noexcept { return changed + moved + moved_and_changed + removed + added == 0; }
};

struct ListAccount {
    const bgp_platform::schema::Node* list = nullptr;
    RowCounts rows;
};

struct Account {
    RowCounts total;
    std::vector<ListAccount> lists;  // those that hold or held rows, in the order of the schema

    // The first list whose sums do not close, in words; empty when all do.
    std::string mistake() const;
};

// Counts the fates; the other two numbers come from the configurations.
class AccountKeeper : public RowVisitor {
public:
    AccountKeeper(const bgp_platform::store::Configuration& stored, const bgp_platform::store::Configuration& result);

    void kept(const bgp_platform::schema::Node& list, std::size_t rows) override;
    void row(const RowChange& change) override;
    void outside(const RowChange& change) override;

    Account take();

private:
    RowCounts& of(const bgp_platform::schema::Node& list);

    Account account_;
    std::shared_ptr<const ListOrder> order_;
};

}  // namespace bgp_rehearse
