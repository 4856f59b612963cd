#include "support/router_mgr_fixture.h"

#include <arpa/inet.h>

#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include "conf_updt_log.h"

namespace bgp_test {

using bgp_platform::Device;
using bgp_platform::Fault;

namespace {

Device* watched = nullptr;  // whose writes are told at the end of the process

void tell_writes_at_exit()
{
    std::cerr << "writes " << watched->calls().writes() << " at exit" << std::endl;
}

}  // namespace

void interfaces(Device& device, const std::vector<const char*>& addresses)
{
    std::vector<in_addr> list;
    for (const char* text : addresses) {
        in_addr address{};
        if (inet_pton(AF_INET, text, &address) != 1) {
            throw std::invalid_argument(std::string("not an IPv4 address: ") + text);
        }
        list.push_back(address);
    }
    device.set_interfaces(list);
}

std::string rows(std::string_view entry, const std::vector<std::string>& leaves)
{
    std::string xml;
    for (const std::string& row : leaves) {
        xml.append("<").append(entry).append(">").append(row).append("</").append(entry).append(">");
    }
    return xml;
}

std::string table(std::string_view module, std::string_view table, std::string_view rows)
{
    std::string xml("<");
    xml.append(module).append(" xmlns=\"http://tail-f.com/ns/mibs/").append(module).append("\"><").append(table);
    return xml.append(">").append(rows).append("</").append(table).append("></").append(module).append(">");
}

std::string configs(const std::vector<std::pair<const char*, const char*>>& keys)
{
    std::vector<std::string> leaves;
    for (const auto& [entity, index] : keys) {
        leaves.push_back(std::string("<bgpRmEntIndex>") + entity + "</bgpRmEntIndex><bgpConfigIndex>" + index +
                         "</bgpConfigIndex>");
    }
    return table("DC-BGP-MIB", "bgpConfigTable", rows("bgpConfigEntry", leaves));
}

std::string entities(const std::vector<const char*>& indexes)
{
    std::string xml;
    for (const char* index : indexes) {
        xml += bgp_entity(std::string("<bgpRmEntIndex>") + index + "</bgpRmEntIndex>");
    }
    return xml;
}

void show_faults_and_writes(Device& device)
{
    watched = &device;
    device.fault_sink = [&device](const Fault& fault) {
        if (fault.kind == Fault::Kind::Fault) {
            std::cerr << "fault " << fault.severity << " " << fault.function << " " << fault.source << ":" << fault.line
                      << " <" << fault.text << "> backtraces " << device.backtraces() << ", writes "
                      << device.calls().writes() << std::endl;
            std::atexit(tell_writes_at_exit);
        }
    };
}

BgpRouterMgr RouterMgrTest::manager()
{
    return BgpRouterMgr(nullptr, get_conf_updt_log_handle());
}

confd_trans_ctx* RouterMgrTest::context()
{
    open();
    return device().transaction_context();
}

int RouterMgrTest::create(uint32_t index, uint32_t as, const std::string& path, const std::string& vrf_name)
{
    const bgp_platform::UpgradeHandles upgrade = open();
    std::string name = vrf_name;
    return manager().Create(upgrade.maapi_socket, upgrade.thandle, path, index, as, name.data());
}

std::vector<std::string> RouterMgrTest::recordedWrites()
{
    using bgp_platform::capi::Effect;
    using bgp_platform::capi::Function;
    std::vector<std::string> lines;
    for (const auto& call : device().recorder().calls()) {
        if (effect_of(call.function) == Effect::Write || call.function == Function::confd_data_set_timeout) {
            lines.push_back(call.text());
        }
    }
    return lines;
}

int RemoveTest::remove(uint32_t index, std::vector<const char*> tables)
{
    tables.push_back(nullptr);
    return manager().Remove(open().maapi_socket, context(), index, 0, tables.data(), nullptr);
}

int RemoveTest::remove(uint32_t index, std::vector<const char*> tables, std::vector<const char*> secondary_tables)
{
    tables.push_back(nullptr);
    secondary_tables.push_back(nullptr);
    return manager().Remove(open().maapi_socket, context(), index, 0, tables.data(), secondary_tables.data());
}

}  // namespace bgp_test
