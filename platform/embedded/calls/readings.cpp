#include "calls/readings.h"

namespace bgp_platform::capi {

std::vector<MetReading> Readings::met() const
{
    std::vector<MetReading> all;
    for (std::size_t i = 0; i < met_.size(); ++i) {
        if (met_[i].count > 0) {
            all.push_back({static_cast<int>(i) + 1, met_[i].place, met_[i].count});
        }
    }
    return all;
}

}  // namespace bgp_platform::capi
