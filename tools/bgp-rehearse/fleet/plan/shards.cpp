#include "fleet/plan/shards.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <queue>
#include <string_view>
#include <tuple>
#include <utility>

namespace bgp_rehearse {

namespace {

// Measured: a router of few rows, and what its rows add.
constexpr double kSecondsEach = 0.003;
constexpr double kSecondsPerByte = 50e-9;
constexpr double kPacked = 12;  // that much more XML is in what is compressed

bool is_packed(std::string_view name)
{
    return name.size() > 4 && name.substr(name.size() - 4) != ".xml";
}

// Inputs that stay together: so many in the order from the first on.
struct Unit {
    double seconds = 0;
    std::size_t first = 0;
    std::size_t inputs = 0;
};

class Balance {
public:
    Balance(const Found& found, std::size_t shards) : found_(found), shards_(shards), order_(found.inputs.size()) {}

    std::vector<std::vector<uint32_t>> balanced()
    {
        arrange();
        cut();
        // Longest first, each to the shard that has least.
        std::sort(units_.begin(), units_.end(), [](const Unit& one, const Unit& other) {
            return std::tie(other.seconds, one.first) < std::tie(one.seconds, other.first);
        });
        using Load = std::pair<double, std::size_t>;
        std::priority_queue<Load, std::vector<Load>, std::greater<>> loads;
        for (std::size_t shard = 0; shard < shards_; ++shard) {
            loads.emplace(0, shard);
        }
        std::vector<std::vector<Unit>> taken(shards_);
        for (const Unit& unit : units_) {
            auto [seconds, shard] = loads.top();
            loads.pop();
            taken[shard].push_back(unit);
            loads.emplace(seconds + unit.seconds, shard);
        }
        std::vector<std::vector<uint32_t>> all(shards_);
        std::transform(taken.begin(), taken.end(), all.begin(),
                       [this](std::vector<Unit>& units) { return inputs_of(&units); });
        return all;
    }

private:
    // What is packed comes first, in its order.
    std::vector<uint32_t> inputs_of(std::vector<Unit>* units) const
    {
        const auto others = std::stable_partition(
            units->begin(), units->end(), [this](const Unit& unit) { return in_packed_archive(order_[unit.first]); });
        std::sort(units->begin(), others, [](const Unit& one, const Unit& other) { return one.first < other.first; });
        std::vector<uint32_t> inputs;
        for (const Unit& unit : *units) {
            const auto first = order_.begin() + static_cast<std::ptrdiff_t>(unit.first);
            inputs.insert(inputs.end(), first, first + static_cast<std::ptrdiff_t>(unit.inputs));
        }
        return inputs;
    }

    bool in_packed_archive(uint32_t input) const { return found_.places[found_.inputs[input].place].packed; }

    // The members of compressed archives in the archives' order, then all others.
    void arrange()
    {
        std::iota(order_.begin(), order_.end(), 0);
        const auto others = std::stable_partition(order_.begin(), order_.end(),
                                                  [this](uint32_t input) { return in_packed_archive(input); });
        std::sort(order_.begin(), others, [this](uint32_t one, uint32_t other) {
            const FoundInput& left = found_.inputs[one];
            const FoundInput& right = found_.inputs[other];
            return std::tie(left.place, left.index) < std::tie(right.place, right.index);
        });
    }

    // A unit of an archive's members has at most what a shard should take.
    void cut()
    {
        const double all =
            std::accumulate(found_.inputs.begin(), found_.inputs.end(), 0.0,
                            [](double seconds, const FoundInput& input) { return seconds + seconds_of(input); });
        const double most = all / static_cast<double>(shards_);
        for (std::size_t i = 0; i < order_.size(); ++i) {
            const double seconds = seconds_of(found_.inputs[order_[i]]);
            if (i > 0 && belong_together(order_[i - 1], order_[i]) && units_.back().seconds + seconds <= most) {
                units_.back().seconds += seconds;
                ++units_.back().inputs;
            } else {
                units_.push_back({seconds, i, 1});
            }
        }
    }

    bool belong_together(uint32_t one, uint32_t other) const
    {
        return in_packed_archive(one) && found_.inputs[one].place == found_.inputs[other].place;
    }

    const Found& found_;
    std::size_t shards_;
    std::vector<uint32_t> order_;
    std::vector<Unit> units_;
};

}  // namespace

double seconds_of(const FoundInput& input)
{
    const double bytes = static_cast<double>(input.bytes) * (is_packed(input.name) ? kPacked : 1);
    return kSecondsEach + (input.refused != 0 ? 0 : kSecondsPerByte * bytes);
}

std::vector<std::vector<uint32_t>> balanced_shards(const Found& found, std::size_t shards)
{
    return Balance(found, shards).balanced();
}

}  // namespace bgp_rehearse
