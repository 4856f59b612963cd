// The map of a VRF's OSPF process, stored and in a transaction.
#pragma once

#include <string>

#include "nzmw_trace.h"
#include "support/daemon_fixture.h"

namespace bgp_test {

// An entry of "/internal/ospf-proc-id-to-index"; `key` is the first key, which stands for nothing here.
inline std::string ospf_process(int key, const std::string& vrf, const std::string& leaves)
{
    return "<ospf-proc-id-to-index><process>" + std::to_string(key) + "</process><vrf_name>" + vrf + "</vrf_name>" +
           leaves + "</ospf-proc-id-to-index>";
}

inline std::string ospf_numbers(uint32_t proc_id, uint32_t index)
{
    return "<proc_id>" + std::to_string(proc_id) + "</proc_id><index>" + std::to_string(index) + "</index>";
}

class OspfTest : public DaemonTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }

    static nzmw_trace_category_t category() { return nzmw_trace_register_category("bgp-app"); }
    void forgetProcessesInTransaction()
    {
        ASSERT_EQ(maapi_delete(maapi(), thandle(), "/internal/ospf-proc-id-to-index"), CONFD_OK);
    }
};

}  // namespace bgp_test
